#include "sources/TavloPresentSourceMediaVLC.h"

#include "drawing/PictureChroma.h"

#include "shared/CudaPicture.h"

#include <QDebug>

#include <algorithm>

using namespace tavlo;

TavloPresentSourceMediaVLC::TavloPresentSourceMediaVLC(const SourceSite& site)
    : TavloPresentSourceMedia(site), _playerHelper("TavloCommonModule", "CreateTavloSourcePlayer"),
      _cudaResource("TavloCUDAUtil", "CreateTavloVideoCUDAResource")
{
    if (_playerHelper.create())
        _playerHelper->setSink(this);
}

TavloPresentSourceMediaVLC::~TavloPresentSourceMediaVLC()
{
    _playerHelper.destroy(); // its threads call this object
    forgetWaiting();
}

bool TavloPresentSourceMediaVLC::openSource(const tagTavloPresentSourceInfo& info)
{
    if (!TavloPresentSourceMedia::openSource(info))
        return false;
    if (info.enableCUDAAccelerate)
        createCudaResource();
    qDebug() << (keepsGraphicsMemory() ? "use cuda resource to copy texture" : "use d3d resource to copy texture");
    return true;
}

/// Pictures go into a texture of their own, so that they are keyed, cropped and placed like all others.
void TavloPresentSourceMediaVLC::createCudaResource()
{
    if (!_site.device || !_cudaResource.create())
        return;
    const graphics::TexturePtr probe =
        _site.device->createTexture({.width = 16, .height = 24, .format = graphics::Format::R8_UNORM});
    if (_cudaResource->create(probe.get(), 16, 24))
        return;
    qDebug() << "failed to create cuda res ";
    _cudaResource.destroy();
}

void TavloPresentSourceMediaVLC::closeSource()
{
    if (keepsGraphicsMemory()) {
        const std::lock_guard guard(_pictureMutex);
        _cudaResource->release();
        _cudaResource.destroy();
    }
    forgetWaiting();
    TavloPresentSourceMedia::closeSource();
}

IUnknownEx* TavloPresentSourceMediaVLC::queryInterface(const TavloInterfaceId& id, quint32 version)
{
    if (id == ITavloSourcePlayerSink::interfaceId && acceptsInterfaceVersion(version))
        return static_cast<ITavloSourcePlayerSink*>(this);
    return TavloPresentSourceMedia::queryInterface(id, version);
}

void TavloPresentSourceMediaVLC::drawFrame(TavloDrawDX11&, const FrameStamps& stamps)
{
    if (keepsGraphicsMemory() && _inGraphicsMemory)
        drawFromGraphicsMemory();
    leaveOutOverdue(static_cast<qint64>(stamps.clockMicroseconds));
    Waiting next = takeWaiting();
    if (!next.picture)
        return; // the channel keeps what it shows
    if (next.commandList)
        _site.context->executeCommandList(std::move(next.commandList));
    _videoClock = next.picture->date;
    const PooledPicture& pooled = *pooledPicture(*next.picture);
    const video_format_t& format = next.picture->format;
    drawPicture(pooled.chroma, QSizeF(format.i_width, format.i_height), {pooled.planeOffset[0], pooled.planeOffset[1]},
                pooled.texture, false);
    picture_Release(next.picture);
    _drawRate.Deliver(1);
}

void TavloPresentSourceMediaVLC::drawFromGraphicsMemory()
{
    quint32 width = 0, height = 0;
    {
        const QReadLocker locker(&_mediaLock);
        width = _told.width;
        height = _told.height;
    }
    const quint32 rows = height + height / 2;
    if (width == 0 || height == 0)
        return;
    if (!_cudaTexture || _cudaTexture->desc().width != width || _cudaTexture->desc().height != rows) {
        if (!_formerCudaTexture) // the resource knows it until it has written another one
            _formerCudaTexture = std::move(_cudaTexture);
        _cudaTexture =
            _site.device->createTexture({.width = width, .height = rows, .format = graphics::Format::R8_UNORM});
    }
    if (!_cudaTexture || !_cudaResource->copyTo(_cudaTexture.get()))
        return; // the channel keeps what it shows
    _formerCudaTexture.reset();
    _videoClock = _graphicsMemoryDate.load();
    drawPicture(tavloFourcc("NV12"), QSizeF(width, height), {width * height, 0}, _cudaTexture, false);
    _drawRate.Deliver(1);
}

