#pragma once

#include <cstddef>

namespace tavlo {

/// Samples as floats, 1.0 at full scale. \param bits 8 (unsigned) or 16 (signed)
void samplesToFloat(const void* samples, int bits, size_t count, float* out);

/// Floats as samples of 8 or 16 bits; what is out of range saturates. Undoes `samplesToFloat` exactly.
void samplesFromFloat(const float* in, size_t count, int bits, void* samples);

} // namespace tavlo
