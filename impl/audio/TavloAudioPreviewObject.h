#pragma once

#include "base/ModuleLibrary.h"

#include "TavloCommonModule/audio/IGLAudioDeviceContext.h"
#include "TavloCommonModule/audio/IGLAudioRenderer.h"

#include <tavlo/ITavloAudioPreviewObject.h>
#include <tavlo/InterfacePtr.h>
#include <tavlo/TavloPresentChannelID.h>

#include <QThread>

#include <array>
#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <shared_mutex>

class TavloAudioPreviewObject;

/// Opens the mix and its device and watches over the device.
class TavloAudioPreviewObjectThread final : public QThread
{
public:
    explicit TavloAudioPreviewObjectThread(TavloAudioPreviewObject& object) : _object(object) {}

private:
    void run() override;

    TavloAudioPreviewObject& _object;
};

/// The mix of the channels: a device context of the common module with a renderer for each channel.
///
/// Sound paths hold `_lock` shared while they touch a renderer; the watch thread holds it alone while it makes or ends
/// the renderers, and not while it opens a device, which may take as long as the device takes.
class TavloAudioPreviewObject final
    : public tavlo::Implements<TavloAudioPreviewObject, ITavloAudioPreviewObject, IGLAudioDeviceContextSink>
{
public:
    TavloAudioPreviewObject();
    ~TavloAudioPreviewObject();

    void setSink(ITavloAudioPreviewObjectSink* sink) override;
    void open(const QString& deviceName, int sampleRate, int channels, int bits, int rendererCount) override;
    void close() override;
    void writeAudio(quint32 channel, quint32 index, double deviceVolume, const block_t* block,
                    const tagTavloAudioInfo& format, double volume) override;
    void flush(quint32 channel, bool now) override;
    int getTime(quint32 channel, qint64* time) override;
    void pause(quint32 channel, qint64 date) override;
    void resume(quint32 channel, qint64 date) override;
    void setVolume(float volume) override;

    float OnGLAudioDeviceVolume() override;
    void OnGLAudioDeviceSamples(const void* samples, int length, const tagTavloAudioInfo& format) override;

    /// The life of the watch thread.
    void watch();

private:
    /// One channel's place in the mix.
    struct Renderer
    {
        tavlo::InterfacePtr<IGLAudioRenderer> object; ///< null when there is none
        std::atomic<quint32> openTime{0};             ///< millisecond clock; 0 once it has settled
        std::atomic<double> volume{-1.0};             ///< what it plays with, below 0 before the first block
    };

    void openAudioRenderInner();
    bool openMix();
    void openRenderers();
    void closeAudioRenderInner();
    bool sleep(int milliseconds);
    QString formatText() const;

    /// Calls it with the channel's renderer, if there is one. False when there is none.
    template <class Call>
    bool withRenderer(quint32 channel, Call call);

    // fixed while the watch thread runs
    QString _deviceName;
    int _sampleRate = 0; ///< Hz
    int _channels = 0;
    int _bits = 0;
    size_t _rendererCount = 0;

    // watch thread
    tavlo::ModuleLibrary _contextModule;
    tavlo::ModuleLibrary _rendererModule;
    quint32 _openTime = 0; ///< millisecond clock
    bool _isMixing = false;

    // guarded by _lock
    std::shared_mutex _lock;
    tavlo::InterfacePtr<IGLAudioDeviceContext> _audioDeviceContext; ///< outlives the renderers
    std::array<Renderer, TavloMixedChannelLimit> _renderers;

    std::atomic<double> _deviceVolume{-1.0}; ///< of the whole mix, below 0 before the first block
    std::atomic<float> _volume{1.0F};
    std::atomic<ITavloAudioPreviewObjectSink*> _sink{nullptr};

    std::mutex _runLock;
    std::condition_variable _stopped;
    bool _isRunning = false;          ///< guarded by _runLock
    std::atomic<bool> _ended = false; ///< what the watch thread wrote is seen by whoever has seen that
    std::unique_ptr<TavloAudioPreviewObjectThread> _thread;
};
