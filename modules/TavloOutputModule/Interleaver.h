#pragma once

#include "TavloOutputModule/CodedPacket.h"

#include <deque>
#include <vector>

namespace tavlo {

/// Brings the packets of pictures and sound, each in order, into one order by their dts.
///
/// A packet waits until the other kind has come as far; one second at most, in case that one has broken off.
class Interleaver
{
public:
    static constexpr qint64 longestWait = 1'000'000; ///< microseconds of dts

    Interleaver(bool hasVideo, bool hasAudio) : _both(hasVideo && hasAudio) {}

    /// Takes a packet and appends those that may go on.
    void push(CodedPacketPtr packet, std::vector<CodedPacketPtr>& ready);

    /// Appends all that wait.
    void drain(std::vector<CodedPacketPtr>& ready);

private:
    using Waiting = std::deque<CodedPacketPtr>;

    Waiting* next(bool ending);

    const bool _both;
    Waiting _video, _audio;
};

} // namespace tavlo
