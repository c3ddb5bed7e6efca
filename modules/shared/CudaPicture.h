#pragma once

#include <tavlo/records/MediaFormat.h>

#include <QtGlobal>

namespace tavlo {

/// What says that pictures stay in graphics memory; their content is NV12.
inline constexpr quint32 chromaInGraphicsMemory = tavloFourcc("DX11");

/// The `p_sys` of such a picture, in the words of CUDA's driver.
struct CudaPicture
{
    void* context = nullptr;                ///< in which the two addresses are valid
    void* stream = nullptr;                 ///< behind whose work so far the picture is complete
    quint64 luma = 0, chroma = 0;           ///< addresses
    quint64 lumaPitch = 0, chromaPitch = 0; ///< bytes from row to row
};

} // namespace tavlo
