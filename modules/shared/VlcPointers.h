#pragma once

#include "shared/VlcTypes.h"

#include <memory>

namespace tavlo {

struct ReleasePicture
{
    void operator()(picture_t* picture) const { picture_Release(picture); }
};

struct ReleaseBlock
{
    void operator()(block_t* block) const { block_Release(block); }
};

/// One reference to a picture.
using PicturePtr = std::unique_ptr<picture_t, ReleasePicture>;

/// A block and its end.
using BlockPtr = std::unique_ptr<block_t, ReleaseBlock>;

} // namespace tavlo
