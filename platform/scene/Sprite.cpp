#include "scene/Sprite.h"

#include "graphics/Log.h"
#include "scene/FileUtils.h"
#include "scene/Renderer.h"
#include "scene/TextureCache.h"

namespace tavlo::scene {

namespace {

Size sizeOf(const graphics::Texture& texture)
{
    return {static_cast<float>(texture.desc().width), static_cast<float>(texture.desc().height)};
}

} // namespace

Sprite::Sprite(Director& director) : Node(director) { setAnchorPoint({0.5F, 0.5F}); }

RefPtr<Sprite> Sprite::createWithTexture(Director& director, graphics::TexturePtr texture)
{
    RefPtr<Sprite> sprite = create(director);
    sprite->initWithTexture(std::move(texture));
    return sprite;
}

bool Sprite::initWithFile(const std::string& path)
{
    const std::string found = director().fileUtils().fullPathForFilename(path);
    if (found.empty()) {
        graphics::logFailure("no such file: " + path);
        return false;
    }
    return initWithTexture(director().textureCache().addImage(found));
}

bool Sprite::initWithTexture(graphics::TexturePtr texture)
{
    if (!texture)
        return false;
    _texture = std::move(texture);
    const Size size = sizeOf(*_texture);
    setTextureRect({0, 0, size.width, size.height});
    return true;
}

void Sprite::setTexture(graphics::TexturePtr texture)
{
    if (_texture || !texture)
        _texture = std::move(texture);
    else
        initWithTexture(std::move(texture));
}

void Sprite::setTextureRect(const Rect& texels) { setTextureRect(texels, texels.size()); }

void Sprite::setTextureRect(const Rect& texels, Size contentSize)
{
    _textureRect = texels;
    setContentSize(contentSize);
}

void Sprite::draw(Renderer& renderer, const Affine& transform)
{
    if (!_texture)
        return;
    const Size texels = sizeOf(*_texture);
    TexturePart part{{_textureRect.x / texels.width, _textureRect.y / texels.height},
                     {_textureRect.maxX() / texels.width, _textureRect.maxY() / texels.height}};
    if (_flippedX)
        std::swap(part.leftTop.x, part.rightBottom.x);
    if (_flippedY)
        std::swap(part.leftTop.y, part.rightBottom.y);
    const Size size = contentSize();
    renderer.drawQuad(transform, {0, 0, size.width, size.height}, part,
                      premultiplied(displayedColor(), displayedOpacity()), {_texture, _alpha, _state.get()});
}

} // namespace tavlo::scene
