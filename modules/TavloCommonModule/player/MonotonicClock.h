#pragma once

#include "TavloCommonModule/player/ITavloSourcePlayer.h"

#include <tavlo/InterfacePtr.h>

#include <chrono>

namespace tavlo {

/// Microseconds of the system's monotonic clock, the one that the engine stamps its frames with. Any thread.
inline qint64 monotonicNow()
{
    return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

/// The system's monotonic clock as the time to play on. Any thread.
class MonotonicTime final : public Implements<MonotonicTime, ITavloSourcePlayerTime>
{
public:
    static MonotonicTime& instance()
    {
        static MonotonicTime time;
        return time;
    }

    void destroy() override {}
    qint64 now() override { return monotonicNow(); }
    void wait(std::condition_variable& changed, std::unique_lock<std::mutex>& lock, qint64 until) override
    {
        changed.wait_until(lock, std::chrono::steady_clock::time_point(std::chrono::microseconds(until)));
    }
};

} // namespace tavlo
