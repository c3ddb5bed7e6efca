#pragma once

#include <QPainterPath>
#include <QRectF>
#include <QSizeF>

#include <vector>

class QImage;
class QPainter;

namespace tavlo {

/// The shapes of wipes, in the numbering of the show items.
enum class MaskShape : quint8
{
    Box,
    Checkerboard,
    Circle,
    DiagonalSquares,
    DissolveIn,
    RandomBars,
    Split,
    Blinds,
    Wheel,
};

inline constexpr int maskShapeCount = 9;

/// Paints the masks of wipes: black shapes that shrink as the position goes from 0 to 1, the transitions' box apart,
/// which grows. A position outside 0..1 counts as the nearer end.
///
/// Keeps its working memory from one picture to the next. Owner's thread.
class TransitionMask
{
public:
    TransitionMask();

    /// The mask of a transition, black on white, over the whole image. False, and nothing painted, when the kind has
    /// none.
    bool paintTransition(quint32 kind, double position, QImage& image);

    /// The mask of a show item: black on what the painter's device holds. Sets pen and brush. A number outside
    /// 0..maskShapeCount - 1 paints nothing.
    /// \param size  of the area, pixels; its corner lies at 0, 0
    void paintWipe(int shape, QPainter& painter, QSizeF size, double position);

private:
    void paint(QPainter& painter);
    void addShape(MaskShape shape, double left);
    void addCentred(double width, double height);
    void addCheckerboard(double left);
    void addCircle(double left);
    void addDiagonalSquares(double left);
    void addDissolvingCells(double left);
    void addRandomBars(double left);
    void addBlinds(double left);
    void addWheel(double left);

    QPainterPath _path;
    std::vector<QRectF> _bars;
    double _width = 0; ///< of the area, pixels
    double _height = 0;
};

} // namespace tavlo
