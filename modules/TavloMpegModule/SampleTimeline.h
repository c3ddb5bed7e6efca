#pragma once

#include <QtGlobal>

#include <algorithm>
#include <cmath>

namespace tavlo {

/// Times of a stream of sound whose samples are counted, led after the times of the blocks that it comes in.
///
/// The clock of the sound and that of the blocks differ a little and the blocks' times jitter; so the count leads, and a
/// difference is worked off at 1/200 of the sound's own time. A difference beyond `tolerance` is a gap or an overlap.
class SampleTimeline
{
public:
    static constexpr qint64 tolerance = 60'000; ///< microseconds
    static constexpr qint64 longestGap = 10;    ///< seconds that are filled; behind a longer one the times jump

    struct Place
    {
        qint64 silence = 0; ///< samples that are missing in front of the block
        qint64 skip = 0;    ///< samples of the block that were there before
    };

    SampleTimeline() = default;
    explicit SampleTimeline(int rate) : _rate(rate) {}

    /// Counts a block, and what its place says besides.
    /// \param time     of its first sample, microseconds
    /// \param samples  of one channel
    Place accept(qint64 time, qint64 samples)
    {
        if (_count == 0)
            _base = time;
        const qint64 difference = time - timeOf(_count);
        Place place;
        if (std::abs(difference) > longestGap * 1'000'000) {
            _base += difference;
        } else if (difference > tolerance) {
            place.silence = difference * _rate / 1'000'000;
        } else if (difference < -tolerance) {
            place.skip = std::min(-difference * _rate / 1'000'000, samples);
        } else {
            const qint64 most = std::max<qint64>(samples * 5'000 / _rate, 1); // microseconds
            _base += std::clamp(difference, -most, most);
        }
        _count += place.silence + samples - place.skip;
        return place;
    }

    /// Microseconds. \param sample  may lie before the first
    qint64 timeOf(qint64 sample) const
    {
        return _base + static_cast<qint64>(std::llround(static_cast<double>(sample) * 1e6 / _rate));
    }

private:
    int _rate = 48000;
    qint64 _base = 0; ///< time of sample 0, as the clock has led it by now
    qint64 _count = 0;
};

} // namespace tavlo
