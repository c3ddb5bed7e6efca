#pragma once

#include "audio/FilterMath.h"

#include <algorithm>
#include <cmath>

namespace tavlo {

/// A band pass or a notch around one frequency. The formulas are those of the "Cookbook formulae for audio EQ biquad
/// filter coefficients" (R. Bristow-Johnson): band pass with constant 0 dB peak gain, and notch.
class SecondOrderFilter
{
public:
    enum class Kind
    {
        BandPass,
        Notch
    };

    explicit SecondOrderFilter(Kind kind) : _kind(kind) {}

    /// Silence in the histories.
    void clear() { _x1 = _x2 = _y1 = _y2 = 0.0; }

    /// Derives the coefficients when something changed. Frequencies outside 0 to half the rate and a quality of 0 or
    /// less have no filter; the nearest that has one is taken.
    void tune(int rate, double frequency, double quality)
    {
        if (rate == _rate && frequency == _frequency && quality == _quality)
            return;
        _rate = rate;
        _frequency = frequency;
        _quality = quality;
        const double w = 6.283185307179586 * std::clamp(finiteOr(frequency, 0.0), 0.0, rate / 2.0) / rate;
        const double alpha = std::sin(w) / (2.0 * std::max(finiteOr(quality, 1.0), 1e-3));
        const double a0 = 1.0 + alpha;
        const bool notch = _kind == Kind::Notch;
        _b0 = (notch ? 1.0 : alpha) / a0;
        _b1 = (notch ? -2.0 * std::cos(w) : 0.0) / a0;
        _b2 = (notch ? 1.0 : -alpha) / a0;
        _a1 = -2.0 * std::cos(w) / a0;
        _a2 = (1.0 - alpha) / a0;
    }

    double process(double x)
    {
        const double y = _b0 * x + _b1 * _x1 + _b2 * _x2 - _a1 * _y1 - _a2 * _y2;
        _x2 = _x1;
        _x1 = x;
        _y2 = _y1;
        _y1 = y;
        return y;
    }

    /// To be called once a block.
    void dropTiny()
    {
        _y1 = withoutTiny(_y1);
        _y2 = withoutTiny(_y2);
    }

private:
    Kind _kind;

    // what the coefficients are derived from
    int _rate = 0;
    double _frequency = 0.0;
    double _quality = 0.0;

    double _b0 = 0.0, _b1 = 0.0, _b2 = 0.0, _a1 = 0.0, _a2 = 0.0;
    double _x1 = 0.0, _x2 = 0.0, _y1 = 0.0, _y2 = 0.0;
};

} // namespace tavlo
