#pragma once

#include <QtGlobal>

namespace tavlo {

/// Scales samples in place, to whole samples by a dither of triangular shape: quiet sound ends in noise, not in
/// distortion. A volume of 0 is silence. Any thread; what comes out depends on all calls before, on any.
/// \param bytes   of the samples
/// \param bits    8 (signed here) or 16 (signed); others count as 16
/// \param volume  a factor, taken down to 1/1024
void scaleWithDither(void* samples, qsizetype bytes, int bits, double volume);

} // namespace tavlo
