#include "TavloAudioPortModule/TavloAudioPortRenderOutput.h"

#include "openal/AlFormat.h"
#include "shared/ModuleFactory.h"

#include <tavlo/Export.h>

#include <AL/alext.h>

#include <QDebug>

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

ALint sourceValue(ALuint source, ALenum what)
{
    ALint value = 0;
    alGetSourcei(source, what, &value);
    return value;
}

} // namespace

TavloAudioPortRenderOutput::~TavloAudioPortRenderOutput() { close(); }

bool TavloAudioPortRenderOutput::open(const QString& deviceName, int channels, int rate, int bits)
{
    close();
    _format = bits == 8 || bits == 16 ? tavlo::alFormat(channels, bits) : 0;
    if (_format == 0 || rate < 8000 || rate > 192'000) {
        qDebug() << "TavloAudioPortRenderOutput::open: cannot play channels, rate, bits" << channels << rate << bits
                 << "on" << deviceName;
        return false;
    }
    if (!_device.open(deviceName, rate))
        return false;
    if (!makeSource()) {
        qDebug() << "TavloAudioPortRenderOutput::open: no source on" << deviceName;
        _device.close();
        return false;
    }
    _rate = rate;
    _chunk.assign(static_cast<size_t>(rate / chunksPerSecond * channels * (bits / 8)), 0);
    _filled = 0;
    _free = _buffers;
    _freeCount = queueLimit;
    _droppedChunks = 0;
    _lossTold = false;
    return true;
}

bool TavloAudioPortRenderOutput::write(const void* data, int length, qint64, qint64)
{
    if (!_device.isOpen() || !data || length < 0)
        return false;
    if (!_device.isConnected()) {
        if (!std::exchange(_lossTold, true))
            qDebug() << "TavloAudioPortRenderOutput::write: the sound device has gone";
        return false;
    }
    const tavlo::OpenAlDevice::Scope scope(_device);
    takeBackPlayed();
    const auto* bytes = static_cast<const char*>(data);
    auto left = static_cast<size_t>(length);
    while (left > 0) {
        const size_t part = std::min(left, _chunk.size() - _filled);
        std::memcpy(_chunk.data() + _filled, bytes, part);
        _filled += part;
        bytes += part;
        left -= part;
        if (_filled == _chunk.size())
            queueChunk();
    }
    playWhenFilled();
    return true;
}

void TavloAudioPortRenderOutput::close()
{
    if (!_device.isOpen())
        return;
    {
        const tavlo::OpenAlDevice::Scope scope(_device);
        alSourceStop(_source);
        alSourcei(_source, AL_BUFFER, 0);
        alDeleteSources(1, &_source);
        alDeleteBuffers(queueLimit, _buffers.data());
    }
    if (_droppedChunks != 0)
        qDebug() << "sound output: dropped" << _droppedChunks * 1000 / chunksPerSecond << "ms in all";
    _device.close();
}

bool TavloAudioPortRenderOutput::makeSource()
{
    const tavlo::OpenAlDevice::Scope scope(_device);
    alGetError();
    alGenSources(1, &_source);
    if (alGetError() != AL_NO_ERROR)
        return false;
    alGenBuffers(queueLimit, _buffers.data());
    if (alGetError() != AL_NO_ERROR) {
        alDeleteSources(1, &_source);
        return false;
    }
    alSourcei(_source, AL_SOURCE_RELATIVE, AL_TRUE);
    alSourcei(_source, AL_DIRECT_CHANNELS_SOFT, AL_TRUE); // each channel to its speaker, without virtual placing
    return true;
}

/// A source that ran dry goes back to its beginning: while it is stopped, all that is queued would count as played.
void TavloAudioPortRenderOutput::takeBackPlayed()
{
    unqueuePlayed();
    if (sourceValue(_source, AL_SOURCE_STATE) != AL_STOPPED)
        return;
    unqueuePlayed(); // what was played in between
    alSourceRewind(_source);
}

void TavloAudioPortRenderOutput::unqueuePlayed()
{
    const ALint played = sourceValue(_source, AL_BUFFERS_PROCESSED);
    if (played > 0)
        alSourceUnqueueBuffers(_source, played, _free.data() + _freeCount);
    _freeCount += played;
}

void TavloAudioPortRenderOutput::queueChunk()
{
    if (_freeCount == 0)
        dropOldest();
    const ALuint buffer = _free[static_cast<size_t>(--_freeCount)];
    alBufferData(buffer, _format, _chunk.data(), static_cast<ALsizei>(_chunk.size()), _rate);
    alSourceQueueBuffers(_source, 1, &buffer);
    _filled = 0;
}

/// A queue can be shortened in front only while the source is stopped: all comes out, and the newest go in again.
void TavloAudioPortRenderOutput::dropOldest()
{
    alSourceStop(_source);
    const ALint queued = sourceValue(_source, AL_BUFFERS_QUEUED);
    std::array<ALuint, queueLimit> order{};
    alSourceUnqueueBuffers(_source, queued, order.data());
    alSourceRewind(_source);
    const ALint dropped = std::max(queued - keptWhenFull, 0);
    alSourceQueueBuffers(_source, queued - dropped, order.data() + dropped);
    std::copy_n(order.begin(), dropped, _free.begin() + _freeCount);
    _freeCount += dropped;
    if (_droppedChunks == 0)
        qDebug() << "sound output: more sound than the device plays, the oldest is dropped";
    _droppedChunks += static_cast<quint64>(dropped);
}

void TavloAudioPortRenderOutput::playWhenFilled()
{
    if (sourceValue(_source, AL_SOURCE_STATE) != AL_PLAYING && queueLimit - _freeCount >= neededToPlay)
        alSourcePlay(_source);
}

extern "C" TAVLO_EXPORT IUnknownEx* CreateTavloAudioPortRenderOutput(const TavloInterfaceId& id, quint32 version)
{
    return tavlo::makeForModule<TavloAudioPortRenderOutput>(id, version);
}
