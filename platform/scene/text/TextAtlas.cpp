#include "scene/text/TextAtlas.h"

#include "scene/Director.h"

#include <algorithm>
#include <cstring>

namespace tavlo::scene {

namespace {

constexpr int pageSize = 1024; // texels
constexpr QSize largest(512, 128);
constexpr int grain = 32; // texels: places are whole multiples, so that similar texts take each other's

// One texel more on either side stays empty between neighbours.
QSize placeFor(QSize size)
{
    const auto grained = [](int texels) { return (texels + 1 + grain - 1) / grain * grain; };
    return {grained(size.width()), grained(size.height())};
}

} // namespace

bool TextAtlas::takes(QSize size) { return size.width() <= largest.width() && size.height() <= largest.height(); }

bool TextAtlas::write(Slot& slot, const QImage& image, QRect part)
{
    const QSize size = placeFor(part.size());
    if (slot.page && (size.width() > slot.area.width() || size.height() > slot.area.height()))
        release(slot);
    if (!slot.page && !allocate(slot, size))
        return false;
    const std::size_t pitch = static_cast<std::size_t>(slot.area.width()) * 4;
    _scratch.assign(pitch * static_cast<std::size_t>(slot.area.height()), std::byte{0});
    for (int row = 0; row < part.height(); ++row)
        std::memcpy(_scratch.data() + static_cast<std::size_t>(row) * pitch,
                    image.constScanLine(part.y() + row) + part.x() * 4, static_cast<std::size_t>(part.width()) * 4);
    const graphics::Box box{static_cast<std::uint32_t>(slot.area.x()), static_cast<std::uint32_t>(slot.area.y()),
                            static_cast<std::uint32_t>(slot.area.width()),
                            static_cast<std::uint32_t>(slot.area.height())};
    if (_director.context()->updateSubresource(*slot.page, box, _scratch.data(), static_cast<std::uint32_t>(pitch)))
        return true;
    release(slot);
    return false;
}

void TextAtlas::release(Slot& slot)
{
    const bool isOurs = std::ranges::any_of(_shelves, [&](const Shelf& shelf) { return shelf.page == slot.page; });
    if (slot.page && isOurs)
        _free.push_back(slot);
    slot = {};
}

void TextAtlas::clear()
{
    _shelves.clear();
    _free.clear();
}

bool TextAtlas::allocate(Slot& slot, QSize size)
{
    return takeFree(slot, size) || takeShelf(slot, size) || (addShelf(size.height()) && takeShelf(slot, size));
}

bool TextAtlas::takeFree(Slot& slot, QSize size)
{
    const auto found = std::ranges::find_if(_free, [size](const Slot& place) { return place.area.size() == size; });
    if (found == _free.end())
        return false;
    slot = *found;
    *found = _free.back();
    _free.pop_back();
    return true;
}

bool TextAtlas::takeShelf(Slot& slot, QSize size)
{
    const auto found = std::ranges::find_if(_shelves, [size](const Shelf& shelf) {
        return shelf.height == size.height() && shelf.filled + size.width() <= pageSize;
    });
    if (found == _shelves.end())
        return false;
    slot = {found->page, QRect(QPoint(found->filled, found->top), size)};
    found->filled += size.width();
    return true;
}

bool TextAtlas::addShelf(int height)
{
    const int top = _shelves.empty() ? pageSize : _shelves.back().top + _shelves.back().height;
    if (top + height <= pageSize) {
        _shelves.push_back({_shelves.back().page, top, height, 0});
        return true;
    }
    const graphics::DevicePtr device = _director.device();
    graphics::TexturePtr page = device ? device->createTexture({pageSize, pageSize}) : nullptr;
    if (!page)
        return false;
    _shelves.push_back({std::move(page), 0, height, 0});
    return true;
}

} // namespace tavlo::scene
