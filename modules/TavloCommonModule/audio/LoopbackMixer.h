#pragma once

#include "TavloCommonModule/audio/LoopingSource.h"
#include "openal/OpenAlDevice.h"

#include <list>
#include <memory>
#include <vector>

namespace tavlo {

class MixInput;

/// Adds sounds up, as sources of one loopback device. The caller sees to it that one call is made at a time.
class LoopbackMixer
{
public:
    LoopbackMixer() = default;
    ~LoopbackMixer() { close(); }
    LoopbackMixer(const LoopbackMixer&) = delete;
    LoopbackMixer& operator=(const LoopbackMixer&) = delete;

    /// Gets ready, an earlier mix closed first. False, with a log line, when that cannot be mixed.
    bool open(int channels, int rate);

    void close();

    bool isOpen() const { return _device.isOpen(); }
    int channels() const { return _channels; }
    int rate() const { return _rate; }

    /// Frames of a block: 10 milliseconds.
    int blockFrames() const { return _rate / 100; }

    /// Takes a sound into the mix; null, with a log line, when it takes no more.
    std::shared_ptr<MixInput> add();

    void remove(const std::shared_ptr<MixInput>& input);

    /// The next block of the mix, interleaved floats. Allocates nothing. \param block `blockFrames` frames
    void mix(float* block, float volume);

private:
    struct Entry
    {
        std::shared_ptr<MixInput> input;
        LoopingSource source;
        bool isSilent = true; ///< so is what lies in its buffer
    };

    OpenAlDevice _device;
    int _channels = 0;
    int _rate = 0; ///< Hz
    float _volume = 1.0F;
    std::list<Entry> _entries;
    std::vector<float> _scratch; ///< a block
};

} // namespace tavlo
