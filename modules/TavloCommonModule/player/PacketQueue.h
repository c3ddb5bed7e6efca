#pragma once

#include "TavloCommonModule/player/Segment.h"

#include <condition_variable>
#include <deque>
#include <mutex>

namespace tavlo {

/// What a stream's thread gets, in this order: a segment, its packets, its end; then the next segment, or the end of all.
struct QueueEntry
{
    SegmentPtr segment;  ///< set where one begins
    PacketPtr packet;    ///< set for a packet; none and no segment is the end of the segment
    bool isLast = false; ///< nothing follows, unless somebody goes back
};

/// The way of one stream from the reading thread to its own.
class PacketQueue
{
public:
    /// Reading thread. Never waits: the reader asks for `fill` and `bytes` before it reads on.
    void push(QueueEntry entry);

    /// Stream's thread. Waits for an entry; false once the queue is closed.
    bool pop(QueueEntry& entry);

    /// Throws away all that waits. Any thread.
    void clear();

    /// `pop` returns false from now on. Any thread.
    void close();

    /// Whether the stream's thread is through with all that was pushed. Any thread.
    bool isDrained() const;

    /// Microseconds of the stream that wait. Any thread.
    qint64 fill() const;
    size_t bytes() const;

private:
    mutable std::mutex _lock;
    std::condition_variable _filled;

    // guarded by _lock
    bool _idle = false; ///< the stream's thread waits for an entry
    std::deque<QueueEntry> _entries;
    bool _closed = false;
    qint64 _fill = 0; ///< microseconds, the sum of the packets' durations
    size_t _bytes = 0;
};

} // namespace tavlo
