#pragma once

#include <QtGlobal>

#include <cstdlib>

namespace tavlo {

/// Brings the time stamps of a clock that is not ours onto ours: what took the shortest way tells how the two stand to
/// each other. What comes unevenly gets even stamps, and a clock that runs a little slower or faster is followed. Owner's
/// thread.
class WallStamps
{
public:
    /// \param stamp  of the other clock, microseconds  \param now  when it came, of ours
    qint64 toWall(qint64 stamp, qint64 now)
    {
        const qint64 way = now - stamp;
        if (!_known || std::abs(way - _shortest) > jump)
            _shortest = way;
        else
            _shortest += (way - _shortest) / (way < _shortest ? learning : forgetting);
        _known = true;
        return stamp + _shortest;
    }

    void reset() { _known = false; }

private:
    static constexpr qint64 jump = 1'000'000;  ///< microseconds beyond which the other clock was set
    static constexpr qint64 learning = 8;      ///< no stamp may fall behind the one before it
    static constexpr qint64 forgetting = 1000; ///< stamps after which the shortest way counts for a third

    bool _known = false;
    qint64 _shortest = 0; ///< microseconds, from the other clock to ours
};

} // namespace tavlo
