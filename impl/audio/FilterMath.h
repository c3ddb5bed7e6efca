#pragma once

#include <cmath>

namespace tavlo {

/// The value, or the fallback for a NaN or an infinity: records come from files and hosts.
inline double finiteOr(double value, double fallback) { return std::isfinite(value) ? value : fallback; }

/// The factor of a level in dB; 0 for a level that is no number and for minus infinity.
inline double decibelsToFactor(double decibels)
{
    return std::isfinite(decibels) ? std::pow(10.0, decibels / 20.0) : 0.0;
}

/// The factor of a level of which 6 units double the sound, as delay and pitch count it.
inline double sixthsToFactor(double level) { return std::exp2(finiteOr(level, 0.0) / 6.0); }

/// Nothing in place of a value too small to hear: what decays in a feedback path would end in denormal numbers, with
/// which the processor is a hundred times slower.
template <class Real>
Real withoutTiny(Real value)
{
    return std::abs(value) < Real(1e-20) ? Real(0) : value;
}

} // namespace tavlo
