#pragma once

#include <QtGlobal>

namespace tavlo::decklink {

/// Brings times of the programme's clock to a card's, which runs a little faster or slower.
///
/// Pictures come about when they are due, so that the difference between the clocks can be seen with each; it is
/// followed so slowly that their jitter does not show.
class ClockBridge
{
public:
    static constexpr qint64 slowness = 256;    ///< pictures over which a difference is smoothed
    static constexpr qint64 longest = 100'000; ///< microseconds; a difference beyond it is taken over at once

    /// A picture's time on the card's clock. \param time, now  of the picture and of the card; microseconds
    qint64 follow(qint64 time, qint64 now)
    {
        const qint64 late = now - (time + _offset);
        const bool jumps = !_begun || qAbs(late) > longest;
        _offset += jumps ? late : late / slowness;
        _begun = true;
        return time + _offset;
    }

    bool hasBegun() const { return _begun; }

    /// The same for what comes between pictures.
    qint64 timeOf(qint64 time) const { return time + _offset; }

private:
    bool _begun = false;
    qint64 _offset = 0; ///< microseconds
};

} // namespace tavlo::decklink
