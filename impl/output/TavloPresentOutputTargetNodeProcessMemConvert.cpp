#include "output/TavloPresentOutputTargetNodeProcessMemConvert.h"

#include "base/Log.h"
#include "base/TavloUtil.h"
#include "drawing/PrivateUtil.h"
#include "output/ChromaTable.h"

#include <QDebug>

#include <chrono>
#include <cstring>
#include <pthread.h>
#include <utility>

using namespace tavlo;
using namespace tavlo::graphics;

namespace {

using Node = TavloPresentOutputTargetNodeProcessMemConvert;

constexpr const char* sourceName = "impl\\TavloPresentOutputTarget";
constexpr quint32 nv12Format = 103;
constexpr size_t queueReserve = 2 * (Node::pictureCount + Node::blockCount); ///< neither list ever grows beyond

void tell(const char* function, const char* text, std::source_location at = std::source_location::current())
{
    const std::string name = std::string("TavloPresentOutputTargetNodeProcessMemConvert::") + function;
    logFailure({sourceName, name.c_str(), at}, QLatin1String(text));
}

/// Takes the last one out; null when there is none.
template <class Pointer>
Pointer takeFree(std::mutex& lock, std::vector<Pointer>& free)
{
    const std::lock_guard guard(lock);
    if (free.empty())
        return nullptr;
    Pointer taken = std::move(free.back());
    free.pop_back();
    return taken;
}

template <class Pointer>
void giveBack(std::mutex& lock, std::vector<Pointer>& free, Pointer pointer)
{
    const std::lock_guard guard(lock);
    free.push_back(std::move(pointer));
}

/// Bytes that a block takes: its memory begins in front of them.
size_t roomOf(const block_t& block) { return block.i_size - static_cast<size_t>(block.p_buffer - block.p_start); }

PicturePtr newPicture(quint32 chroma, const tagTavloVideoInfo& info)
{
    return PicturePtr(picture_New(chroma, info.width, info.height, 1, 1));
}

PicturePtr newWrapper(quint32 chroma, const tagTavloVideoInfo& info)
{
    video_format_t format{};
    video_format_Setup(&format, chroma, info.width, info.height, info.width, info.height, 1, 1);
    const picture_resource_t nothing{};
    return PicturePtr(picture_NewFromResource(&format, &nothing));
}

} // namespace

Node::TavloPresentOutputTargetNodeProcessMemConvert(quint32 sourceFormat, quint32 targetChroma,
                                                    OutputConversion conversion)
    : _sourceFormat(sourceFormat), _targetChroma(targetChroma), _conversion(conversion)
{}

Node::~TavloPresentOutputTargetNodeProcessMemConvert() = default;

bool Node::create(int index, const QString& name, const tagTavloVideoInfo& videoInfo,
                  const tagTavloAudioInfo& audioInfo, DevicePtr device, ContextPtr context, TexturePtr texture,
                  const TextureDesc& textureDesc)
{
    if (!TavloPresentOutputTargetNodeBase::create(index, name, videoInfo, audioInfo, std::move(device),
                                                  std::move(context), std::move(texture), textureDesc))
        return false;
    chooseWay();
    _freeTextures.reserve(pictureCount);
    _freePictures.reserve(pictureCount);
    _freeBlocks.reserve(blockCount);
    _eventQueue.reserve(queueReserve);
    _running = true;
    _hasEnded = false;
    _thread = std::thread([this] {
        pthread_setname_np(pthread_self(), "tavlo-convert");
        run();
    });
    return true;
}

void Node::chooseWay()
{
    _sourceChroma = _device ? chromaOfFormat(_textureDesc.format) : _videoInfo.chroma;
    _videoInfo.chroma = _targetChroma;
    if (_device && useGraphics()) {
        _sourceChroma = tavloFourcc("NV12");
        return;
    }
    if (_device)
        qDebug() << "failed to get video device, use cpu mode";
    if (_sourceChroma != _targetChroma)
        _converter.open(_sourceChroma, _targetChroma, _videoInfo.width, _videoInfo.height);
}

bool Node::useGraphics()
{
    const bool wanted = _conversion.place == OutputConversion::Place::Graphics ||
                        (_conversion.place == OutputConversion::Place::Automatic && !_device->adapter().software);
    if (!wanted || _sourceFormat != nv12Format)
        return false;
    qDebug() << "try to use gpu mode";
    static std::once_flag reported;
    std::call_once(reported, [this] { PrivateUtil::reportProcessorFormats(_device); });
    _nv12Pass = Nv12Pass::create(_device, _videoInfo.width, _videoInfo.height, _conversion.rows);
    qDebug() << (_nv12Pass ? "succeeded to get video device, use gpu mode" : "failed to use gpu mode");
    return _nv12Pass != nullptr;
}

