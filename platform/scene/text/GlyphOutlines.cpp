#include "scene/text/GlyphOutlines.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tavlo::scene {

namespace {

constexpr std::size_t glyphsToKnow = 1024;

// Asked of the font and not of a glyph. A table is copied whole when it is asked for: once for each font.
bool hasPictures(const QRawFont& font)
{
    return std::ranges::any_of(std::array{"CBDT", "sbix", "COLR", "SVG "},
                               [&font](const char* table) { return !font.fontTable(table).isEmpty(); });
}

} // namespace

GlyphOutlines::GlyphOutlines(QRawFont font) : _font(std::move(font)), _pictures(hasPictures(_font)) {}

const QPainterPath& GlyphOutlines::outline(quint32 glyph)
{
    const auto found = _outlines.find(glyph);
    if (found != _outlines.end())
        return found->second;
    if (_outlines.size() >= glyphsToKnow)
        _outlines.clear();
    return _outlines.emplace(glyph, _font.pathForGlyph(glyph)).first->second;
}

} // namespace tavlo::scene
