#pragma once

#include "TavloCommonModule/audio/IGLAudioDeviceContext.h"
#include "TavloCommonModule/audio/LoopbackMixer.h"
#include "TavloCommonModule/audio/MixOutput.h"

#include <tavlo/InterfacePtr.h>
#include <tavlo/records/MediaFormat.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

/// The mix, its thread and its device.
///
/// The mixing thread holds `_mixLock` while it mixes a block and `_outputLock` while it hands one to the device, both
/// for well under a millisecond. A device is opened and closed outside of both.
class GLAudioDeviceContext final : public tavlo::Implements<GLAudioDeviceContext, IGLAudioDeviceContext>
{
public:
    ~GLAudioDeviceContext();

    bool initGLAudioDevice(const QString& deviceName, const QString& backend, int sampleRate, int channels, int bits,
                           IGLAudioDeviceContextSink* sink) override;
    bool createGLAudioDevice(int mixes) override;
    void closeGLAudioDevice() override;
    void setGLAudioDeviceVolume(quint32 index, double volume) override;
    quint32 lastActivity() override;
    QStringList deviceNames() override { return tavlo::OpenAlDevice::names(); }

    /// For renderers of this context. Null when no mix is prepared. Owner's thread.
    std::shared_ptr<tavlo::MixInput> addInput();
    void removeInput(const std::shared_ptr<tavlo::MixInput>& input);

private:
    bool prepareMix(int sampleRate, int channels, int bits);
    bool exchangeOutput(const QString& deviceName);
    void run();
    void mixBlock();
    void play();
    void handToSink();

    // fixed while the mixing thread runs
    tagTavloAudioInfo _format;
    IGLAudioDeviceContextSink* _sink = nullptr;

    // guarded by _mixLock
    std::mutex _mixLock;
    tavlo::LoopbackMixer _mixer;

    // guarded by _outputLock
    std::mutex _outputLock;
    std::unique_ptr<tavlo::MixOutput> _output;
    bool _outputIsWanted = false; ///< a device is chosen
    bool _lossTold = false;

    // mixing thread
    std::vector<float> _block;
    std::vector<char> _samples; ///< the block in the format of the sink

    std::atomic<float> _volume{1.0F};
    std::atomic<quint32> _activity{0}; ///< milliseconds of the monotonic clock

    std::mutex _stopLock;
    std::condition_variable _stopped;
    bool _isStopping = false; ///< guarded by _stopLock
    std::thread _thread;
};
