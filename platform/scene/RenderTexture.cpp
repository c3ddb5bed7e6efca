#include "scene/RenderTexture.h"

#include "graphics/Log.h"
#include "scene/Renderer.h"
#include "scene/Sprite.h"

namespace tavlo::scene {

RenderTexture::RenderTexture(Director& director) : Node(director), _sprite(Sprite::create(director)) {}

RenderTexture::~RenderTexture() = default;

RefPtr<RenderTexture> RenderTexture::create(Director& director, int width, int height)
{
    RefPtr<RenderTexture> texture = makeRef<RenderTexture>(director);
    return texture->initWithWidthAndHeight(width, height) ? texture : nullptr;
}

bool RenderTexture::initWithWidthAndHeight(int width, int height, graphics::Format format)
{
    const graphics::DevicePtr device = director().device();
    if (!device || width <= 0 || height <= 0) {
        graphics::logFailure("a render texture needs a view and a size");
        return false;
    }
    graphics::TexturePtr made =
        device->createTexture({static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height), format,
                               graphics::Usage::Default, true});
    if (!made)
        return false;
    _texture = std::move(made);
    return _sprite->initWithTexture(_texture);
}

// Over an opaque colour everything stays opaque.
bool RenderTexture::isOpaque() const
{
    return _autoDraw ? (_clearFlags & clearColorBit) != 0 && _clearColor.a >= 1 : _opaque;
}

void RenderTexture::visit(Renderer& renderer, const VisitState& parent)
{
    if (!isVisible() || !_texture)
        return;
    const VisitState own = enter(parent);
    markDrawn(renderer);
    if (_autoDraw) {
        drawPicture(renderer);
        _sprite->setTextureAlpha(isOpaque() ? TextureAlpha::Opaque : TextureAlpha::Premultiplied);
    }
    _sprite->visit(renderer, own);
}

void RenderTexture::drawPicture(Renderer& renderer)
{
    std::optional<Color4F> clear;
    if ((_clearFlags & clearColorBit) != 0)
        clear = _clearColor;
    renderer.beginTarget(_texture, false, clear);
    const VisitState inside;
    for (const RefPtr<Node>& child : children())
        child->visit(renderer, inside);
    renderer.endTarget();
}

} // namespace tavlo::scene