void Node::end()
{
    {
        const std::lock_guard guard(_eventQueueLock);
        _running = false;
    }
    _eventArrived.notify_one();
}

void Node::destroy()
{
    end();
    if (_thread.joinable())
        joinThread();
    _nv12Pass.reset();
    _converter.close();
    TavloPresentOutputTargetNodeBase::destroy();
}

/// What was posted is done first, the last output's end included; the log tells once a second that it takes so long.
void Node::joinThread()
{
    {
        std::unique_lock guard(_eventQueueLock);
        const auto hasEnded = [this] { return _hasEnded; };
        for (int turn = 0; !_threadEnded.wait_for(guard, std::chrono::milliseconds(10), hasEnded); ++turn)
            if (turn % 100 == 0)
                tell("destroy", "wait thread timeout: TavloPresentThread::stop");
    }
    _thread.join();
}

void Node::commitVideoData(picture_t* picture)
{
    if (!needVideo())
        return;
    _committedPictures.fetch_add(1, std::memory_order_relaxed);
    OutputEvent event;
    event.id = OutputEventId::Picture;
    event.picture = takeFree(_poolLock, _freePictures);
    if (!event.picture) {
        countDropped();
        if (_lostPictures.isTold())
            tell("commitVideoData", "no free video pictrue");
        return;
    }
    _lostPictures.good();
    picture_Copy(event.picture.get(), picture);
    event.timestamp = picture->date;
    post(std::move(event), false);
}

bool Node::commitVideoData(const TexturePtr& texture, qint64 timestamp)
{
    if (!needVideo())
        return true;
    _committedPictures.fetch_add(1, std::memory_order_relaxed);
    OutputEvent event;
    event.id = OutputEventId::Texture;
    event.texture = takeFree(_poolLock, _freeTextures);
    if (!event.texture) {
        countDropped();
        if (_lostPictures.isTold())
            tell("commitVideoData", "no free storage texture");
        return false;
    }
    _lostPictures.good();
    if (!copyToStaging(*event.texture, texture)) {
        countDropped();
        giveBack(_poolLock, _freeTextures, std::move(event.texture));
        return false;
    }
    event.timestamp = timestamp;
    post(std::move(event), false);
    return true;
}

bool Node::copyToStaging(Texture& staging, const TexturePtr& texture)
{
    const TexturePtr source = _nv12Pass ? _nv12Pass->convert(*_context, texture) : texture;
    if (source && _context->copyResource(staging, source))
        return true;
    tell("commitVideoData", "failed to TavloPresentOutputTargetNodeProcessMemConvert::VideoProcessorBlt");
    return false;
}

void Node::commitAudioData(const void* data, int size, qint64 timestamp)
{
    if (size <= 0 || !needAudio())
        return;
    const auto bytes = static_cast<size_t>(size);
    OutputEvent event;
    event.id = OutputEventId::Sound;
    event.block = takeFree(_poolLock, _freeBlocks);
    if (event.block && roomOf(*event.block) < bytes)
        event.block.reset(block_Alloc(bytes));
    if (!event.block) {
        _droppedBlocks.fetch_add(1, std::memory_order_relaxed);
        if (_lostBlocks.isTold())
            tell("commitAudioData", "no free audio block");
        return;
    }
    _lostBlocks.good();
    block_t& block = *event.block;
    block.i_buffer = bytes;
    std::memcpy(block.p_buffer, data, bytes);
    block.i_pts = block.i_dts = timestamp;
    block.i_nb_samples = static_cast<unsigned>(size / std::max(_audioInfo.bitsPerSample / 8, 1));
    post(std::move(event), false);
}

void Node::post(OutputEvent event, bool wait)
{
    std::binary_semaphore done(0);
    if (wait)
        event.done = &done;
    {
        const std::lock_guard guard(_eventQueueLock);
        if (!_running)
            return;
        _eventQueue.push_back(std::move(event));
    }
    _eventArrived.notify_one();
    if (wait)
        done.acquire();
}

