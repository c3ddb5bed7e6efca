#pragma once

#include <QImage>

namespace tavlo::scene {

/// Blurs an image of format Alpha8 in place, like a Gaussian of that sigma, pixels: three passes of a moving mean in
/// either direction (Wells, "Efficient synthesis of Gaussian filters by cascaded uniform filters", 1986). Outside the
/// image there is nothing. A sigma too small to move anything leaves the image.
void blurAlpha(QImage& image, float sigma);

/// How many pixels beyond the shape `blurAlpha` reaches.
int blurReach(float sigma);

} // namespace tavlo::scene