// The pictures' way from the player's thread to the frame thread

bool TavloPresentSourceMediaVLC::takesPicture()
{
    const std::lock_guard guard(_pictureMutex);
    return _waitingCount < waitingLimit && _channel.load();
}

TavloPresentSourceMediaVLC::Waiting TavloPresentSourceMediaVLC::takeWaiting()
{
    const std::lock_guard guard(_pictureMutex);
    if (_waitingCount == 0)
        return {};
    Waiting oldest = std::exchange(_waiting[0], {});
    std::rotate(_waiting.begin(), _waiting.begin() + 1, _waiting.end());
    --_waitingCount;
    return oldest;
}

/// Where the picture after the next is due as well, a frame was late, and all that follow would stay behind the sound.
/// \param now  microseconds of the clock of the pictures' dates
void TavloPresentSourceMediaVLC::leaveOutOverdue(qint64 now)
{
    {
        const std::lock_guard guard(_pictureMutex);
        if (_waitingCount < waitingLimit || _waiting[1].picture->date > now)
            return;
    }
    picture_Release(takeWaiting().picture);
    ++_unwanted;
}

void TavloPresentSourceMediaVLC::forgetWaiting()
{
    for (Waiting waiting = takeWaiting(); waiting.picture; waiting = takeWaiting())
        picture_Release(waiting.picture);
}

void TavloPresentSourceMediaVLC::OnMediaSourcePlayerDoVideoStart(quint32 chroma, tagTavloVideoInfo& videoInfo)
{
    {
        const std::lock_guard guard(_pictureMutex);
        _inGraphicsMemory = keepsGraphicsMemory() && chroma == chromaInGraphicsMemory;
        if (_inGraphicsMemory)
            _cudaResource->videoStarted();
    }
    _layout = _inGraphicsMemory ? PictureLayout{chroma, chroma} : pictureLayout(chroma, *_site.device);
    videoInfo.chroma = _layout.written;
    const QWriteLocker locker(&_mediaLock);
    _mediaFormat.videoInfo = videoInfo;
    const auto width = static_cast<int>(videoInfo.sourceWidth), height = static_cast<int>(videoInfo.sourceHeight);
    video_format_Setup(&_videoFormat, videoInfo.chroma, width, height, width, height, 1, 1);
    _told.width = static_cast<quint32>(width);
    _told.height = static_cast<quint32>(height);
    _told.frameRate = static_cast<float>(videoInfo.fpsNum) / static_cast<float>(std::max(videoInfo.fpsDen, 1));
}

void TavloPresentSourceMediaVLC::OnMediaSourcePlayerDoVideoStop()
{
    {
        const std::lock_guard guard(_pictureMutex);
        if (_inGraphicsMemory.exchange(false) && keepsGraphicsMemory())
            _cudaResource->videoStopped();
    }
    _picturePool.reset();
    const quint64 unwanted = _unwanted;
    if (const quint64 more = unwanted - std::exchange(_unwantedTold, unwanted); more > 0)
        qDebug() << "source: pictures that no frame had room for:" << more;
    if (_site.deferredContext)
        _site.deferredContext->detach(); // another run may come on another thread
    const QWriteLocker locker(&_mediaLock);
    _mediaFormat.videoInfo.chroma = 0;
    _told.width = 0;
    _told.height = 0;
    _told.frameRate = 0.0F;
}

void TavloPresentSourceMediaVLC::OnMediaSourcePlayerDoAudioStart(tagTavloAudioInfo& audioInfo)
{
    const QWriteLocker locker(&_mediaLock);
    _mediaFormat.audioInfo = audioInfo;
    _told.audioSampleRate = static_cast<quint32>(audioInfo.sampleRate);
}

