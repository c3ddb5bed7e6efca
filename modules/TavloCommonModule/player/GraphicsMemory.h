#pragma once

#include "TavloCommonModule/player/FfmpegTypes.h"

#include "shared/CudaPicture.h"
#include "shared/VlcTypes.h"

namespace tavlo {

/// Whether a frame lies in graphics memory in the form that a sink may take it in: NV12 of CUDA, an even size.
bool isInGraphicsMemory(const AVFrame& frame);

/// A picture of `chromaInGraphicsMemory` that holds such a frame; null without memory.
picture_t* pictureInGraphicsMemory(const AVFrame& frame);

} // namespace tavlo
