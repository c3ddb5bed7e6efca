#include "TavloCommonModule/player/TavloSourcePlayer.h"

#include "TavloCommonModule/player/CameraControl.h"

#include "shared/ModuleFactory.h"

#include <tavlo/Export.h>

#include <algorithm>

namespace {

bool isSame(const tagTavloSourcePlayerInfo& a, const tagTavloSourcePlayerInfo& b)
{
    return a.kind == b.kind && a.deviceName == b.deviceName && a.inputNode == b.inputNode && a.standard == b.standard &&
           a.deviceDisplayName == b.deviceDisplayName && a.audioDeviceName == b.audioDeviceName &&
           a.audioInputSignal == b.audioInputSignal && a.channelNumber == b.channelNumber && a.url == b.url &&
           a.pathList == b.pathList && a.caching == b.caching && a.playbackLoop == b.playbackLoop &&
           a.hwDecode == b.hwDecode && a.deinterlaceMode == b.deinterlaceMode;
}

bool isAtWork(qint32 state) { return state < TavloSourcePlayerStateStopped; }

} // namespace

void TavloSourcePlayer::setSink(ITavloSourcePlayerSink* sink)
{
    const std::scoped_lock lock(_controlLock);
    _sink = sink;
}

void TavloSourcePlayer::play(tagTavloSourcePlayerInfo* info, tagTavloMediaFormatInfo* wanted, qint64)
{
    if (!info)
        return;
    const std::scoped_lock lock(_controlLock);
    if (!_sink)
        return;
    if (const SessionPtr running = session(); running && isAtWork(running->state()) && isSame(running->info(), *info)) {
        running->setPaused(false);
        return;
    }
    if (const SessionPtr running = session())
        running->stop();
    auto next = std::make_shared<tavlo::PlaySession>(*_sink, *info, wanted ? *wanted : tagTavloMediaFormatInfo());
    if (_rate != 1.0F)
        next->setRate(_rate);
    const std::scoped_lock sessionLock(_sessionLock);
    _session = std::move(next);
}

void TavloSourcePlayer::stop()
{
    const std::scoped_lock lock(_controlLock);
    if (const SessionPtr running = session())
        running->stop();
}

void TavloSourcePlayer::pause()
{
    const std::scoped_lock lock(_controlLock);
    if (const SessionPtr running = session(); running && isAtWork(running->state()))
        running->setPaused(!running->isPaused());
}

float TavloSourcePlayer::rate()
{
    const SessionPtr running = session();
    return running ? running->rate() : 1.0F;
}

void TavloSourcePlayer::setRate(float rate)
{
    const std::scoped_lock lock(_controlLock);
    _rate = rate;
    if (const SessionPtr running = session())
        running->setRate(rate);
}

void TavloSourcePlayer::losses(quint64* late, quint64* dropped)
{
    const SessionPtr running = session();
    *late = running ? running->latePictures() : 0;
    *dropped = running ? running->droppedPictures() : 0;
}

void TavloSourcePlayer::length(qint64* milliseconds)
{
    const SessionPtr running = session();
    *milliseconds = running ? running->length() : 0;
}

void TavloSourcePlayer::time(qint64* milliseconds)
{
    const SessionPtr running = session();
    *milliseconds = running ? running->time() : 0;
}

void TavloSourcePlayer::setTime(qint64 milliseconds)
{
    const std::scoped_lock lock(_controlLock);
    if (const SessionPtr running = session())
        running->setTime(milliseconds);
}

void TavloSourcePlayer::position(qint64* milliseconds)
{
    const SessionPtr running = session();
    *milliseconds = running && !running->isLive() ? running->time() : 0;
}

void TavloSourcePlayer::setPosition(qint64 milliseconds) { setTime(milliseconds); }

qint32 TavloSourcePlayer::state()
{
    const SessionPtr running = session();
    return running ? running->state() : TavloSourcePlayerStateIdle;
}

qint32 TavloSourcePlayer::itemCount()
{
    const SessionPtr running = session();
    return running ? running->itemCount() : 0;
}

qint32 TavloSourcePlayer::itemIndex()
{
    const SessionPtr running = session();
    return running ? running->itemIndex() : 0;
}

ICloudTourControl* TavloSourcePlayer::cloudTourControl()
{
    const SessionPtr running = session();
    return running ? running->camera() : nullptr;
}

TavloSourcePlayer::SessionPtr TavloSourcePlayer::session() const
{
    const std::scoped_lock lock(_sessionLock);
    return _session;
}

extern "C" TAVLO_EXPORT IUnknownEx* CreateTavloSourcePlayer(const TavloInterfaceId& id, quint32 version)
{
    return tavlo::makeForModule<TavloSourcePlayer>(id, version);
}
