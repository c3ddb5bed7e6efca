#pragma once

#include <AL/al.h>

namespace tavlo {

class OpenAlDevice;

/// A source that plays one buffer of floats over and over, while its owner exchanges what lies ahead: a queue of
/// buffers would have the sound library allocate for each of them.
///
/// Every call within a scope of the device's context, but for the two that take the device.
class LoopingSource
{
public:
    /// Silent, and playing. False when the library cannot do so. \param frames of the buffer
    bool create(const OpenAlDevice& device, int channels, int rate, int frames);

    void destroy(const OpenAlDevice& device);

    /// Puts frames into the buffer; they pass its end into its beginning.
    void put(int position, const float* samples, int frames) const;

    /// The frame that the device takes next.
    int position() const;

    /// Comes without a step.
    void setVolume(float volume);

    int frames() const { return _frames; }

private:
    int _channels = 0;
    int _frames = 0;
    ALenum _format = 0;
    ALuint _source = 0;
    ALuint _buffer = 0;
    float _volume = 1.0F;
};

} // namespace tavlo
