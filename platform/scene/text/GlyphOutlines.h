#pragma once

#include <QPainterPath>
#include <QRawFont>

#include <unordered_map>

namespace tavlo::scene {

/// The outlines of the glyphs of one font in one size, each read from the font once: reading runs the font's own program,
/// which takes longer than filling the outline. Frame thread.
class GlyphOutlines
{
public:
    explicit GlyphOutlines(QRawFont font);

    const QRawFont& font() const { return _font; }

    /// Whether the glyphs are pictures of their own, such as emoji. Such a font is not asked for outlines: it would draw
    /// nothing afterwards.
    bool arePictures() const { return _pictures; }

    /// Pixels from the glyph's origin, y down. Valid until the next call.
    const QPainterPath& outline(quint32 glyph);

private:
    QRawFont _font;
    bool _pictures;
    std::unordered_map<quint32, QPainterPath> _outlines;
};

} // namespace tavlo::scene
