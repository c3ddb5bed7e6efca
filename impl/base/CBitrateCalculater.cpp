#include <tavlo/CBitrateCalculater.h>

#include "base/Clock.h"

#include <algorithm>

// Every slot notes when its first count arrived. Between the first counts of the oldest and of the newest slot arrived
// exactly what all slots but the newest hold: for a steady input that quotient is the rate, whatever the slots cut.

namespace {

constexpr qint64 windowMicroseconds = 1'000'000;
constexpr qint64 slotMicroseconds = 10'000; // 128 slots cover the window with room to spare

} // namespace

CBitrateCalculater::CBitrateCalculater() : CBitrateCalculater(&tavlo::monotonicMicroseconds) {}

CBitrateCalculater::CBitrateCalculater(Clock clock) : _clock(clock) {}

void CBitrateCalculater::Deliver(unsigned long count)
{
    const qint64 now = _clock();
    const std::lock_guard lock(_lock);
    if (_used > 0 && now - _slots[static_cast<size_t>(_newest)].since < slotMicroseconds) {
        _slots[static_cast<size_t>(_newest)].count += count;
        return;
    }
    const int size = static_cast<int>(_slots.size());
    _newest = (_newest + 1) % size;
    _used = std::min(_used + 1, size);
    _slots[static_cast<size_t>(_newest)] = {now, count};
}

double CBitrateCalculater::samplerateCurrent(bool upToNow)
{
    const qint64 now = _clock();
    const std::lock_guard lock(_lock);
    if (_used < 2)
        return 0.0;

    const auto slot = [this](int age) -> const Slot& {
        const int size = static_cast<int>(_slots.size());
        return _slots[static_cast<size_t>((_newest - age + size) % size)];
    };
    // An input of less than two slots a second is measured by its last interval.
    const qint64 newest = slot(0).since;
    const qint64 lastInterval = newest - slot(1).since;
    quint64 count = slot(1).count;
    qint64 span = lastInterval;
    int intervals = 1;
    for (; intervals + 1 < _used && newest - slot(intervals + 1).since <= windowMicroseconds; ++intervals) {
        count += slot(intervals + 1).count;
        span = newest - slot(intervals + 1).since;
    }

    const qint64 silence = upToNow ? now - newest : 0;
    if (silence >= std::max(windowMicroseconds, 2 * lastInterval))
        return 0.0;
    if (silence * intervals > 2 * span) // longer than the input's own rhythm explains
        span += silence;
    return static_cast<double>(count) * 1000.0 / static_cast<double>(span);
}

double CBitrateCalculater::kbpsCurrent(bool upToNow)
{
    return samplerateCurrent(upToNow) * 8.0; // bytes a millisecond, times 8, are kilobits a second
}
