#pragma once

#include "graphics/Format.h"

#include <QtGlobal>

extern "C" {
#include <libavutil/pixfmt.h>
}

namespace tavlo {

/// The pixel format of the same layout as a chroma (a four-character code); AV_PIX_FMT_NONE for one that has none.
AVPixelFormat pixelFormatOfChroma(quint32 chroma);

/// The same from a texture's format to a chroma; 0 for one that has none.
quint32 chromaOfFormat(graphics::Format format);

/// Whether a chroma keeps its second component of colour in front of the first, other than its pixel format.
bool hasSwappedPlanes(quint32 chroma);

} // namespace tavlo
