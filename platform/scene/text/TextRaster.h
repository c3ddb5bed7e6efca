#pragma once

#include "scene/text/TextShape.h"

#include <QImage>
#include <QPoint>

namespace tavlo::scene {

/// A text as a picture, premultiplied RGBA.
struct TextRaster
{
    QImage image;   ///< null when there is nothing to see
    QPoint leftTop; ///< of the image, from the text's left top, y down, pixels
};

/// Draws the shadow, the outline and the words over one another. What is beyond the bounds of a picture is cut off on the
/// right and below.
TextRaster rasterText(const TextShape& shape, const TextStyle& style);

} // namespace tavlo::scene
