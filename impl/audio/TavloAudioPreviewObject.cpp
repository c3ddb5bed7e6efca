#include "audio/TavloAudioPreviewObject.h"

#include "base/Clock.h"
#include "base/Log.h"
#include "shared/VlcTypes.h"

#include <tavlo/TavloPresentUtil.h>
#include <tavlo/records/MediaFormat.h>

#include <QDebug>

#include <algorithm>
#include <chrono>

namespace {

// Milliseconds.
constexpr int watchInterval = 200;
constexpr quint32 patience = 2000;    ///< with a device that stands still, and between two attempts
constexpr quint32 settlingTime = 240; ///< the beginning of a renderer is not heard

constexpr const char* moduleName = "/TavloCommonModule";
constexpr const char* contextFactory = "CreateTavloGLAudioDeviceContext";
constexpr const char* sourceName = "impl\\TavloAudioPreviewObject";
constexpr const char* openName = "TavloAudioPreviewObject::openAudioRenderInner";

} // namespace

void TavloAudioPreviewObjectThread::run() { _object.watch(); }

TavloAudioPreviewObject::TavloAudioPreviewObject()
    : _contextModule(tavlo::engineDirectory() + QLatin1String(moduleName), contextFactory),
      _rendererModule(tavlo::engineDirectory() + QLatin1String(moduleName), "CreateTavloGLAudioRenderer")
{}

TavloAudioPreviewObject::~TavloAudioPreviewObject() { close(); }

void TavloAudioPreviewObject::setSink(ITavloAudioPreviewObjectSink* sink) { _sink = sink; }

void TavloAudioPreviewObject::open(const QString& deviceName, int sampleRate, int channels, int bits, int rendererCount)
{
    close();
    _deviceName = deviceName;
    _sampleRate = sampleRate;
    _channels = channels;
    _bits = bits;
    _rendererCount = static_cast<size_t>(std::clamp(rendererCount, 0, TavloMixedChannelLimit));
    _isRunning = true;
    _thread = std::make_unique<TavloAudioPreviewObjectThread>(*this);
    _thread->setObjectName(QStringLiteral("tavlo-watch"));
    _thread->start(QThread::TimeCriticalPriority);
}

void TavloAudioPreviewObject::close()
{
    if (!_thread)
        return;
    {
        const std::lock_guard lock(_runLock);
        _isRunning = false;
    }
    _stopped.notify_all();
    _thread->wait();
    (void)_ended.load(std::memory_order_acquire);
    _thread.reset();
}

void TavloAudioPreviewObject::watch()
{
    openAudioRenderInner();
    while (sleep(watchInterval)) {
        const quint32 activity = _audioDeviceContext ? _audioDeviceContext->lastActivity() : tavlo::millisecondClock();
        const quint32 now = tavlo::millisecondClock(); // not before the activity is
        if (now - activity >= patience && now - _openTime >= patience) {
            qDebug() << "open audio preview again ";
            openAudioRenderInner();
        }
    }
    closeAudioRenderInner();
    _ended.store(true, std::memory_order_release);
}

/// False when it is time to end.
bool TavloAudioPreviewObject::sleep(int milliseconds)
{
    std::unique_lock lock(_runLock);
    return !_stopped.wait_for(lock, std::chrono::milliseconds(milliseconds), [this] { return !_isRunning; });
}

/// The mix starts without a device, so that it need not wait for one; then the device is opened, or opened anew.
void TavloAudioPreviewObject::openAudioRenderInner()
{
    _openTime = tavlo::millisecondClock();
    if (!_isMixing)
        _isMixing = openMix();
    if (!_isMixing)
        return;
    if (!_audioDeviceContext->initGLAudioDevice(_deviceName, QStringLiteral("dsound"), _sampleRate, _channels, _bits,
                                                this)) {
        tavlo::logFailure({sourceName, openName},
                          QStringLiteral("openAudioRender: _audioDeviceContext.initGLAudioDevice ") + formatText() +
                              QStringLiteral(" failed to create audio render !!!"));
        return;
    }
    _openTime = tavlo::millisecondClock(); // a device may open slowly, and then begin slowly
    qDebug().noquote() << "succeeded to open audio render " + formatText();
}

bool TavloAudioPreviewObject::openMix()
{
    const std::unique_lock lock(_lock);
    if (!_audioDeviceContext)
        _audioDeviceContext.reset(static_cast<IGLAudioDeviceContext*>(
            _contextModule.make(IGLAudioDeviceContext::interfaceId, TavloInterfaceVersion)));
    if (!_audioDeviceContext) // which file is missing has been logged
        return false;
    if (!_audioDeviceContext->initGLAudioDevice(QStringLiteral("None"), QString(), _sampleRate, _channels, _bits,
                                                this)) {
        tavlo::logFailure({sourceName, openName},
                          QStringLiteral("openAudioRender: _audioDeviceContext.initGLAudioDevice ") + formatText() +
                              QStringLiteral(" failed to create audio render !!!"));
        return false;
    }
    if (!_audioDeviceContext->createGLAudioDevice(1)) {
        tavlo::logFailure({sourceName, openName},
                          QStringLiteral("openAudioRender: _audioDeviceContext.createGLAudioDevice failed to create "
                                         "audio render !!!"));
        return false;
    }
    openRenderers();
    return true;
}

