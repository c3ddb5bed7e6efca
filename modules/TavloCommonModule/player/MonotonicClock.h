#pragma once

#include <QtGlobal>

#include <chrono>

namespace tavlo {

/// Microseconds of the system's monotonic clock, the one that the engine stamps its frames with. Any thread.
inline qint64 monotonicNow()
{
    return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

inline std::chrono::steady_clock::time_point monotonicPoint(qint64 microseconds)
{
    return std::chrono::steady_clock::time_point(std::chrono::microseconds(microseconds));
}

} // namespace tavlo
