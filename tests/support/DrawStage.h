#pragma once

#include "drawing/TavloDrawDX11.h"
#include "drawing/TavloGraphicsRes.h"

#include <QImage>
#include <QString>

#include <array>
#include <memory>

namespace tavlo {

/// A store of which a test may take an image out.
class StageStore final : public Implements<StageStore, ITavloGraphicsRes>
{
public:
    bool create(quint32 flags, graphics::DevicePtr device, graphics::ContextPtr context, const QString& path) override;
    void destroyRes() override { _store.destroyRes(); }
    graphics::TexturePtr imageView(int slot) override { return images[static_cast<std::size_t>(slot)]; }
    const Images& imageTextures() override { return images; }
    effects::Effect* effect(int index) override { return _store.effect(index); }
    const effects::EffectTechnique& technique(int index) override { return _store.technique(index); }
    const std::shared_ptr<const graphics::InputLayout>& inputLayout(int index) override
    {
        return _store.inputLayout(index);
    }

    Images images;

private:
    TavloGraphicsRes _store;
};

/// A draw object whose chance is chosen.
class StageDraw final : public TavloDrawDX11
{
public:
    quint32 seed = 0; ///< of the next draws

private:
    quint32 randomSeed() const override { return seed; }
};

/// A device, the store, and a draw object of whatever size is asked for. Thread of the constructor.
class DrawStage
{
public:
    DrawStage();
    ~DrawStage();

    /// Empty when the stage stands; else why it does not.
    const QString& fault() const { return _fault; }

    /// A picture of format RGBA8888, not premultiplied, as a texture.
    graphics::TexturePtr upload(const QImage& picture);

    /// One frame of that size and format; null when there is none. Its first row is the top one.
    /// \param topFirst  false draws as into a window's back buffer, and turns the frame back
    QImage drawTransition(quint32 kind, float position, const graphics::TexturePtr& outgoing,
                          const graphics::TexturePtr& incoming, QSize size, bool topFirst = true);

    /// The draw object, of that size and order of rows; null when it cannot be made.
    TavloDrawDX11* target(QSize size, Rows rows = Rows::TopFirst);

    /// What it has drawn last, its first row first.
    QImage readBack();

    effects::Effect* effect(quint32 kind); ///< of the kind's family

    /// An image as the shaders see it: red, green, blue, alpha.
    static QImage image(int slot);
    graphics::TexturePtr& texture(int slot) { return _store.images[static_cast<std::size_t>(slot)]; }

    graphics::Context& context() { return *_context; }

    quint32 randomSeed = 0; ///< of the next draws

private:
    graphics::DevicePtr _device;
    graphics::ContextPtr _context;
    StageStore _store;
    StageDraw _draw;
    Rows _rows = Rows::TopFirst;
    QString _fault;
};

} // namespace tavlo
