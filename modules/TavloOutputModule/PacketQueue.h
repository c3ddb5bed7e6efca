#pragma once

#include "TavloOutputModule/CodedPacket.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>

namespace tavlo {

/// What waits for a target. Limited by time: beyond it, the oldest packets go up to the next key picture.
///
/// Any thread.
class PacketQueue
{
public:
    /// \param limit  microseconds of dts  \param hasVideo  whether key pictures are to be expected
    PacketQueue(qint64 limit, bool hasVideo) : _limit(limit), _hasVideo(hasVideo) {}

    /// Never waits. Behind `end` the packet is lost.
    void push(CodedPacketPtr packet);

    /// Waits for the next packet; null when the queue has ended and is empty.
    CodedPacketPtr pop();

    /// Lets `pop` give what is left, and then null.
    void end();

    /// Throws away what waits.
    void clear();

    /// Pictures that were dropped; blocks of sound where there are no pictures.
    quint64 dropped() const { return _dropped.load(std::memory_order_relaxed); }
    void countDropped(const CodedPacket& packet);

private:
    void dropToKey();

    const qint64 _limit;
    const bool _hasVideo;

    // guarded by _lock
    std::mutex _lock;
    std::condition_variable _changed;
    std::deque<CodedPacketPtr> _packets;
    bool _needsKey = false; ///< everything was dropped: what comes is of no use before the next key picture
    bool _ended = false;

    std::atomic<quint64> _dropped{0};
};

} // namespace tavlo
