#pragma once

#include "TavloAudioPortModule/ITavloAudioPortRender.h"
#include "openal/OpenAlDevice.h"

#include <tavlo/InterfacePtr.h>

#include <array>
#include <vector>

/// Plays through OpenAL Soft.
///
/// Sound is queued in chunks of 10 milliseconds, in buffers made once. Playing begins with 40 milliseconds in the
/// queue, and anew after it ran dry. A queue that would grow past 250 milliseconds loses its older half at once: one
/// gap now and then, where the device's clock is slow, instead of many.
class TavloAudioPortRenderOutput final : public tavlo::Implements<TavloAudioPortRenderOutput, ITavloAudioPortRender>
{
public:
    ~TavloAudioPortRenderOutput();

    bool open(const QString& deviceName, int channels, int rate, int bits) override;
    bool write(const void* data, int length, qint64 pts, qint64 dts) override;
    void close() override;

private:
    static constexpr int chunksPerSecond = 100;
    static constexpr int queueLimit = 25;   ///< chunks
    static constexpr int keptWhenFull = 12; ///< chunks
    static constexpr int neededToPlay = 4;  ///< chunks

    bool makeSource();
    void takeBackPlayed();
    void unqueuePlayed();
    void queueChunk();
    void dropOldest();
    void playWhenFilled();

    tavlo::OpenAlDevice _device;

    // fixed while open
    ALenum _format = 0;
    int _rate = 0; ///< Hz
    ALuint _source = 0;
    std::array<ALuint, queueLimit> _buffers{};

    // running
    std::array<ALuint, queueLimit> _free{}; ///< the first `_freeCount` wait to be filled
    int _freeCount = 0;
    std::vector<char> _chunk; ///< fills up to its size
    size_t _filled = 0;       ///< bytes of `_chunk`
    quint64 _droppedChunks = 0;
    bool _lossTold = false;
};
