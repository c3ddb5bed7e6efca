#include "scene/text/TextShape.h"

#include "scene/text/TextBounds.h"

#include <QTextLayout>

#include <algorithm>
#include <cmath>

namespace tavlo::scene {

namespace {

constexpr qreal endless = 1 << 22;              // pixels; Qt counts them in 1/64 of 32 bits
constexpr qsizetype longestParagraph = 1 << 15; // UTF-16 units: more than a picture has room for

// What painting a path takes grows with the square of its length. Where glyphs touch they stay in one: filled with what
// one can look through they would show twice.
void addOutline(const QPainterPath& outline, TextLine& line)
{
    if (outline.isEmpty())
        return;
    const QRectF box = outline.boundingRect();
    const QRectF last = line.outlines.empty() ? QRectF() : line.outlines.back().boundingRect();
    const bool isApart = box.left() > last.right() || box.right() < last.left();
    if (line.outlines.empty() || isApart) {
        line.outlines.emplace_back();
        line.outlines.back().setFillRule(Qt::WindingFill);
    }
    line.outlines.back().addPath(outline);
}

void addGlyphs(const QGlyphRun& run, QPointF shift, FontFinder& fonts, TextLine& line)
{
    GlyphOutlines& font = fonts.glyphsOf(run.rawFont());
    QList<QPointF> positions = run.positions();
    for (QPointF& position : positions)
        position += shift;
    if (font.arePictures()) {
        line.coloured.append(run);
        line.coloured.last().setPositions(positions);
        return;
    }
    const QList<quint32> glyphs = run.glyphIndexes();
    for (qsizetype i = 0; i < glyphs.size(); ++i)
        addOutline(font.outline(glyphs[i]).translated(positions[i]), line);
}

// One paragraph, broken at the width; its lines begin at left 0, below one another.
void shapeParagraph(const QString& text, const QFont& font, FontFinder& fonts, qreal width, qreal& top,
                    std::vector<TextLine>& lines)
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
        for (const QGlyphRun& run : line.glyphRuns())
            addGlyphs(run, {-natural.left(), 0}, fonts, shaped);
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
    for (QPainterPath& piece : line.outlines)
        piece = transform.map(piece);
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
    shape.scale = static_cast<qreal>(bounded(style.fontSize, smallestFont, largestFont)) / font.pixelSize();
    const qreal wantedWidth = static_cast<qreal>(style.dimensions.width);
    const qreal wantedHeight = static_cast<qreal>(style.dimensions.height);
    qreal top = 0;
    for (const QString& paragraph : text.split(QLatin1Char('\n')))
        if (top * shape.scale < tallestText)
            shapeParagraph(paragraph.left(longestParagraph), font, fonts, wantedWidth / shape.scale, top, shape.lines);

    qreal width = 0;
    for (const TextLine& line : shape.lines)
        width = std::max(width, line.box.width() * shape.scale);
    const QSizeF whole{wantedWidth > 0 ? wantedWidth : std::ceil(width),
                       wantedHeight > 0 ? wantedHeight : std::ceil(top * shape.scale)};
    shape.size = boundedText(whole, style);
    shape.cut = shape.size != whole;
    const qreal down = alignedTop(style.vAlignment, whole.height() - top * shape.scale);
    for (TextLine& line : shape.lines) {
        const qreal room = whole.width() - line.box.width() * shape.scale;
        scaleAndMove(line, shape.scale, {alignedLeft(style.hAlignment, room), down});
    }
    std::erase_if(shape.lines, [&shape](const TextLine& line) {
        return line.box.top() >= shape.size.height() || line.box.bottom() <= 0;
    });
    return shape;
}

} // namespace tavlo::scene
