#pragma once

#include "graphics/Format.h"
#include "shared/ChromaFormats.h"

namespace tavlo {

/// The chroma in which a texture's format comes to memory; 0 for one that has none.
quint32 chromaOfFormat(graphics::Format format);

} // namespace tavlo
