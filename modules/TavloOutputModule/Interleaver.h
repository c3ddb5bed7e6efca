#pragma once

#include "TavloOutputModule/CodedPacket.h"

#include <deque>
#include <vector>

namespace tavlo {

/// Brings the packets of pictures and sound, each in order, into one order by their dts.
///
/// A packet waits until the other kind has come as far, but not for ever: that one may have broken off.
class Interleaver
{
public:
    /// \param longestWait  microseconds of dts
    Interleaver(bool hasVideo, bool hasAudio, qint64 longestWait)
        : _both(hasVideo && hasAudio), _longestWait(longestWait)
    {}

    /// Takes a packet and appends those that may go on.
    void push(CodedPacketPtr packet, std::vector<CodedPacketPtr>& ready);

    /// Appends all that wait.
    void drain(std::vector<CodedPacketPtr>& ready);

private:
    using Waiting = std::deque<CodedPacketPtr>;

    Waiting* next(bool ending);

    const bool _both;
    const qint64 _longestWait;
    Waiting _video, _audio;
};

} // namespace tavlo
