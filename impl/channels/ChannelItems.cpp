#include "channels/ChannelItems.h"

#include <algorithm>

namespace tavlo {

void ChannelItems::add(Group group, ItemPtr item)
{
    if (!item)
        return;
    _pickable.insert(_pickable.begin(), item.get());
    _groups[group].push_back(std::move(item));
}

TavloShowVisibleItem* ChannelItems::find(Group group, const QString& id) const
{
    const auto& items = _groups[group];
    const auto found = std::ranges::find_if(items, [&id](const ItemPtr& item) { return item->itemUuid() == id; });
    return found != items.end() ? found->get() : nullptr;
}

void ChannelItems::step(quint64 clockMilliseconds)
{
    for (const auto& items : _groups) {
        for (const ItemPtr& item : items)
            item->onFrame(clockMilliseconds);
    }
    const auto gone = [](const TavloShowVisibleItem* item) { return !item->isActive(); };
    std::erase_if(_pickable, gone);
    for (auto& items : _groups)
        std::erase_if(items, [&gone](const ItemPtr& item) { return gone(item.get()); });
}

bool ChannelItems::remove(Group group, const QString& id)
{
    const TavloShowVisibleItem* const item = find(group, id);
    if (!item)
        return false;
    std::erase(_pickable, item);
    std::erase_if(_groups[group], [item](const ItemPtr& held) { return held.get() == item; });
    return true;
}

void ChannelItems::clear()
{
    _pickable.clear();
    for (auto& items : _groups)
        items.clear();
}

TavloShowVisibleItem* ChannelItems::itemAt(scene::Vec2 point) const
{
    const auto found = std::ranges::find_if(_pickable, [point](const TavloShowVisibleItem* item) {
        return item->isActive() && item->node() && item->node()->isVisible() && item->rect().contains(point);
    });
    return found != _pickable.end() ? *found : nullptr;
}

} // namespace tavlo
