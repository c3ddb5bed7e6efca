#pragma once

#include "TavloCommonModule/player/FfmpegTypes.h"

#include "shared/VlcTypes.h"

#include <QtGlobal>

#include <vector>

namespace tavlo {

/// Writes frames of YUV of any matrix and range into pictures of the drawing's: YUV of BT.709 and limited range, or
/// red, green, blue and an alpha of 255.
/// Each pixel gets the colour that it has with the chroma sample that belongs to it. Exact to half a step. Owner's thread.
class MatrixConversion
{
public:
    /// The share of red and blue in the brightness.
    struct Matrix
    {
        double red, blue;
    };

    /// Whether a frame can be written into a picture of that layout: 4:2:0 and 4:2:2 of eight bits, and RGBA to write.
    static bool canConvert(const AVFrame& frame, quint32 chroma);

    /// Copies into a picture of the frame's size.
    /// \param fullRange  brightness goes from 0 to 255, chroma as far on both sides; else 16 to 235 and 16 to 240
    void convert(const AVFrame& frame, Matrix matrix, bool fullRange, picture_t& picture, quint32 chroma);

private:
    // rows at work
    std::vector<qint16> _chroma; ///< of both components, without their middle
    std::vector<qint32> _added;  ///< what chroma adds to brightness or colours
    std::vector<quint8> _bytes;
};

} // namespace tavlo
