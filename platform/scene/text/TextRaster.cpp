#include "scene/text/TextRaster.h"

#include "scene/text/AlphaBlur.h"
#include "scene/text/TextBounds.h"

#include <QPainter>

namespace tavlo::scene {

namespace {

constexpr QImage::Format pictureFormat = QImage::Format_RGBA8888_Premultiplied;

QColor colorOf(Color4B color) { return {color.r, color.g, color.b, color.a}; }

/// The lines as masks and pictures of one rectangle.
class Canvas
{
public:
    Canvas(const TextShape& shape, const TextStyle& style, QRect area) : _shape(shape), _style(style), _area(area) {}

    QImage picture() const
    {
        QImage result(_area.size(), pictureFormat);
        result.fill(Qt::transparent);
        const bool outlined = _style.outlineColor.a > 0 && _style.outlineSize > 0;
        const bool shadowed = _style.shadowColor.a > 0;
        const QImage whole = outlined || shadowed ? mask(outlined ? _style.outlineSize : 0) : QImage(); // the dear part
        if (shadowed)
            lay(result, blurred(whole, _style.shadowBlur), _style.shadowColor,
                QPointF(static_cast<qreal>(_style.shadowOffset.x), -static_cast<qreal>(_style.shadowOffset.y)));
        if (outlined)
            lay(result, outline(whole), _style.outlineColor, {});
        QPainter painter(&result);
        prepare(painter);
        for (const TextLine& line : _shape.lines) {
            const QBrush fill = fillOf(line);
            for (const QPainterPath& piece : line.outlines)
                painter.fillPath(piece, fill);
        }
        drawColoured(painter);
        return result;
    }

private:
    void prepare(QPainter& painter) const
    {
        painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
        painter.translate(-_area.topLeft());
    }

    void drawColoured(QPainter& painter) const
    {
        painter.scale(_shape.scale, _shape.scale);
        painter.setPen(colorOf(_style.fillColor));
        for (const TextLine& line : _shape.lines)
            for (const QGlyphRun& run : line.coloured)
                painter.drawGlyphRun({}, run);
    }

    QBrush fillOf(const TextLine& line) const
    {
        if (_style.fill == TextFill::Texture && !_style.fillTexture.isNull())
            return QBrush(_style.fillTexture);
        if (_style.fill != TextFill::Gradient)
            return QBrush(colorOf(_style.fillColor));
        QLinearGradient gradient(line.box.topLeft(), line.box.bottomLeft());
        gradient.setColorAt(0, colorOf(_style.fillColor));
        gradient.setColorAt(1, colorOf(_style.fillEndColor));
        return QBrush(gradient);
    }

    // Where the words and that much around them are.
    QImage mask(float around) const
    {
        QImage result(_area.size(), QImage::Format_Alpha8);
        result.fill(Qt::transparent);
        QPainter painter(&result);
        prepare(painter);
        painter.setBrush(Qt::black);
        painter.setPen(around > 0
                           ? QPen(Qt::black, 2 * static_cast<qreal>(around), Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin)
                           : QPen(Qt::NoPen));
        for (const TextLine& line : _shape.lines)
            for (const QPainterPath& piece : line.outlines)
                painter.drawPath(piece);
        drawColoured(painter);
        return result;
    }

    // Beneath words that are filled it goes through, so that no seam shows; where the fill is transparent, the words
    // stay free.
    QImage outline(const QImage& whole) const
    {
        QImage around = blurred(whole, _style.outlineBlur);
        const std::uint8_t filled = _style.fill == TextFill::Solid ? _style.fillColor.a : 255;
        if (filled == 255)
            return around;
        QPainter painter(&around);
        painter.setCompositionMode(QPainter::CompositionMode_DestinationOut);
        painter.setOpacity(1 - filled / 255.0);
        painter.drawImage(0, 0, mask(0));
        return around;
    }

    static QImage blurred(QImage mask, float blur)
    {
        blurAlpha(mask, blur / 2);
        return mask;
    }

    static void lay(QImage& result, const QImage& mask, Color4B color, QPointF shift)
    {
        QImage colored(mask.size(), pictureFormat);
        colored.fill(colorOf(color));
        QPainter filler(&colored);
        filler.setCompositionMode(QPainter::CompositionMode_DestinationIn);
        filler.drawImage(0, 0, mask);
        filler.end();
        QPainter painter(&result);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(shift, colored);
    }

    const TextShape& _shape;
    const TextStyle& _style;
    const QRect _area;
};

QRectF inkOf(const TextShape& shape)
{
    QRectF ink;
    for (const TextLine& line : shape.lines) {
        for (const QPainterPath& piece : line.outlines)
            ink |= piece.boundingRect();
        for (const QGlyphRun& run : line.coloured) {
            const QRectF box = run.boundingRect();
            ink |= QRectF(box.topLeft() * shape.scale, box.size() * shape.scale);
        }
    }
    return ink;
}

// The words with all that reaches beyond them.
QRect areaOf(const TextShape& shape, const TextStyle& style)
{
    const qreal overhang = shape.cut ? 0 : static_cast<qreal>(style.fontSize); // no line of marks towers beyond that
    const QRectF ink = inkOf(shape) & QRectF({}, shape.size).adjusted(-overhang, -overhang, overhang, overhang);
    if (ink.isEmpty())
        return {};
    const QRectF area = ink.marginsAdded(reachOf(style));
    const QRect whole = area.toAlignedRect().adjusted(-1, -1, 1, 1); // an empty pixel all around, for filtering
    return {whole.topLeft(), boundedPicture(whole.size())};
}

} // namespace

TextRaster rasterText(const TextShape& shape, const TextStyle& style)
{
    const QRect area = areaOf(shape, style);
    if (area.isEmpty())
        return {};
    return {Canvas(shape, style, area).picture(), area.topLeft()};
}

} // namespace tavlo::scene
