#pragma once

#include "drawing/TransitionDraw.h"
#include "effects/EffectCompiler.h"
#include "graphics/Device.h"

#include <QImage>
#include <QString>

#include <array>
#include <optional>
#include <vector>

namespace tavlo {

/// Everything that transitions are drawn with and nothing more: a device, the eight effects, the images, a quad.
/// Thread of the constructor.
class TransitionStage
{
public:
    TransitionStage();
    ~TransitionStage();

    /// Empty when the stage stands; else why it does not.
    const QString& fault() const { return _fault; }

    /// A picture of format RGBA8888, not premultiplied, as a texture.
    graphics::TexturePtr upload(const QImage& picture);

    /// One frame of that size and format; null when nothing was drawn. Its first row is the top one.
    /// \param topFirst  false draws as into a window's back buffer, and turns the frame back
    QImage draw(quint32 kind, float position, const graphics::TexturePtr& outgoing,
                const graphics::TexturePtr& incoming, QSize size, bool topFirst = true);

    /// The same into a target of the caller's, for as many frames as wanted. False when nothing was drawn.
    bool drawInto(const graphics::TexturePtr& target, quint32 kind, float position,
                  const graphics::TexturePtr& outgoing, const graphics::TexturePtr& incoming, bool topFirst = true);

    graphics::TexturePtr makeTarget(QSize size);
    QImage readBack(const graphics::TexturePtr& target);

    effects::Effect* effect(quint32 kind); ///< of the kind's family

    /// As the shaders see them: red, green, blue, alpha. Null for slots that transitions do not use.
    const QImage& image(int slot) const { return _pictures[static_cast<std::size_t>(slot)]; }
    graphics::TexturePtr& texture(int slot) { return _textures[static_cast<std::size_t>(slot)]; }

    graphics::Context& context() { return *_context; }

    quint32 randomSeed = 0; ///< of the next draws

private:
    static constexpr int slotCount = 80;

    void loadEffects();
    void loadImages();
    void loadImage(int slot, const QString& name);
    void drawQuad();

    graphics::DevicePtr _device;
    graphics::ContextPtr _context;
    std::array<effects::EffectPtr, 9> _effects;
    std::array<graphics::TexturePtr, slotCount> _textures;
    std::array<QImage, slotCount> _pictures;
    graphics::BufferPtr _vertices, _indices;
    std::shared_ptr<const graphics::InputLayout> _layout;
    TransitionDraw _draw;
    QString _fault;
};

} // namespace tavlo
