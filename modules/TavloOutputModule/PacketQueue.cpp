#include "TavloOutputModule/PacketQueue.h"

#include <utility>

namespace tavlo {

void PacketQueue::push(CodedPacketPtr packet)
{
    {
        const std::lock_guard guard(_lock);
        if (_ended)
            return;
        _needsKey = _needsKey && !packet->key;
        if (_needsKey) {
            countDropped(*packet);
            return;
        }
        _packets.push_back(std::move(packet));
        if (_packets.back()->dts() - _packets.front()->dts() > _limit)
            dropToKey();
    }
    _changed.notify_one();
}

void PacketQueue::dropToKey()
{
    do {
        countDropped(*_packets.front());
        _packets.pop_front();
    } while (!_packets.empty() && _hasVideo && !_packets.front()->key);
    _needsKey = _hasVideo && _packets.empty();
}

CodedPacketPtr PacketQueue::pop()
{
    std::unique_lock guard(_lock);
    _changed.wait(guard, [this] { return _ended || !_packets.empty(); });
    if (_packets.empty())
        return nullptr;
    CodedPacketPtr packet = std::move(_packets.front());
    _packets.pop_front();
    return packet;
}

void PacketQueue::end()
{
    {
        const std::lock_guard guard(_lock);
        _ended = true;
    }
    _changed.notify_one();
}

void PacketQueue::clear()
{
    const std::lock_guard guard(_lock);
    _packets.clear();
}

void PacketQueue::countDropped(const CodedPacket& packet)
{
    if (packet.video || !_hasVideo)
        _dropped.fetch_add(1, std::memory_order_relaxed);
}

} // namespace tavlo
