#pragma once

#include <QtGlobal>

namespace tavlo {

/// Four bytes a pixel in memory, the fourth of which says nothing.
struct RgbPixels
{
    const quint8* data = nullptr; ///< of the first row
    ptrdiff_t pitch = 0;          ///< bytes from row to row; negative where the last row comes first
    bool blueFirst = false;       ///< blue, green, red; else red, green, blue
};

/// Turns them into NV12 (BT.709, limited range), chroma the mean of four pixels; sizes may be odd. All results are exact
/// to half a step. \param width, height  pixels \param lumaPitch, chromaPitch  bytes from row to row
void convertToNv12(const RgbPixels& source, int width, int height, quint8* luma, ptrdiff_t lumaPitch, quint8* chroma,
                   ptrdiff_t chromaPitch);

} // namespace tavlo
