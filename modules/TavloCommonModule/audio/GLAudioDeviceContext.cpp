#include "TavloCommonModule/audio/GLAudioDeviceContext.h"

#include "TavloCommonModule/audio/MixInput.h"
#include "shared/ModuleFactory.h"
#include "shared/RealTime.h"

#include <tavlo/Export.h>

#include <QDebug>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <system_error>
#include <utility>

namespace {

using Clock = std::chrono::steady_clock;

/// A mix that is so late does not catch up any more: the machine slept.
constexpr auto longestDelay = std::chrono::seconds(1);

quint32 milliseconds()
{
    return static_cast<quint32>(
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now().time_since_epoch()).count());
}

bool isNone(const QString& deviceName)
{
    return deviceName == QLatin1String("None") || deviceName == QLatin1String("Disable");
}

/// 1.0 is full scale; what is out of range saturates.
void toBytes(const float* in, size_t count, char* out)
{
    for (size_t i = 0; i < count; ++i)
        out[i] = static_cast<char>(static_cast<quint8>(std::lrint(std::clamp(in[i] * 128.0F, -128.0F, 127.0F)) + 128));
}

void toWords(const float* in, size_t count, char* out)
{
    for (size_t i = 0; i < count; ++i) {
        const auto word = static_cast<qint16>(std::lrint(std::clamp(in[i] * 32768.0F, -32768.0F, 32767.0F)));
        std::memcpy(out + i * sizeof word, &word, sizeof word);
    }
}

} // namespace

GLAudioDeviceContext::~GLAudioDeviceContext() { closeGLAudioDevice(); }

bool GLAudioDeviceContext::initGLAudioDevice(const QString& deviceName, const QString&, int sampleRate, int channels,
                                             int bits, IGLAudioDeviceContextSink* sink)
{
    const bool isSame =
        _format.sampleRate == sampleRate && _format.channels == channels && _format.bitsPerSample == bits;
    if (_thread.joinable() && !isSame) {
        qDebug() << "sound mix: it runs in another format than rate, channels, bits" << sampleRate << channels << bits;
        return false;
    }
    if (!_thread.joinable())
        _sink = sink;
    if (!(isSame && _mixer.isOpen()) && !prepareMix(sampleRate, channels, bits))
        return false;
    return exchangeOutput(deviceName);
}

bool GLAudioDeviceContext::prepareMix(int sampleRate, int channels, int bits)
{
    if ((bits != 8 && bits != 16) || sampleRate < 8000 || sampleRate > 192'000) {
        qDebug() << "sound mix: cannot mix rate, channels, bits" << sampleRate << channels << bits;
        return false;
    }
    const std::lock_guard lock(_mixLock);
    if (!_mixer.open(channels, sampleRate))
        return false;
    _format = {};
    _format.sampleRate = sampleRate;
    _format.channels = channels;
    _format.bitsPerSample = bits;
    _format.audioFourcc = bits == 8 ? tavloFourcc("u8  ") : tavloFourcc("s16l");
    const auto samples = static_cast<size_t>(_mixer.blockFrames() * channels);
    _block.assign(samples, 0.0F);
    _samples.assign(samples * static_cast<size_t>(bits / 8), 0);
    return true;
}

/// The one of before goes first: it may be the same device.
bool GLAudioDeviceContext::exchangeOutput(const QString& deviceName)
{
    const bool isWanted = !isNone(deviceName);
    std::unique_ptr<tavlo::MixOutput> old;
    {
        const std::lock_guard lock(_outputLock);
        old = std::move(_output);
        _outputIsWanted = isWanted;
        _lossTold = false;
    }
    old.reset();
    if (!isWanted)
        return true;
    auto output = tavlo::MixOutput::open(deviceName, _format.channels, _format.sampleRate);
    const std::lock_guard lock(_outputLock);
    _output = std::move(output);
    return _output != nullptr;
}

bool GLAudioDeviceContext::createGLAudioDevice(int mixes)
{
    if (_thread.joinable() || !_mixer.isOpen() || mixes != 1) {
        qDebug() << "sound mix: cannot start," << (_thread.joinable() ? "it runs" : "it is not prepared");
        return false;
    }
    _isStopping = false;
    try {
        _thread = std::thread([this] {
            pthread_setname_np(pthread_self(), "tavlo-mix");
            run();
        });
    } catch (const std::system_error& error) {
        qDebug() << "sound mix: cannot start a thread:" << error.what();
        return false;
    }
    return true;
}

void GLAudioDeviceContext::closeGLAudioDevice()
{
    if (_thread.joinable()) {
        {
            const std::lock_guard lock(_stopLock);
            _isStopping = true;
        }
        _stopped.notify_all();
        _thread.join();
    }
    _output.reset();
    const std::lock_guard lock(_mixLock);
    _mixer.close();
    _sink = nullptr;
}

void GLAudioDeviceContext::setGLAudioDeviceVolume(quint32, double volume)
{
    _volume = std::max(static_cast<float>(volume), 0.0F);
}

quint32 GLAudioDeviceContext::lastActivity() { return _activity; }

std::shared_ptr<tavlo::MixInput> GLAudioDeviceContext::addInput()
{
    const std::lock_guard lock(_mixLock);
    return _mixer.add();
}

void GLAudioDeviceContext::removeInput(const std::shared_ptr<tavlo::MixInput>& input)
{
    const std::lock_guard lock(_mixLock);
    _mixer.remove(input);
}

void GLAudioDeviceContext::run()
{
    tavlo::askForRealTime(); // late blocks are heard; where it may not have it, it does without
    const auto blockTime = std::chrono::duration_cast<Clock::duration>(
        std::chrono::duration<double>(static_cast<double>(_mixer.blockFrames()) / _format.sampleRate));
    auto next = Clock::now();
    std::unique_lock lock(_stopLock);
    while (!_stopped.wait_until(lock, next, [this] { return _isStopping; })) {
        lock.unlock();
        mixBlock();
        lock.lock();
        next += blockTime;
        if (Clock::now() - next > longestDelay)
            next = Clock::now();
    }
}

void GLAudioDeviceContext::mixBlock()
{
    {
        const std::lock_guard lock(_mixLock);
        _mixer.mix(_block.data(), _volume);
    }
    handToSink();
    play();
}

void GLAudioDeviceContext::handToSink()
{
    if (!_sink)
        return;
    if (_format.bitsPerSample == 8)
        toBytes(_block.data(), _block.size(), _samples.data());
    else
        toWords(_block.data(), _block.size(), _samples.data());
    _sink->OnGLAudioDeviceSamples(_samples.data(), static_cast<int>(_samples.size()), _format);
}

void GLAudioDeviceContext::play()
{
    const float volume = _sink ? _sink->OnGLAudioDeviceVolume() : 1.0F;
    const int frames = static_cast<int>(_block.size()) / _format.channels;
    const std::lock_guard lock(_outputLock);
    using State = tavlo::MixOutput::State;
    const State state = _output ? _output->write(_block.data(), frames, volume) : State::Waiting;
    if (!_outputIsWanted || state == State::Playing)
        _activity = milliseconds();
    if (state == State::Lost && !std::exchange(_lossTold, true))
        qDebug() << "sound mix: the sound device has gone";
}

extern "C" TAVLO_EXPORT IUnknownEx* CreateTavloGLAudioDeviceContext(const TavloInterfaceId& id, quint32 version)
{
    return tavlo::makeForModule<GLAudioDeviceContext>(id, version);
}
