#include "scene/text/TextShape.h"

#include <QFontMetricsF>
#include <QRawFont>
#include <QTextLayout>

#include <algorithm>
#include <array>
#include <cmath>

namespace tavlo::scene {

namespace {

constexpr qreal endless = 1 << 22; // pixels; Qt counts them in 1/64 of 32 bits

// Asked of the font and not of the glyph: a font of pictures that is asked for an outline draws nothing afterwards.
bool bringsPictures(const QRawFont& font)
{
    return std::ranges::any_of(std::array{"CBDT", "sbix", "COLR", "SVG "},
                               [&font](const char* table) { return !font.fontTable(table).isEmpty(); });
}

void addGlyphs(const QGlyphRun& run, QPointF shift, TextLine& line)
{
    const QRawFont font = run.rawFont();
    QList<QPointF> positions = run.positions();
    for (QPointF& position : positions)
        position += shift;
    if (bringsPictures(font)) {
        line.coloured.append(run);
        line.coloured.last().setPositions(positions);
        return;
    }
    const QList<quint32> glyphs = run.glyphIndexes();
    for (qsizetype i = 0; i < glyphs.size(); ++i)
        line.outlines.addPath(font.pathForGlyph(glyphs[i]).translated(positions[i]));
}

// One paragraph, broken at the width; its lines begin at left 0, below one another.
void shapeParagraph(const QString& text, const QFont& font, qreal width, qreal& top, std::vector<TextLine>& lines)
{
    QTextLayout layout(text, font);
    QTextOption option;
    option.setWrapMode(width > 0 ? QTextOption::WrapAtWordBoundaryOrAnywhere : QTextOption::NoWrap);
    option.setAlignment(Qt::AlignLeft | Qt::AlignAbsolute);
    layout.setTextOption(option);
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width > 0 ? width : endless); // without a width nothing is laid out
        line.setPosition({0, top});
        top += line.height();
    }
    layout.endLayout();

    for (int i = 0; i < layout.lineCount(); ++i) {
        const QTextLine line = layout.lineAt(i);
        const QRectF natural = line.naturalTextRect();
        TextLine shaped;
        shaped.box = {0, natural.top(), natural.width(), line.height()};
        shaped.outlines.setFillRule(Qt::WindingFill);
        for (const QGlyphRun& run : line.glyphRuns())
            addGlyphs(run, {-natural.left(), 0}, shaped);
        lines.push_back(std::move(shaped));
    }
}

qreal alignedLeft(TextHAlignment alignment, qreal room)
{
    if (alignment == TextHAlignment::Center)
        return room / 2;
    return alignment == TextHAlignment::Right ? room : 0;
}

qreal alignedTop(TextVAlignment alignment, qreal room)
{
    if (alignment == TextVAlignment::Center)
        return room / 2;
    return alignment == TextVAlignment::Bottom ? room : 0;
}

void scaleAndMove(TextLine& line, qreal scale, QPointF shift)
{
    QTransform transform;
    transform.translate(shift.x(), shift.y());
    transform.scale(scale, scale);
    line.outlines = transform.map(line.outlines);
    line.box = transform.mapRect(line.box);
    for (QGlyphRun& run : line.coloured) {
        QList<QPointF> positions = run.positions();
        for (QPointF& position : positions)
            position += shift / scale;
        run.setPositions(positions);
    }
}

} // namespace

TextShape shapeText(const QString& text, const TextStyle& style, FontFinder& fonts)
{
    TextShape shape;
    const QFont font = fonts.fontFor(style);
    shape.scale =
        std::isfinite(style.fontSize) && style.fontSize > 0 ? static_cast<qreal>(style.fontSize) / font.pixelSize() : 1;
    const qreal wantedWidth = static_cast<qreal>(style.dimensions.width);
    const qreal wantedHeight = static_cast<qreal>(style.dimensions.height);
    qreal top = 0;
    for (const QString& paragraph : text.split(QLatin1Char('\n')))
        shapeParagraph(paragraph, font, wantedWidth / shape.scale, top, shape.lines);

    qreal width = 0;
    for (const TextLine& line : shape.lines)
        width = std::max(width, line.box.width() * shape.scale);
    shape.size = {wantedWidth > 0 ? wantedWidth : std::ceil(width),
                  wantedHeight > 0 ? wantedHeight : std::ceil(top * shape.scale)};
    const qreal down = alignedTop(style.vAlignment, shape.size.height() - top * shape.scale);
    for (TextLine& line : shape.lines) {
        const qreal room = shape.size.width() - line.box.width() * shape.scale;
        scaleAndMove(line, shape.scale, {alignedLeft(style.hAlignment, room), down});
    }
    if (wantedHeight > 0)
        std::erase_if(shape.lines,
                      [&](const TextLine& line) { return line.box.top() >= wantedHeight || line.box.bottom() <= 0; });
    return shape;
}

} // namespace tavlo::scene
