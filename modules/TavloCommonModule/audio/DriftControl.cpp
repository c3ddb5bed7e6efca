#include "TavloCommonModule/audio/DriftControl.h"

#include <algorithm>

namespace tavlo {

namespace {

constexpr double smoothing = 2.0;   ///< seconds
constexpr double frequency = 0.05;  ///< rad/s of the closed loop
constexpr double mostTrim = 0.002;  ///< 3.5 hundredths of a semitone
constexpr double mostDrift = 0.001; ///< ten times what bad crystals have

} // namespace

void DriftControl::restart(double least, double most)
{
    _least = least;
    _most = most;
    _wanted = least;
    _time = 0.0;
    _smoothed = 0.0;
    _trim = _drift;
}

// With e seconds too much waiting and a drift of d, de/dt = d - trim. With trim = 2 w e + w^2 (integral of e) that is
// an oscillator of frequency w, critically damped.
double DriftControl::update(double waiting, double interval)
{
    if (_time < smoothing) { // the plain mean so far
        _time += interval;
        _smoothed += (waiting - _smoothed) * interval / _time;
        _wanted = std::clamp(_smoothed, _least, _most);
        return _trim;
    }
    _smoothed += (waiting - _smoothed) * interval / smoothing;
    const double error = _smoothed - _wanted;
    _drift = std::clamp(_drift + frequency * frequency * error * interval, -mostDrift, mostDrift);
    _trim = std::clamp(2.0 * frequency * error + _drift, -mostTrim, mostTrim);
    return _trim;
}

} // namespace tavlo
