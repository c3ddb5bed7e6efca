#pragma once

#include <QtGlobal>

#include <array>
#include <chrono>
#include <mutex>

namespace tavlo {

/// Bytes a second, over the last second, in kilobits. Any thread.
class ByteMeter
{
public:
    void add(size_t bytes)
    {
        const std::lock_guard guard(_lock);
        const qint64 slot = currentSlot();
        Slot& place = _slots[static_cast<size_t>(slot) % _slots.size()];
        if (place.number != slot)
            place = {slot, 0};
        place.bytes += bytes;
    }

    float kilobits()
    {
        const std::lock_guard guard(_lock);
        const qint64 slot = currentSlot();
        quint64 bytes = 0;
        for (const Slot& place : _slots)
            if (place.number < slot && place.number >= slot - slotsPerSecond)
                bytes += place.bytes;
        return static_cast<float>(bytes) * 8 / 1000;
    }

private:
    static constexpr int slotsPerSecond = 10;

    struct Slot
    {
        qint64 number = -1;
        quint64 bytes = 0;
    };

    static qint64 currentSlot()
    {
        using namespace std::chrono;
        return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count() * slotsPerSecond / 1000;
    }

    std::mutex _lock;
    std::array<Slot, 2 * slotsPerSecond> _slots; // guarded by _lock
};

} // namespace tavlo