void TavloPresentSourceMediaVLC::OnMediaSourcePlayerDoAudioStop()
{
    const QWriteLocker locker(&_mediaLock);
    _mediaFormat.audioInfo.audioFourcc = 0;
}

picture_pool_t* TavloPresentSourceMediaVLC::OnMediaSourcePlayerDoVideoSamplePool(quint32* count)
{
    *count = PicturePool::pictureCount;
    if (_inGraphicsMemory)
        return nullptr;
    return _picturePool.create(
        _videoFormat, _layout.drawn, *_site.device, *_site.deferredContext,
        [](void* owner) { return static_cast<TavloPresentSourceMediaVLC*>(owner)->takesPicture(); }, this);
}

void TavloPresentSourceMediaVLC::OnMediaSourcePlayerDoVideoSample(quint32, picture_t* picture)
{
    _decodeRate.Deliver(1);
    if (picture->format.i_chroma == chromaInGraphicsMemory) {
        const std::lock_guard guard(_pictureMutex);
        _graphicsMemoryDate = picture->date;
        if (keepsGraphicsMemory())
            _cudaResource->takePicture(picture, 0);
        return;
    }
    PooledPicture* const pooled = pooledPicture(*picture);
    if (!pooled) {
        qDebug() << "picture->p_sys == nullptr ??";
        return;
    }
    if (!pooled->mapped) { // it went into plain memory
        ++_unwanted;
        return;
    }
    process(*picture, *pooled);
    _site.deferredContext->unmap(pooled->texture);
    pooled->mapped = false;
    graphics::CommandListPtr commandList = _site.deferredContext->finishCommandList();

    const std::lock_guard guard(_pictureMutex);
    if (_waitingCount == waitingLimit || !_channel.load()) {
        ++_unwanted;
        return;
    }
    _waiting[_waitingCount++] = {picture_Hold(picture), std::move(commandList)};
}

/// What the channel would do to the picture in its draw, as far as that is done at less cost here.
void TavloPresentSourceMediaVLC::process(picture_t& picture, PooledPicture& pooled)
{
    pooled.chroma = _layout.drawn;
    const bool inColours = _layout.written == chromaRgba && _layout.drawn == chromaRgbx;
    ITavloPresentChannelSource* const channel = _channel;
    LoneKey key;
    if (!inColours || !channel || !channel->loneKey(key))
        return;
    const video_format_t& format = picture.format;
    if (key.size != QSize(static_cast<int>(format.i_width), static_cast<int>(format.i_height)))
        return;
    _keyLoop.run(picture.p[0].p_pixels, picture.p[0].i_pitch, key);
    pooled.chroma = chromaProcessed;
}

// The sound's way, on the player's audio thread

block_t* TavloPresentSourceMediaVLC::OnMediaSourcePlayerDoAudioSample(quint32 tag, block_t* block,
                                                                      tagTavloAudioInfo& audioInfo)
{
    if (!_channel.load() || !block)
        return block;
    return deliverAudio(static_cast<int>(tag), block, audioInfo);
}

void TavloPresentSourceMediaVLC::OnMediaSourcePlayerDoAudioFlush(bool discard)
{
    ITavloPresentChannelSource* const channel = _channel;
    if (ITavloPresentEnginePrivate* const engine = _engine; engine && channel)
        engine->audioFlush(channel->channelIndex(), discard);
}

qint32 TavloPresentSourceMediaVLC::OnMediaSourcePlayerDoAudioTime(qint64* time)
{
    *time = 0;
    ITavloPresentChannelSource* const channel = _channel;
    ITavloPresentEnginePrivate* const engine = _engine;
    return engine && channel ? engine->audioTime(channel->channelIndex(), *time) : -1;
}

void TavloPresentSourceMediaVLC::OnMediaSourcePlayerDoAudioPause(qint64 time)
{
    ITavloPresentChannelSource* const channel = _channel;
    if (ITavloPresentEnginePrivate* const engine = _engine; engine && channel)
        engine->audioPause(channel->channelIndex(), time);
}

