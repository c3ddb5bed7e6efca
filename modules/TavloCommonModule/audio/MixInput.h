#pragma once

#include "TavloCommonModule/audio/DriftControl.h"
#include "TavloCommonModule/audio/DriftResampler.h"
#include "TavloCommonModule/audio/FrameRing.h"

#include <QtGlobal>

#include <atomic>
#include <mutex>
#include <vector>

namespace tavlo {

/// One sound on its way into the mix: converted to the mix's format, held until the mix takes it.
///
/// It begins to play when a block and 20 milliseconds wait, and keeps about as much waiting, by its speed, as waits in
/// the first two seconds; beyond 120 milliseconds more than that it is brought nearer. A sound that ran dry begins anew in the same way; if it came back at once, its blocks come irregularly, and from then on 10
/// milliseconds more wait. Every begin and end is a fade of 5 milliseconds, so that it does not click.
class MixInput
{
public:
    /// \param block  frames that the mix takes at a time
    MixInput(int channels, int rate, int block);

    // --- any thread ---

    /// False for a format that cannot be converted. \param length bytes
    bool write(const void* data, int length, const SoundFormat& format);

    /// The same in time, unheard.
    void writeSilence(int length, const SoundFormat& format);

    void listen() { _isListening = true; }
    void pause(bool paused) { _isPaused = paused; }
    void flush(bool now);

    void setVolume(float volume) { _volume = volume; }
    float volume() const { return _volume; }

    /// Microseconds of the source's sound that the mix has taken, or that were dropped. Never less than before: a block
    /// that was stretched as it was written counts no part of what was told.
    qint64 playedMicroseconds() const;

    // --- mixing thread ---

    /// The next block, interleaved; silence where there is nothing to play. False when all of it is silent.
    bool take(float* block);

private:
    bool takeFormat(const SoundFormat& format);
    void tellFailure(const SoundFormat& format);
    void noteLength(int frames);
    void countSource(int frames, const SoundFormat& format);
    bool canBegin(int waiting) const;
    void begin();
    void end(float* block, int frames, int known);
    void leaveOutExcess(float* block);
    void fadeIn(float* block, int frames) const;

    // fixed
    const int _channels;
    const int _rate;  ///< Hz
    const int _block; ///< frames
    const int _fade;  ///< frames

    // guarded by _writeLock
    std::mutex _writeLock;
    DriftResampler _resampler;
    qint64 _earlierMicroseconds = 0; ///< what was written in earlier formats
    qint64 _sourceFrames = 0;        ///< what was written in this one
    bool _isSilenced = false;        ///< the last block was silence in another's place
    bool _failureTold = false;

    // from the writing to the mixing thread
    FrameRing _ring;
    std::atomic<bool> _isListening{false};
    std::atomic<bool> _isPaused{false};
    std::atomic<float> _volume{1.0F};
    std::atomic<int> _longestBlock{0};           ///< frames
    std::atomic<quint64> _dropped{0};            ///< what waits before this position is not played
    std::atomic<quint64> _complete{0};           ///< what waits before this position is played without waiting for more
    std::atomic<qint64> _writtenMicroseconds{0}; ///< of the source's sound
    mutable std::atomic<qint64> _toldMicroseconds{0};

    // from the mixing to the writing thread
    std::atomic<double> _trim{0.0};

    // mixing thread
    DriftControl _control;
    bool _isPlaying = false;
    bool _excessTold = false;
    int _silentBlocks = 0; ///< since it ended
    int _reserve;          ///< frames that have to wait, beside a block, to begin
    std::vector<float> _scratch;
};

} // namespace tavlo
