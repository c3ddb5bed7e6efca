#include "TavloCommonModule/player/PlaySession.h"

#include "TavloCommonModule/player/AudioLine.h"
#include "TavloCommonModule/player/CameraControl.h"
#include "TavloCommonModule/player/Demuxer.h"
#include "TavloCommonModule/player/LooseThreads.h"
#include "TavloCommonModule/player/VideoLine.h"

#include <QDebug>

#include <algorithm>

namespace tavlo {

PlaySession::PlaySession(ITavloSourcePlayerSink& sink, const tagTavloSourcePlayerInfo& info,
                         const tagTavloMediaFormatInfo& wanted)
    : _context(std::make_shared<PlayContext>(&sink, info, wanted, planInput(info, wanted)))
{
    if (_context->plan.entries.isEmpty()) {
        qDebug().noquote() << "player: nothing to open -" << _context->plan.refusal;
        stop();
        return;
    }
    _video = std::make_unique<VideoLine>(*_context);
    _audio = std::make_unique<AudioLine>(*_context);
    if (info.kind == TavloSourcePlayerKindHikvision)
        _camera = std::make_unique<CameraControl>(info);
    _video->start("tavlo-picture");
    _audio->start("tavlo-sound");
    startReader(false);
    if (_context->plan.second)
        startReader(true);
}

PlaySession::~PlaySession() { stop(); }

void PlaySession::startReader(bool second)
{
    const InputLocation& entry = second ? *_context->plan.second : _context->plan.entries.front();
    LooseThreads::instance().start("tavlo-reader", entry.place, {_context, &_context->aborted},
                                   [context = _context, second] { Demuxer(context, second).run(); });
}

void PlaySession::stop()
{
    if (_context->aborted.exchange(true))
        return;
    _context->pictures.close();
    _context->sound.close();
    _context->wakeAll();
    if (_camera)
        _camera->end();
    if (_video)
        _video->join();
    if (_audio)
        _audio->join();
    if (_context->paused.exchange(false)) // or it would be silent in the next play
        _context->sink->OnMediaSourcePlayerDoAudioResume(_context->clock.now());
    _context->progress.stop();
    _context->clock.useSystemTime();
}

CameraControl* PlaySession::camera() const { return _context->aborted ? nullptr : _camera.get(); }

void PlaySession::setPaused(bool paused)
{
    if (_context->paused.exchange(paused) == paused)
        return;
    const qint64 now = _context->clock.now();
    _context->clock.setPaused(paused);
    if (paused)
        _context->sink->OnMediaSourcePlayerDoAudioPause(now);
    else
        _context->sink->OnMediaSourcePlayerDoAudioResume(now);
    _context->progress.setPaused(paused);
}

void PlaySession::setRate(float rate)
{
    if (std::isfinite(rate))
        _context->clock.setRate(std::clamp(static_cast<double>(rate), 0.25, 4.0));
}

qint64 PlaySession::length() const
{
    const SegmentPtr segment = _context->progress.current();
    return segment && !segment->live ? segment->itemLength / 1000 : 0;
}

qint64 PlaySession::time() const
{
    const SegmentPtr segment = _context->progress.current();
    if (!segment)
        return 0;
    if (segment->epoch != _context->epoch)
        return _soughtTime;
    const qint64 time = segment->itemTimeOf(std::max(_context->clock.pictureTime(), segment->timelineStart)) / 1000;
    return segment->live || segment->itemLength == 0 ? time : std::min(time, segment->itemLength / 1000);
}

void PlaySession::setTime(qint64 milliseconds)
{
    const SegmentPtr segment = _context->progress.current();
    if (!segment || segment->live)
        return;
    const qint64 last = segment->itemLength > 0 ? segment->itemLength / 1000 : INT64_MAX / 1000;
    const qint64 time = std::clamp<qint64>(milliseconds, 0, last);
    _soughtTime = time;
    {
        const std::scoped_lock lock(_context->readerLock);
        _context->seek = PlayContext::Seek{itemIndex(), time * 1000};
        ++_context->epoch;
    }
    _context->wakeAll();
}

bool PlaySession::isLive() const
{
    const SegmentPtr segment = _context->progress.current();
    return segment && segment->live;
}

} // namespace tavlo