void Node::getStatistics(tagTavloOutputStatistics* statistics)
{
    statistics->committedPictures += _committedPictures.load(std::memory_order_relaxed);
    statistics->latePictures += _latePictures.load(std::memory_order_relaxed);
    statistics->droppedPictures += _droppedPictures.load(std::memory_order_relaxed);
    statistics->droppedBlocks += _droppedBlocks.load(std::memory_order_relaxed);
}

void Node::run()
{
    onThreadBegin();
    std::vector<OutputEvent> events;
    events.reserve(queueReserve);
    while (takeEvents(events)) {
        for (OutputEvent& event : events) {
            onThreadEvent(event);
            if (event.done)
                event.done->release();
        }
        events.clear();
    }
    onThreadEnd();
    {
        const std::lock_guard guard(_eventQueueLock);
        _hasEnded = true;
    }
    _threadEnded.notify_one();
}

/// All that is posted. False when the node is to end and nothing is left to do.
bool Node::takeEvents(std::vector<OutputEvent>& events)
{
    std::unique_lock guard(_eventQueueLock);
    _eventArrived.wait(guard, [this] { return !_running || !_eventQueue.empty(); });
    events.swap(_eventQueue);
    return !events.empty();
}

void Node::onThreadEvent(OutputEvent& event)
{
    switch (event.id) {
    case OutputEventId::Texture:
        handleTexture(event);
        giveBack(_poolLock, _freeTextures, std::move(event.texture));
        _videoRate.Deliver(1);
        break;
    case OutputEventId::Picture:
        onHandle_video(event.picture.get(), false);
        giveBack(_poolLock, _freePictures, std::move(event.picture));
        _videoRate.Deliver(1);
        break;
    case OutputEventId::Sound:
        onHandle_audio(event.block.get());
        giveBack(_poolLock, _freeBlocks, std::move(event.block));
        _audioRate.Deliver(1);
        break;
    default:
        break;
    }
}

void Node::handleTexture(OutputEvent& event)
{
    const std::optional<Mapped> mapped = event.texture->mapRead();
    if (!mapped) {
        tell("onThreadEvent", "failed to Map ");
        countDropped();
        return;
    }
    picture_t* const picture = _handlePayloadPicture.get();
    if (picture && TavloUtil::picture_UpdatePlanes(picture, reinterpret_cast<quint8*>(mapped->data),
                                                   static_cast<int>(mapped->rowPitch))) {
        picture->date = event.timestamp;
        onHandle_video(picture, !_nv12Pass && _conversion.rows == Rows::BottomFirst);
    } else {
        countDropped();
    }
    event.texture->unmapRead();
}

TextureDesc Node::stagingDesc() const
{
    if (_nv12Pass)
        return Nv12Pass::packedDesc(_videoInfo.width, _videoInfo.height, Usage::Staging);
    TextureDesc desc = _textureDesc;
    desc.usage = Usage::Staging;
    desc.renderTarget = false;
    return desc;
}

void Node::preparePool()
{
    if (std::exchange(_poolMade, true))
        return;
    if (_device) {
        makeTextures();
        _handlePayloadPicture = newWrapper(_sourceChroma, _videoInfo);
        if (!_handlePayloadPicture)
            tell("onThreadBegin", "failed to _handlePayloadPicture = picture_NewFromResource");
    } else {
        for (int i = 0; i < pictureCount; ++i)
            if (PicturePtr picture = newPicture(_sourceChroma, _videoInfo))
                giveBack(_poolLock, _freePictures, std::move(picture));
    }
    _targetPicture = newPicture(_videoInfo.chroma, _videoInfo);
    for (int i = 0; i < blockCount; ++i)
        if (BlockPtr block{block_Alloc(blockBytes)})
            giveBack(_poolLock, _freeBlocks, std::move(block));
}

void Node::makeTextures()
{
    for (int i = 0; i < pictureCount; ++i) {
        TexturePtr texture = _device->createTexture(stagingDesc());
        if (!texture) {
            tell("onThreadBegin", "failed to TavloPresentOutputTargetNodeProcessMemConvert::CreateTexture2D");
            return;
        }
        giveBack(_poolLock, _freeTextures, std::move(texture));
    }
}

void Node::onThreadEnd()
{
    {
        const std::lock_guard guard(_poolLock);
        _freeTextures.clear();
        _freePictures.clear();
        _freeBlocks.clear();
    }
    _handlePayloadPicture.reset();
    _targetPicture.reset();
    _poolMade = false;
}
