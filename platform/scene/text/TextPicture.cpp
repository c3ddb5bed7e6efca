#include "scene/text/TextPicture.h"

#include "graphics/Log.h"
#include "scene/Director.h"
#include "scene/Renderer.h"
#include "scene/text/TextRaster.h"

#include <QGuiApplication>

#include <cstring>

namespace tavlo::scene {

namespace {

constexpr int tileSide = 2048;         // texels, which every device takes
constexpr int tileStep = tileSide - 2; // a texel of each neighbour's is kept, so that filters find no seam
constexpr int grain = 32;              // texels: sizes of textures are whole multiples, so that similar texts share one

bool canDrawText()
{
    if (qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
        return true;
    static const bool told = [] {
        graphics::logFailure("no text: the program has no application object of Qt Gui");
        return true;
    }();
    return !told;
}

std::uint32_t grained(int size) { return static_cast<std::uint32_t>((size + grain - 1) / grain * grain); }

bool suits(const graphics::TexturePtr& texture, std::uint32_t width, std::uint32_t height)
{
    if (!texture)
        return false;
    const graphics::TextureDesc& desc = texture->desc();
    return desc.width >= width && desc.height >= height && desc.width <= 2 * width && desc.height <= 2 * height;
}

} // namespace

TextPicture::~TextPicture() { _director.textAtlas().release(_slot); }

Size TextPicture::shape(const std::string& text, const TextStyle& style)
{
    _shape.reset();
    if (!canDrawText())
        return {};
    _shape = shapeText(QString::fromStdString(text), style, _director.fontFinder());
    return {static_cast<float>(_shape->size.width()), static_cast<float>(_shape->size.height())};
}

bool TextPicture::raster(const TextStyle& style)
{
    _used = 0;
    if (!_shape)
        return true;
    if (!_director.device())
        return false;
    const auto [image, leftTop] = rasterText(*_shape, style);
    const Rect place{static_cast<float>(leftTop.x()),
                     static_cast<float>(_shape->size.height()) - static_cast<float>(leftTop.y() + image.height()),
                     static_cast<float>(image.width()), static_cast<float>(image.height())};
    const bool drawn =
        image.isNull() || (TextAtlas::takes(image.size()) ? rasterSmall(image, place) : rasterLarge(image, place));
    if (drawn)
        _shape.reset();
    else
        _used = 0;
    return drawn;
}

bool TextPicture::rasterSmall(const QImage& image, const Rect& place)
{
    if (!_director.textAtlas().write(_slot, image, image.rect()))
        return false;
    const QPoint corner = _slot.area.topLeft();
    _tiles.resize(1);
    _tiles[0] = {
        _slot.page, place, {static_cast<float>(corner.x()), static_cast<float>(corner.y()), place.width, place.height}};
    _used = 1;
    return true;
}

bool TextPicture::rasterLarge(const QImage& image, const Rect& place)
{
    if (_slot.page)
        _tiles.clear();
    _director.textAtlas().release(_slot);
    for (int top = 0; top < image.height(); top += tileStep)
        for (int left = 0; left < image.width(); left += tileStep) {
            const QRect part = QRect(left, top, tileStep, tileStep) & image.rect();
            if (_used == _tiles.size())
                _tiles.emplace_back();
            if (!rasterTile(_tiles[_used], image, part, place))
                return false;
            ++_used;
        }
    _tiles.resize(_used);
    return true;
}

bool TextPicture::rasterTile(Tile& tile, const QImage& image, QRect part, const Rect& place)
{
    const QRect kept = part.adjusted(-1, -1, 1, 1) & image.rect();
    const auto left = static_cast<float>(part.x()), bottom = static_cast<float>(part.bottom() + 1);
    tile.shown = {static_cast<float>(part.x() - kept.x()), static_cast<float>(part.y() - kept.y()),
                  static_cast<float>(part.width()), static_cast<float>(part.height())};
    tile.place = {place.x + left, place.maxY() - bottom, tile.shown.width, tile.shown.height};
    return upload(tile, image, kept);
}

bool TextPicture::upload(Tile& tile, const QImage& image, QRect part)
{
    const std::uint32_t width = grained(part.width()), height = grained(part.height());
    if (!suits(tile.texture, width, height))
        tile.texture = _director.device()->createTexture(
            {width, height, graphics::Format::R8G8B8A8_UNORM, graphics::Usage::Dynamic});
    const auto mapped =
        tile.texture ? _director.context()->map(*tile.texture, graphics::MapMode::WriteDiscard) : std::nullopt;
    if (!mapped)
        return false;
    const std::size_t used = static_cast<std::size_t>(part.width()) * 4;
    const std::size_t whole = std::size_t{tile.texture->desc().width} * 4;
    for (std::uint32_t row = 0; row < tile.texture->desc().height; ++row) {
        std::byte* const place = mapped->data + std::size_t{row} * mapped->rowPitch;
        const bool filled = row < static_cast<std::uint32_t>(part.height());
        if (filled)
            std::memcpy(place, image.constScanLine(part.y() + static_cast<int>(row)) + part.x() * 4, used);
        std::memset(place + (filled ? used : 0), 0, whole - (filled ? used : 0));
    }
    _director.context()->unmap(tile.texture);
    return true;
}

void TextPicture::draw(Renderer& renderer, const Affine& transform, Color4B tint) const
{
    for (std::size_t i = 0; i < _used; ++i) {
        const Tile& tile = _tiles[i];
        const auto width = static_cast<float>(tile.texture->desc().width);
        const auto height = static_cast<float>(tile.texture->desc().height);
        renderer.drawQuad(transform, tile.place,
                          {{tile.shown.minX() / width, tile.shown.minY() / height},
                           {tile.shown.maxX() / width, tile.shown.maxY() / height}},
                          tint, {tile.texture});
    }
}

} // namespace tavlo::scene
