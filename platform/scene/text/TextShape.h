#pragma once

#include "scene/text/FontFinder.h"
#include "scene/text/TextStyle.h"

#include <QGlyphRun>
#include <QPainterPath>
#include <QRectF>
#include <QString>

#include <vector>

namespace tavlo::scene {

/// A line of words, shaped and placed.
struct TextLine
{
    QRectF box;                         ///< of the line's advance and height
    std::vector<QPainterPath> outlines; ///< of the glyphs that have some, in pieces that stand apart
    QList<QGlyphRun> coloured;          ///< those that bring their own picture, such as emoji, in pixels of the shaping
};

/// Words that are shaped and placed on their lines: pixels, from the text's left top, y down.
struct TextShape
{
    std::vector<TextLine> lines;
    QSizeF size;      ///< whole pixels
    qreal scale = 1;  ///< from pixels of the shaping to pixels
    bool cut = false; ///< the words go on beyond the size, and nobody sees that
};

/// Shapes text of any script, both directions mixed, with fallback fonts for what the style's font does not have. A
/// line that begins below the style's dimensions is left out, and so are words beyond what a picture holds.
TextShape shapeText(const QString& text, const TextStyle& style, FontFinder& fonts);

} // namespace tavlo::scene
