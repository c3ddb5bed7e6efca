#include "TavloOutputModule/Interleaver.h"

#include <utility>

namespace tavlo {

void Interleaver::push(CodedPacketPtr packet, std::vector<CodedPacketPtr>& ready)
{
    (packet->video ? _video : _audio).push_back(std::move(packet));
    while (Waiting* waiting = next(false)) {
        ready.push_back(std::move(waiting->front()));
        waiting->pop_front();
    }
}

void Interleaver::drain(std::vector<CodedPacketPtr>& ready)
{
    while (Waiting* waiting = next(true)) {
        ready.push_back(std::move(waiting->front()));
        waiting->pop_front();
    }
}

/// Those whose first one is due; null when it has to wait, or nothing is there.
Interleaver::Waiting* Interleaver::next(bool ending)
{
    if (!_video.empty() && !_audio.empty())
        return _audio.front()->dts() < _video.front()->dts() ? &_audio : &_video;
    Waiting& only = _video.empty() ? _audio : _video;
    if (only.empty())
        return nullptr;
    const bool due = !_both || ending || only.back()->dts() - only.front()->dts() > _longestWait;
    return due ? &only : nullptr;
}

} // namespace tavlo
