#pragma once

#include <QtGlobal>

#include <cmath>

namespace tavlo {

/// Puts pictures that come at any times on the steps of a constant rate.
///
/// A picture takes the next step as long as its time is less than nine tenths of one away from it, so that pictures that
/// come a little early or late are neither lost nor repeated; beyond that, steps are filled or the picture is left out.
class FrameGrid
{
public:
    /// Longest gap that is filled, seconds; behind a longer one the times jump.
    static constexpr int longestGap = 10;

    static constexpr double tolerance = 0.9; ///< steps

    struct Place
    {
        qint64 index = 0;  ///< the picture's step, counted from 0
        int repeats = 0;   ///< steps in front of it that the picture before has to fill
        bool taken = true; ///< false: the picture is beyond the rate and has no step
    };

    FrameGrid() = default;
    FrameGrid(int fpsNum, int fpsDen) : _num(fpsNum), _den(fpsDen) {}

    /// \param time  of the picture, microseconds
    Place accept(qint64 time)
    {
        if (_next == 0)
            _base = time;
        const double late = static_cast<double>(time - timeOf(_next)) * _num / (1e6 * _den); // steps
        const double limit = static_cast<double>(longestGap) * _num / _den;
        Place place{_next, 0, true};
        if (late < -limit) { // the clock was set back: go on from here
            _base += time - timeOf(_next);
        } else if (late <= -tolerance) {
            return {_next, 0, false};
        } else if (late >= tolerance) {
            const auto lost = qint64{std::llround(late)};
            place.repeats = late <= limit ? static_cast<int>(lost) : 0;
            place.index += lost;
        }
        _next = place.index + 1;
        return place;
    }

    /// Microseconds, on the clock of the pictures. \param index  may lie before the first
    qint64 timeOf(qint64 index) const
    {
        return _base + static_cast<qint64>(std::llround(static_cast<double>(index) * 1e6 * _den / _num));
    }

private:
    int _num = 25, _den = 1;
    qint64 _base = 0; ///< time of step 0
    qint64 _next = 0;
};

} // namespace tavlo
