#include "output/ChromaTable.h"

#include <tavlo/records/MediaFormat.h>

namespace tavlo {

quint32 chromaOfFormat(graphics::Format format)
{
    using graphics::Format;
    switch (format) {
    case Format::NV12:
        return tavloFourcc("NV12");
    case Format::R8G8B8A8_UNORM:
    case Format::R8G8B8A8_UNORM_SRGB:
        return tavloFourcc("RGBA");
    case Format::B8G8R8A8_UNORM:
        return tavloFourcc("BGRA");
    default:
        return 0;
    }
}

} // namespace tavlo
