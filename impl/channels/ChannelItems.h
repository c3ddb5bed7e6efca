#pragma once

#include "items/TavloShowItemUtil.h"

#include <array>
#include <vector>

namespace tavlo {

/// The items that a channel shows, in the order in which they step. Frame thread.
class ChannelItems
{
public:
    enum Group : std::uint8_t
    {
        Presents,
        Logos,
        Overlays,
        Texts,
        GroupCount,
    };

    /// Takes an item over; nothing for null.
    void add(Group group, ItemPtr item);

    /// By the `uuid` of its record, or null.
    TavloShowVisibleItem* find(Group group, const QString& id) const;

    /// Steps every item, group by group, then lets go of those that have left.
    void step(quint64 clockMilliseconds);

    /// Lets go of one at once. False when there is none of that id.
    bool remove(Group group, const QString& id);

    void clear();

    /// The topmost item that can be picked at that point, or null. \param point  pixels of the frame, y up
    TavloShowVisibleItem* itemAt(scene::Vec2 point) const;

    /// Items of a group, in the order of their adding.
    const std::vector<ItemPtr>& group(Group group) const { return _groups[group]; }

private:
    std::array<std::vector<ItemPtr>, GroupCount> _groups;
    std::vector<TavloShowVisibleItem*> _pickable; ///< the newest first
};

} // namespace tavlo
