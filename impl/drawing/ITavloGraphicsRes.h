#pragma once

#include <tavlo/IUnknownEx.h>

#include "effects/Effect.h"
#include "graphics/Device.h"

#include <QString>

#include <array>
#include <memory>

/// What drawing needs and no picture brings along: the effects and the image textures of one device. Thread of the
/// device's immediate context; readers need no lock once `create` has returned.
class ITavloGraphicsRes : public IUnknownEx
{
public:
    static constexpr TavloInterfaceId interfaceId{0x4e1f7a63, 0x0b52, 0x4c8d, 0x97, 0x2e, 0x61,
                                                  0xd0,       0x3b,   0xc5,   0x18, 0x01};

    static constexpr int effectCount = 11;
    static constexpr int imageCount = 80;

    using Images = std::array<tavlo::graphics::TexturePtr, imageCount>;

    /// Flag of `create`: effects only.
    static constexpr quint32 WithoutImages = 1;

    /// Loads everything. False when an effect fails; a missing image leaves its slot empty.
    /// \param cachePath  folder of the compiled effects, with its separator; made when it isn't there
    virtual bool create(quint32 flags, tavlo::graphics::DevicePtr device, tavlo::graphics::ContextPtr context,
                        const QString& cachePath) = 0;

    /// Lets go of everything that `create` made. May be called twice.
    virtual void destroyRes() = 0;

    /// An image by its slot; null where it is missing and for a number that is no slot.
    virtual tavlo::graphics::TexturePtr imageView(int slot) = 0;

    virtual const Images& imageTextures() = 0;

    /// An effect by its index; null before `create` and for a number that is no index.
    virtual tavlo::effects::Effect* effect(int index) = 0;

    /// The effect's technique "Transprocess"; invalid before `create` and for a number that is no index.
    virtual const tavlo::effects::EffectTechnique& technique(int index) = 0;

    /// POSITION of three floats, TEXCOORD of two; null before `create` and for a number that is no index.
    virtual const std::shared_ptr<const tavlo::graphics::InputLayout>& inputLayout(int index) = 0;

protected:
    ~ITavloGraphicsRes() = default;
};
