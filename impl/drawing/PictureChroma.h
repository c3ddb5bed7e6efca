#pragma once

#include <tavlo/records/MediaFormat.h>

#include <algorithm>
#include <array>

namespace tavlo {

/// The picture layouts that simple.fx loads texel by texel. Everything else is red, green, blue, alpha.
inline constexpr std::array yuvChromas{tavloFourcc("I420"), tavloFourcc("YV12"), tavloFourcc("NV12"),
                                       tavloFourcc("NV21"), tavloFourcc("YUY2"), tavloFourcc("YVYU"),
                                       tavloFourcc("UYVY"), tavloFourcc("VYUY")};

inline constexpr quint32 chromaRgba = tavloFourcc("RGBA");

/// The same of pictures whose alpha is 1 everywhere.
inline constexpr quint32 chromaRgbx = tavloFourcc("RGBX");

/// The same of pictures that went through the picture process already: what the target is to hold.
inline constexpr quint32 chromaProcessed = tavloFourcc("RGBP");

constexpr bool isYuv(quint32 chroma) { return std::ranges::find(yuvChromas, chroma) != yuvChromas.end(); }

} // namespace tavlo
