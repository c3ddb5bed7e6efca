#pragma once

#include <QtGlobal>

#include <limits>

namespace tavlo {

/// When the blocks of a mix are due. The mix follows the system's clock and catches up after a stall of the machine: such
/// blocks come at once, but each belongs behind the one before. One thread.
class SoundClock
{
public:
    /// \param now     microseconds, when the block came
    /// \param length  of the block, microseconds
    /// \return microseconds of the same clock, when it was due
    qint64 stamp(qint64 now, qint64 length)
    {
        const qint64 late = now - _next, pace = now - _came;
        // Who comes at the usual pace catches nothing up: the mix began anew.
        const bool anew = late > jitter && pace > length / 2 && pace < length * 3;
        if (late < 0 || late > longestStall || anew)
            _next = now;
        _came = now;
        const qint64 due = _next;
        _next += length;
        return due;
    }

private:
    static constexpr qint64 longestStall = 1'100'000; ///< microseconds; behind a second the mix begins anew

    static constexpr qint64 jitter = 50'000; ///< microseconds by which a block comes late

    qint64 _came = 0;                                      ///< when the block before came
    qint64 _next = std::numeric_limits<qint64>::min() / 2; ///< long ago
};

} // namespace tavlo
