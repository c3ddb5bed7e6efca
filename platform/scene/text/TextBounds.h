#pragma once

#include "scene/text/TextStyle.h"

#include <QMarginsF>
#include <QSize>
#include <QSizeF>

namespace tavlo::scene {

// What the look of a text may ask for, pixels. Looks come from files of others: each setter holds its values to these.
inline constexpr float smallestFont = 1, largestFont = 2048;
inline constexpr float widestOutline = 128;
inline constexpr float widestBlur = 128;
inline constexpr float farthestShadow = 512; ///< to either side

// What the picture of a text has at most, pixels.
inline constexpr int longestText = 1 << 17, tallestText = 1 << 13;
inline constexpr int mostTextPixels = 1 << 24;

/// The value, held between the two; what is no number is the lower one.
float bounded(float value, float low, float high);

/// How far outline and shadow reach beyond the words, pixels, y down.
QMarginsF reachOf(const TextStyle& style);

/// How much of a picture of that size is drawn, from its left top.
QSize boundedPicture(QSize size);

/// How much of words of that size is drawn: so much that the picture holds all that reaches beyond them.
QSizeF boundedText(QSizeF size, const TextStyle& style);

} // namespace tavlo::scene
