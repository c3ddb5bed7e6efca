#pragma once

#include "TavloCommonModule/player/FfmpegTypes.h"
#include "TavloCommonModule/player/MatrixConversion.h"

#include "shared/VlcTypes.h"

#include <QtGlobal>

namespace tavlo {

/// Writes decoded frames into pictures of one layout: copied where the frame has that layout, converted where not.
/// Owner's thread.
class PictureWriter
{
public:
    /// The layout in which a frame's pictures are best handed on: its own where the drawing shader knows that, RGBA for
    /// colours and transparency, else NV12.
    static quint32 naturalChroma(const AVFrame& frame);

    /// Whether a frame of YUV has the matrix and the range that the drawing knows.
    static bool isDrawn(const AVFrame& frame);

    /// Whether pictures of that layout can be written.
    static bool canWrite(quint32 chroma);

    /// \param chroma  one that can be written
    void setChroma(quint32 chroma) { _chroma = chroma; }

    /// False when the frame cannot be converted. Pictures of the frame's size only.
    bool write(const AVFrame& frame, picture_t& picture);

private:
    bool convert(const AVFrame& frame, AVPixelFormat format);
    void copy(const AVFrame& frame, picture_t& picture) const;

    quint32 _chroma = 0;
    MatrixConversion _matrices;
    ScalerPtr _scaler;
    FramePtr _converted;
};

} // namespace tavlo
