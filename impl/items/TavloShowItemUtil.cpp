#include "items/TavloShowItemUtil.h"

namespace {

tavlo::ItemMakers& makers()
{
    static tavlo::ItemMakers all;
    return all;
}

} // namespace

const tavlo::ItemMakers& TavloShowItemUtil::itemMakers() { return makers(); }

void TavloShowItemUtil::setItemMakers(const tavlo::ItemMakers& wanted) { makers() = wanted; }
