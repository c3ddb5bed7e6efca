#include "TavloCommonModule/player/FrameInput.h"

#include "TavloCommonModule/player/FramePacket.h"
#include "TavloCommonModule/player/MonotonicClock.h"

extern "C" {
#include <libavutil/time.h>
}

#include <QDebug>

#include <utility>

namespace tavlo {

bool FrameInput::open(const InputLocation& location, bool pictures, bool sound)
{
    close();
    _pictures = pictures && !location.soundOnly;
    _sound = sound && !location.picturesOnly;
    QString reason = connect(location, _pictures, _sound);
    if (reason.isEmpty()) {
        if (const int result = awaitFirst(); result < 0)
            reason = ffmpegError(result);
    }
    if (!reason.isEmpty()) {
        close();
        if (!_interrupted)
            qDebug().noquote() << "player: failed to open" << location.name << "-" << reason;
        return false;
    }
    if (_pictures)
        _video = std::make_shared<const StreamInfo>(AVMEDIA_TYPE_VIDEO, _first.frameRate);
    if (_sound)
        _audio = std::make_shared<const StreamInfo>(AVMEDIA_TYPE_AUDIO, AVRational{0, 1});
    return true;
}

void FrameInput::close()
{
    _first = {};
    _video.reset();
    _audio.reset();
    _stamps.reset();
    disconnect();
}

int FrameInput::read(AVPacket& packet)
{
    Arrival arrival = std::exchange(_first, {});
    if (!arrival.frame) {
        if (const int result = await(arrival); result < 0)
            return result;
    }
    packet.stream_index = arrival.isVideo ? videoIndex : videoIndex + 1;
    return packFrame(std::move(arrival.frame), packet) ? 0 : AVERROR(ENOMEM);
}

/// A picture, as it tells the frame rate; sound where none comes.
int FrameInput::awaitFirst()
{
    const qint64 deadline = monotonicNow() + 500'000;
    int result = 0;
    do
        result = await(_first);
    while (result == 0 && _pictures && !_first.isVideo && monotonicNow() < deadline);
    return result;
}

/// The next one that is wanted, stamped with the wall clock.
int FrameInput::await(Arrival& arrival)
{
    const qint64 deadline = monotonicNow() + patience;
    while (!_interrupted && monotonicNow() < deadline) {
        const int result = fetch(arrival);
        if (result == AVERROR(EAGAIN))
            continue;
        if (result < 0)
            return result;
        arrival.frame->pts = _stamps.toWall(arrival.frame->pts, av_gettime());
        if (arrival.isVideo ? _pictures : _sound)
            return 0;
    }
    return _interrupted ? AVERROR_EXIT : AVERROR(ETIMEDOUT);
}

} // namespace tavlo
