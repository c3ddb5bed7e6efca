#pragma once

#include <QtGlobal>

#include <algorithm>
#include <atomic>
#include <bit>
#include <vector>

namespace tavlo {

/// Frames of floats on their way from one writing thread to one reading thread, without a lock.
///
/// Positions count frames from the beginning and never wrap.
class FrameRing
{
public:
    /// \param frames  room for at least so many
    FrameRing(int channels, int frames)
        : _channels(static_cast<size_t>(channels)), _mask(std::bit_ceil(static_cast<quint64>(frames)) - 1),
          _samples((_mask + 1) * _channels)
    {}

    quint64 writePosition() const { return _written.load(std::memory_order_acquire); }
    quint64 readPosition() const { return _read.load(std::memory_order_acquire); }

    /// Frames that wait to be read.
    int fill() const { return static_cast<int>(writePosition() - readPosition()); }

    /// Writing thread. \return the frames taken, fewer where there is no room for all
    int write(const float* samples, int frames)
    {
        return put(frames, [&](quint64 place, size_t first, size_t count) {
            std::copy_n(samples + first, count, _samples.data() + place);
        });
    }

    /// The same of silence.
    int writeSilence(int frames)
    {
        return put(frames,
                   [&](quint64 place, size_t, size_t count) { std::fill_n(_samples.data() + place, count, 0.0F); });
    }

    /// Reading thread. \return the frames read, fewer where not so many wait
    int read(float* samples, int frames)
    {
        const quint64 at = _read.load(std::memory_order_relaxed);
        frames = std::min(frames, fill());
        transfer(at, frames, [&](quint64 place, size_t first, size_t count) {
            std::copy_n(_samples.data() + place, count, samples + first);
        });
        _read.store(at + static_cast<quint64>(frames), std::memory_order_release);
        return frames;
    }

    /// Reading thread. Leaves out what waits before that position.
    void skipTo(quint64 position)
    {
        if (position > _read.load(std::memory_order_relaxed))
            _read.store(std::min(position, writePosition()), std::memory_order_release);
    }

private:
    /// \param copy  as in `transfer`
    template <class Copy>
    int put(int frames, Copy copy)
    {
        const quint64 at = _written.load(std::memory_order_relaxed);
        const auto room = static_cast<int>(_mask + 1 - (at - readPosition()));
        frames = std::min(frames, room);
        transfer(at, frames, copy);
        _written.store(at + static_cast<quint64>(frames), std::memory_order_release);
        return frames;
    }

    /// In two parts where the frames pass the ring's end. \param copy (sample in the ring, sample outside, samples)
    template <class Copy>
    void transfer(quint64 position, int frames, Copy copy)
    {
        const quint64 place = position & _mask;
        const auto count = static_cast<quint64>(frames);
        const quint64 first = std::min(count, _mask + 1 - place);
        copy(place * _channels, size_t{0}, first * _channels);
        copy(0, first * _channels, (count - first) * _channels);
    }

    const size_t _channels;
    const quint64 _mask; ///< frames of the ring, less 1
    std::vector<float> _samples;
    std::atomic<quint64> _written{0};
    std::atomic<quint64> _read{0};
};

} // namespace tavlo
