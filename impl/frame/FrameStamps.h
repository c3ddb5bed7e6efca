#pragma once

#include <QtGlobal>

namespace tavlo {

/// The stamps of a frame step.
struct FrameStamps
{
    quint64 time = 0;              ///< seconds since the epoch
    quint64 frameId = 0;           ///< counts the steps of a run from 0
    quint64 clockMicroseconds = 0; ///< the millisecond clock times 1000

    quint64 clockMilliseconds() const { return clockMicroseconds / 1000; }
};

} // namespace tavlo
