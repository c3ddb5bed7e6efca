#pragma once

#include <AL/al.h>

namespace tavlo {

/// How OpenAL calls interleaved samples, 0 where it has no word for them.
/// \param channels  1, 2, 4, 6, 7 or 8
/// \param bits      8 (unsigned), 16 (signed) or 32 (floats)
ALenum alFormat(int channels, int bits);

} // namespace tavlo