/// Under the lock.
void TavloAudioPreviewObject::openRenderers()
{
    for (size_t i = 0; i < _rendererCount; ++i) {
        Renderer& renderer = _renderers[i];
        renderer.openTime = _openTime;
        renderer.object.reset(
            static_cast<IGLAudioRenderer*>(_rendererModule.make(IGLAudioRenderer::interfaceId, TavloInterfaceVersion)));
        if (!renderer.object || !renderer.object->create(_audioDeviceContext.get())) {
            qDebug() << "failed to createAudioRenderer";
            renderer.object.reset();
            continue;
        }
        renderer.object->setALSourceVolume(static_cast<float>(renderer.volume));
    }
}

void TavloAudioPreviewObject::closeAudioRenderInner()
{
    {
        const std::unique_lock lock(_lock);
        for (Renderer& renderer : _renderers) {
            if (renderer.object)
                renderer.object->release();
            renderer.object.reset();
        }
    }
    if (_audioDeviceContext) // without the lock: it waits for the sink, which may be about to take it
        _audioDeviceContext->closeGLAudioDevice();
    _isMixing = false;
}

void TavloAudioPreviewObject::writeAudio(quint32 channel, quint32 index, double deviceVolume, const block_t* block,
                                         const tagTavloAudioInfo& format, double volume)
{
    const std::shared_lock lock(_lock);
    if (_audioDeviceContext && _deviceVolume.exchange(deviceVolume) != deviceVolume)
        _audioDeviceContext->setGLAudioDeviceVolume(index, deviceVolume);
    if (!block || channel >= _renderers.size())
        return;
    Renderer& renderer = _renderers[channel];
    if (!renderer.object)
        return;
    if (const quint32 openTime = renderer.openTime; openTime != 0) {
        if (tavlo::millisecondClock() - openTime < settlingTime) {
            renderer.object->listen();
            renderer.object->writeSilence(static_cast<int>(block->i_buffer), format.channels, format.bitsPerSample,
                                          format.sampleRate);
            return;
        }
        renderer.openTime = 0;
    }
    if (renderer.volume.exchange(volume) != volume)
        renderer.object->setALSourceVolume(static_cast<float>(volume));
    renderer.object->listen();
    renderer.object->write(block->p_buffer, static_cast<int>(block->i_buffer), format.channels, format.bitsPerSample,
                           format.sampleRate);
}

template <class Call>
bool TavloAudioPreviewObject::withRenderer(quint32 channel, Call call)
{
    const std::shared_lock lock(_lock);
    if (channel >= _renderers.size() || !_renderers[channel].object)
        return false;
    call(*_renderers[channel].object);
    return true;
}

void TavloAudioPreviewObject::flush(quint32 channel, bool now)
{
    withRenderer(channel, [&](IGLAudioRenderer& renderer) { renderer.flush(now); });
}

int TavloAudioPreviewObject::getTime(quint32 channel, qint64* time)
{
    *time = 0;
    int result = -1;
    withRenderer(channel, [&](IGLAudioRenderer& renderer) { result = renderer.getTime(time); });
    return result;
}

void TavloAudioPreviewObject::pause(quint32 channel, qint64 date)
{
    withRenderer(channel, [&](IGLAudioRenderer& renderer) { renderer.pause(date); });
}

void TavloAudioPreviewObject::resume(quint32 channel, qint64 date)
{
    withRenderer(channel, [&](IGLAudioRenderer& renderer) { renderer.resume(date); });
}

void TavloAudioPreviewObject::setVolume(float volume) { _volume = volume; }

float TavloAudioPreviewObject::OnGLAudioDeviceVolume() { return _volume; }

void TavloAudioPreviewObject::OnGLAudioDeviceSamples(const void* samples, int length, const tagTavloAudioInfo& format)
{
    if (ITavloAudioPreviewObjectSink* const sink = _sink)
        sink->OnAudioPreviewSamples(this, samples, length, format);
}

QString TavloAudioPreviewObject::formatText() const
{
    return QStringLiteral("%1 , %2 , %3 , %4").arg(_deviceName).arg(_sampleRate).arg(_channels).arg(_bits);
}

QStringList TavloPresentUtil::soundDevices()
{
    tavlo::ModuleLibrary module(tavlo::engineDirectory() + QLatin1String(moduleName), contextFactory);
    const tavlo::InterfacePtr<IGLAudioDeviceContext> context(
        static_cast<IGLAudioDeviceContext*>(module.make(IGLAudioDeviceContext::interfaceId, TavloInterfaceVersion)));
    return context ? context->deviceNames() : QStringList();
}

ITavloAudioPreviewObject* TavloPresentUtil::createAudioPreviewObject() { return new TavloAudioPreviewObject; }
