#pragma once

#include "drawing/ITavloGraphicsRes.h"

#include <tavlo/InterfacePtr.h>

/// The one store of effects and images of a device.
class TavloGraphicsRes final : public tavlo::Implements<TavloGraphicsRes, ITavloGraphicsRes>
{
public:
    ~TavloGraphicsRes();

    bool create(quint32 flags, tavlo::graphics::DevicePtr device, tavlo::graphics::ContextPtr context,
                const QString& cachePath) override;
    void destroyRes() override;

    tavlo::graphics::TexturePtr imageView(int slot) override;
    const Images& imageTextures() override { return _images; }
    tavlo::effects::Effect* effect(int index) override;
    const tavlo::effects::EffectTechnique& technique(int index) override;
    const std::shared_ptr<const tavlo::graphics::InputLayout>& inputLayout(int index) override;

private:
    struct LoadedEffect
    {
        tavlo::effects::EffectPtr effect;
        tavlo::effects::EffectTechnique technique;
        std::shared_ptr<const tavlo::graphics::InputLayout> layout;
    };

    void loadImages();
    bool loadEffect(const QString& path, const QString& cachePath, LoadedEffect& loaded);

    // fixed from create to destroyRes
    tavlo::graphics::DevicePtr _device;
    tavlo::graphics::ContextPtr _context;
    std::array<LoadedEffect, effectCount> _effects;
    Images _images;
};
