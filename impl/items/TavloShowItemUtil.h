#pragma once

#include "items/TavloShowVisibleItem.h"

#include <tavlo/records/ShowRecords.h>

#include <memory>

namespace tavlo {

using ItemPtr = std::unique_ptr<TavloShowVisibleItem>;

/// Makes an item at that place, or nothing. A null maker makes nothing.
struct ItemMakers
{
    ItemPtr (*logo)(const ItemSite& site, const tagTavloShowLogoInfo& info) = nullptr;
    ItemPtr (*overlay)(const ItemSite& site, const tagTavloShowLogoInfo& info) = nullptr;
    ItemPtr (*text)(const ItemSite& site, const tagTavloShowTextInfo& info) = nullptr;
};

} // namespace tavlo

/// The kinds of items.
namespace TavloShowItemUtil {

/// Frame thread.
const tavlo::ItemMakers& itemMakers();

/// Before engines run.
void setItemMakers(const tavlo::ItemMakers& makers);

} // namespace TavloShowItemUtil
