#include "TavloCommonModule/audio/LoopingSource.h"

#include "openal/AlFormat.h"
#include "openal/OpenAlDevice.h"

// The call that exchanges a buffer's content stands among the library's functions, but some releases do not list it as
// an extension.
#define AL_ALEXT_PROTOTYPES
#include <AL/alext.h>

#include <algorithm>
#include <vector>

namespace tavlo {

namespace {

constexpr float loudest = 16.0F; ///< the library's own limit

} // namespace

bool LoopingSource::create(const OpenAlDevice& device, int channels, int rate, int frames)
{
    const OpenAlDevice::Scope scope(device);
    _channels = channels;
    _frames = frames;
    _format = alFormat(channels, 32);
    if (_format == 0)
        return false;
    alGetError();
    alGenSources(1, &_source);
    alGenBuffers(1, &_buffer);
    const std::vector<float> silence(static_cast<size_t>(frames * channels));
    alBufferData(_buffer, _format, silence.data(), static_cast<ALsizei>(silence.size() * sizeof(float)), rate);
    alSourcei(_source, AL_SOURCE_RELATIVE, AL_TRUE);
    alSourcei(_source, AL_DIRECT_CHANNELS_SOFT, AL_TRUE); // each channel to its speaker, without virtual placing
    alSourcei(_source, AL_BUFFER, static_cast<ALint>(_buffer));
    alSourcei(_source, AL_LOOPING, AL_TRUE);
    alSourcef(_source, AL_MAX_GAIN, loudest);
    alSourcePlay(_source);
    if (alGetError() == AL_NO_ERROR)
        return true;
    destroy(device);
    return false;
}

void LoopingSource::destroy(const OpenAlDevice& device)
{
    const OpenAlDevice::Scope scope(device);
    if (_source != 0) {
        alSourceStop(_source);
        alSourcei(_source, AL_BUFFER, 0);
        alDeleteSources(1, &_source);
    }
    if (_buffer != 0)
        alDeleteBuffers(1, &_buffer);
    _source = _buffer = 0;
}

void LoopingSource::put(int position, const float* samples, int frames) const
{
    const auto bytes = [&](int count) {
        return static_cast<ALsizei>(static_cast<size_t>(count * _channels) * sizeof(float));
    };
    const int first = std::min(frames, _frames - position);
    alBufferSubDataSOFT(_buffer, _format, samples, bytes(position), bytes(first));
    if (first < frames)
        alBufferSubDataSOFT(_buffer, _format, samples + first * _channels, 0, bytes(frames - first));
}

int LoopingSource::position() const
{
    ALint position = 0;
    alGetSourcei(_source, AL_SAMPLE_OFFSET, &position);
    return position;
}

void LoopingSource::setVolume(float volume)
{
    volume = std::clamp(volume, 0.0F, loudest);
    if (volume == _volume)
        return;
    _volume = volume;
    alSourcef(_source, AL_GAIN, volume);
}

} // namespace tavlo