void TavloPresentSourceMediaVLC::OnMediaSourcePlayerDoAudioResume(qint64 time)
{
    ITavloPresentChannelSource* const channel = _channel;
    if (ITavloPresentEnginePrivate* const engine = _engine; engine && channel)
        engine->audioResume(channel->channelIndex(), time);
}

void TavloPresentSourceMediaVLC::OnMediaSourcePlayerState(qint32 state, qint32 index, qint32 count)
{
    ITavloPresentChannelSource* const channel = _channel;
    if (ITavloPresentEnginePrivate* const engine = _engine; engine && channel)
        engine->sourceStateChanged(channel->channelIndex(), state, index, count);
}

void TavloPresentSourceMediaVLC::setName(const QString& name)
{
    const QWriteLocker locker(&_mediaLock);
    _told.name = name;
}

// The host's hands on the player. Any thread

void TavloPresentSourceMediaVLC::play()
{
    if (player())
        player()->play(&_playerInfo, &_outputFormat, 0);
}

void TavloPresentSourceMediaVLC::stop()
{
    if (player())
        player()->stop();
}

void TavloPresentSourceMediaVLC::pause()
{
    if (player())
        player()->pause();
}

void TavloPresentSourceMediaVLC::transportA(qint64 value)
{
    if (player())
        player()->transportA(value, 0);
}

void TavloPresentSourceMediaVLC::transportB(qint64 value)
{
    if (player())
        player()->transportB(value, 0);
}

float TavloPresentSourceMediaVLC::getRate() { return player() ? player()->rate() : 1.0F; }

void TavloPresentSourceMediaVLC::setRate(float rate)
{
    if (player())
        player()->setRate(rate);
}

void TavloPresentSourceMediaVLC::transportC(qint64 value)
{
    if (player())
        player()->transportC(value, 0);
}

void TavloPresentSourceMediaVLC::getLength(qint64& milliseconds)
{
    milliseconds = 1;
    if (player())
        player()->length(&milliseconds);
}

void TavloPresentSourceMediaVLC::getTime(qint64& milliseconds)
{
    milliseconds = 0;
    if (player())
        player()->time(&milliseconds);
}

void TavloPresentSourceMediaVLC::setTime(qint64 milliseconds)
{
    if (player())
        player()->setTime(milliseconds);
}

void TavloPresentSourceMediaVLC::getPosition(qint64& position)
{
    position = 0;
    if (player())
        player()->position(&position);
}

void TavloPresentSourceMediaVLC::setPosition(qint64 position)
{
    if (player())
        player()->setPosition(position);
}

quint32 TavloPresentSourceMediaVLC::getState() { return player() ? static_cast<quint32>(player()->state()) : 0; }

tagTavloPresentSourceStatisticsItem* TavloPresentSourceMediaVLC::getStatistics()
{
    tagTavloPresentSourceStatisticsItem* const statistics = TavloPresentSourceMedia::getStatistics();
    {
        const QReadLocker locker(&_mediaLock);
        statistics->name = _told.name;
        statistics->width = _told.width;
        statistics->height = _told.height;
        statistics->frameRate = _told.frameRate;
        statistics->audioSampleRate = _told.audioSampleRate;
    }
    statistics->droppedPictures = _unwanted;
    if (quint64 dropped = 0; player()) {
        player()->losses(&statistics->latePictures, &dropped);
        statistics->droppedPictures += dropped;
    }
    return statistics;
}

quint32 TavloPresentSourceMediaVLC::getItemCount()
{
    return player() ? static_cast<quint32>(player()->itemCount()) : 1;
}

quint32 TavloPresentSourceMediaVLC::getItemIndex()
{
    return player() ? static_cast<quint32>(player()->itemIndex()) : 0;
}

ICloudTourControl* TavloPresentSourceMediaVLC::getCloudTourControl()
{
    return player() && player()->isValid() ? player()->cloudTourControl() : nullptr;
}
