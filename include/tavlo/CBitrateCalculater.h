#pragma once

#include <tavlo/Export.h>

#include <QtGlobal>

#include <array>
#include <mutex>

/// Measures a rate: frames, samples or bytes, over the last second.
///
/// A steady input is measured exactly, a change is settled within a second, an input that ends reads 0 a second
/// later (or twice its last interval later, for one that comes less than twice a second). Any thread; the lock inside
/// is held for a few additions.
class TAVLO_EXPORT CBitrateCalculater
{
public:
    using Clock = qint64 (*)(); ///< monotonic microseconds

    /// A meter on the system's monotonic clock.
    CBitrateCalculater();

    /// A meter on a clock of the caller's, for simulated time.
    explicit CBitrateCalculater(Clock clock);

    /// Adds a count that arrived now. Nothing is allocated.
    void Deliver(unsigned long count);

    /// Counts a millisecond. With `upToNow` the time since the last delivery counts too, so that a rate that has
    /// broken off falls; without it the rate is that of the moment of the last delivery.
    double samplerateCurrent(bool upToNow);

    /// Kilobits a second, where the counts are bytes.
    double kbpsCurrent(bool upToNow);

private:
    /// Counts that arrived within one slot of time; `since` is the moment of the first of them.
    struct Slot
    {
        qint64 since = 0;
        quint64 count = 0;
    };

    // fixed after construction
    Clock _clock;

    // guarded by _lock
    std::mutex _lock;
    std::array<Slot, 128> _slots{}; ///< a ring; `_used` slots end at `_newest`
    int _newest = 0;
    int _used = 0;
};
