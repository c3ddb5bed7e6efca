#pragma once

#include "TavloOutputModule/Target.h"

#include <tavlo/records/OutputRecords.h>

#include <memory>
#include <vector>

namespace tavlo {

struct TargetList
{
    std::unique_ptr<Target> record;
    std::vector<std::unique_ptr<Target>> net; ///< and the recording in segments

    bool isEmpty() const { return !record && net.empty(); }
};

/// A target for everything that the settings enable. What cannot be is told in the log and left out.
TargetList makeTargets(const tagTavloPresentOutputParam& param, const StreamFormat& format);

} // namespace tavlo
