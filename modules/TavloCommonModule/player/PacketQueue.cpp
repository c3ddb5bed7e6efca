#include "TavloCommonModule/player/PacketQueue.h"

#include <algorithm>
#include <utility>

namespace tavlo {

// A packet's duration is in microseconds here: the reader has brought it to that.
void PacketQueue::push(QueueEntry entry)
{
    {
        const std::scoped_lock lock(_lock);
        if (_closed)
            return;
        if (entry.packet) {
            _fill += entry.packet->duration;
            _bytes += static_cast<size_t>(entry.packet->size);
        }
        _entries.push_back(std::move(entry));
    }
    _filled.notify_one();
}

bool PacketQueue::pop(QueueEntry& entry)
{
    std::unique_lock lock(_lock);
    _idle = true;
    _filled.wait(lock, [this] { return _closed || !_entries.empty(); });
    _idle = false;
    if (_closed)
        return false;
    entry = std::move(_entries.front());
    _entries.pop_front();
    if (entry.packet) {
        _fill -= entry.packet->duration;
        _bytes -= static_cast<size_t>(entry.packet->size);
    }
    return true;
}

void PacketQueue::clear()
{
    std::deque<QueueEntry> dropped; // packets are freed without the lock
    const std::scoped_lock lock(_lock);
    dropped.swap(_entries);
    _fill = 0;
    _bytes = 0;
}

void PacketQueue::close()
{
    {
        const std::scoped_lock lock(_lock);
        _closed = true;
    }
    _filled.notify_all();
    clear();
}

bool PacketQueue::isDrained() const
{
    const std::scoped_lock lock(_lock);
    return _closed || (_idle && _entries.empty());
}

qint64 PacketQueue::fill() const
{
    const std::scoped_lock lock(_lock);
    return _fill;
}

size_t PacketQueue::bytes() const
{
    const std::scoped_lock lock(_lock);
    return _bytes;
}

} // namespace tavlo
