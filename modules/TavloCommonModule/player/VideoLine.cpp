#include "TavloCommonModule/player/VideoLine.h"

#include "TavloCommonModule/player/GraphicsMemory.h"

#include <QDebug>

#include <algorithm>
#include <cmath>

namespace tavlo {
namespace {

/// The sink takes what is there at its next frame, half a frame later on average. A frame of 200 milliseconds and more
/// is no video's.
qint64 halfFrame(const tagTavloVideoInfo& shown)
{
    if (shown.fpsNum <= 0 || shown.fpsDen <= 0)
        return 0;
    return std::min<qint64>(av_rescale(500'000, shown.fpsDen, shown.fpsNum), 100'000);
}

} // namespace

VideoLine::VideoLine(PlayContext& context)
    : StreamLine(context, context.pictures, StartGate::Pictures), _filter(context.info.deinterlaceMode),
      _output(*context.sink, context.wanted.videoInfo), _ahead(halfFrame(context.wanted.videoInfo)),
      _held(av_frame_alloc())
{}

void VideoLine::begin(bool anew)
{
    if (_segment->video)
        _filter.begin(*_segment->video);
    _holds = false;
    av_frame_unref(_held.get());
    if (anew)
        _firstOfEpoch = true;
}

bool VideoLine::take(AVFrame& frame, qint64 stamp)
{
    return _filter.process(frame, stamp, [this](AVFrame& f, qint64 s) { return schedule(f, s); });
}

bool VideoLine::mayStay(const AVFrame& frame)
{
    return isInGraphicsMemory(frame) && PictureWriter::isDrawn(frame) && !_filter.changes(frame) &&
           _output.takesFromGraphicsMemory(frame, _segment->video->frameRate);
}

/// What stands before the place to begin with is left out, but for the last: that is the picture of the place.
bool VideoLine::schedule(AVFrame& frame, qint64 stamp)
{
    const qint64 timeline = _segment->timelineOf(stamp);
    if (timeline <= _segment->timelineStart + seekSlack && _segment->from > 0) {
        av_frame_unref(_held.get());
        av_frame_ref(_held.get(), &frame);
        _holds = true;
        _heldTimeline = std::max(timeline, _segment->timelineStart);
        return true;
    }
    return flushHeld() && present(frame, std::max(timeline, _segment->timelineStart));
}

bool VideoLine::flushHeld()
{
    if (!std::exchange(_holds, false))
        return true;
    const bool wanted = present(*_held, _heldTimeline);
    av_frame_unref(_held.get());
    return wanted;
}

bool VideoLine::present(AVFrame& frame, qint64 timeline)
{
    if (!passGate())
        return false;
    // The first one is shown at once: in a pause, it is how a place that was gone to can be seen.
    const bool first = std::exchange(_firstOfEpoch, false) && _context.paused;
    const qint64 ahead = std::llround(static_cast<double>(_ahead) * _context.clock.rate());
    if (!first && !_context.clock.waitForPicture(timeline - ahead, [this] { return isOver(); }))
        return false;
    if (!first && isLate(timeline)) {
        ++_context.latePictures;
        return true;
    }
    _lastShown = _context.clock.now();
    _context.progress.advance(timeline);
    switch (_output.show(frame, _segment->video->frameRate, _context.clock.dateOf(timeline))) {
    case PictureOutput::Outcome::Shown:
        break;
    case PictureOutput::Outcome::NoPicture:
        ++_context.picturesWithoutPool;
        break;
    case PictureOutput::Outcome::Unfit:
        ++_context.unfitPictures;
        break;
    }
    return true;
}

bool VideoLine::isLate(qint64 timeline)
{
    if (_segment->video->isPicture)
        return false;
    return _context.clock.lateness(timeline) > lateLimit && _context.clock.now() - _lastShown < longestGap;
}

void VideoLine::endSegment()
{
    if (_filter.drain([this](AVFrame& f, qint64 s) { return schedule(f, s); }))
        flushHeld();
}

void VideoLine::finish()
{
    _output.close();
    const quint64 late = _context.latePictures, held = _context.picturesWithoutPool, unfit = _context.unfitPictures;
    if (late + held + unfit > 0)
        qDebug().nospace() << "player: pictures left out: too late " << late << ", all pictures held " << held
                           << ", not to be converted " << unfit;
}

} // namespace tavlo
