#pragma once

#include "graphics/Texture.h"
#include "scene/Node.h"

namespace tavlo::scene {

class Sprite;

/// A picture that is drawn anew each frame from the node's children, and shown in the scene by a sprite.
///
/// The children stand in the picture's own pixels, left bottom 0, 0, and are drawn into it before anything that shows
/// it; the node's transform, colour and opacity go for the sprite alone, whose middle stands at the node's position.
/// The picture keeps its top row first, like every other: the sprite shows it upright as it is made. Frame thread.
class RenderTexture : public Node
{
public:
    /// Bits of `setClearFlags`.
    static constexpr std::uint32_t clearNothing = 0;
    static constexpr std::uint32_t clearColorBit = 0x4000;

    static RefPtr<RenderTexture> create(Director& director, int width, int height);
    explicit RenderTexture(Director& director);
    ~RenderTexture() override;
    std::string_view className() const override { return "RenderTexture"; }

    /// Makes the picture, of zeros. False, and the reason in the log, when the device cannot.
    bool initWithWidthAndHeight(int width, int height, graphics::Format format = graphics::Format::R8G8B8A8_UNORM);

    /// The picture, as others draw into it and from it; null before it is made.
    const graphics::TexturePtr& texture() const { return _texture; }
    Sprite& sprite() const { return *_sprite; }

    /// Whether each frame draws the children into the picture. Off, as made, the picture is left to whoever else draws
    /// into it, and the children are not drawn.
    void setAutoDraw(bool autoDraw) { _autoDraw = autoDraw; }
    bool isAutoDraw() const { return _autoDraw; }

    /// Before the children.
    void setClearColor(const Color4F& color) { _clearColor = color; }
    void setClearFlags(std::uint32_t flags) { _clearFlags = flags; }

    /// Whether the picture hides all that lies under it. Where frames draw it the clear colour decides; where others do,
    /// they say so. As made: not.
    bool isOpaque() const;
    void setOpaque(bool opaque) { _opaque = opaque; }

    void visit(Renderer& renderer, const VisitState& parent) override;

protected:
    bool isTarget() const override { return true; }

private:
    void drawPicture(Renderer& renderer);

    graphics::TexturePtr _texture;
    const RefPtr<Sprite> _sprite;
    Color4F _clearColor;
    std::uint32_t _clearFlags = clearNothing;
    bool _autoDraw = false;
    bool _opaque = false; ///< as told
};

} // namespace tavlo::scene
