#pragma once

#include "scene/text/GlyphOutlines.h"
#include "scene/text/TextStyle.h"

#include <QFont>

#include <vector>

namespace tavlo::scene {

/// Finds the fonts of styles. A font file is made known to Qt once, for the whole process and to its end. Frame thread.
class FontFinder
{
public:
    /// The style's font at a whole number of pixels, the nearest to its size; the text is scaled by the rest. A file
    /// that is no font is logged and leaves the family.
    QFont fontFor(const TextStyle& style);

    /// The glyphs of a font. Valid until the next call.
    GlyphOutlines& glyphsOf(const QRawFont& font);

private:
    std::vector<GlyphOutlines> _fonts; ///< a few, the last that were asked for
};

/// The whole number of pixels at which a size is shaped.
int shapingPixels(float fontSize);

} // namespace tavlo::scene
