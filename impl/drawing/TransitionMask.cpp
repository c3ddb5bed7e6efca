#include "drawing/TransitionMask.h"

#include "drawing/SeededRandom.h"
#include "drawing/TransitionTable.h"

#include <QImage>
#include <QPainter>

#include <algorithm>
#include <array>
#include <numbers>

namespace tavlo {

namespace {

constexpr int dissolveCells = 8; // in each row and column

} // namespace

TransitionMask::TransitionMask()
{
    _path.setFillRule(Qt::WindingFill);
    _bars.reserve(128);
}

bool TransitionMask::paintTransition(quint32 kind, double position, QImage& image)
{
    const TransitionRow* row = findTransition(kind);
    if (!row || !row->mask)
        return false;
    image.fill(Qt::white);
    _width = image.width();
    _height = image.height();
    _path.clear();
    const double p = std::clamp(position, 0.0, 1.0);
    if (*row->mask == MaskShape::Box)
        addCentred(_width * p, _height * p);
    else
        addShape(*row->mask, 1.0 - p);
    QPainter painter(&image);
    paint(painter);
    return true;
}

void TransitionMask::paintWipe(int shape, QPainter& painter, QSizeF size, double position)
{
    if (shape < 0 || shape >= maskShapeCount || size.isEmpty())
        return;
    _width = size.width();
    _height = size.height();
    _path.clear();
    addShape(static_cast<MaskShape>(shape), 1.0 - std::clamp(position, 0.0, 1.0));
    paint(painter);
}

void TransitionMask::paint(QPainter& painter)
{
    // All parts are one path: parts that meet inside a pixel then fill it whole, and no seam shines through.
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::black);
    painter.drawPath(_path);
}

void TransitionMask::addShape(MaskShape shape, double left)
{
    switch (shape) {
    case MaskShape::Box:
        return addCentred(_width * left, _height * left);
    case MaskShape::Checkerboard:
        return addCheckerboard(left);
    case MaskShape::Circle:
        return addCircle(left);
    case MaskShape::DiagonalSquares:
        return addDiagonalSquares(left);
    case MaskShape::DissolveIn:
        return addDissolvingCells(left);
    case MaskShape::RandomBars:
        return addRandomBars(left);
    case MaskShape::Split:
        return addCentred(_width, _height * left);
    case MaskShape::Blinds:
        return addBlinds(left);
    case MaskShape::Wheel:
        return addWheel(left);
    }
}

void TransitionMask::addCentred(double width, double height)
{
    _path.addRect((_width - width) / 2, (_height - height) / 2, width, height);
}

void TransitionMask::addCheckerboard(double left)
{
    const double width = _width / 5;
    const double height = _height / 10;
    for (int row = 0; row < 10; ++row) {
        const double shift = row % 2 ? width / 2 : 0;
        for (int column = 0; column < 6; ++column)
            _path.addRect(column * width + (1 - left) * width - shift, row * height, left * width, height);
    }
}

/// At its largest it reaches the corners.
void TransitionMask::addCircle(double left)
{
    const double width = _width * left * std::numbers::sqrt2;
    const double height = _height * left * std::numbers::sqrt2;
    _path.addEllipse(QRectF((_width - width) / 2, (_height - height) / 2, width, height));
}

/// A staircase from the bottom right. Its first row and column stand outside: the steps are numbered from the corner.
void TransitionMask::addDiagonalSquares(double left)
{
    const double width = _width / 8;
    const double height = _height / 8;
    const int steps = static_cast<int>(16 * left);
    for (int row = 0; row < steps; ++row) {
        for (int square = 0; square < steps - row; ++square)
            _path.addRect(_width - square * width, _height - row * height, width, height);
    }
}

/// A row's number seeds its order, so that a cell that is gone stays gone.
void TransitionMask::addDissolvingCells(double left)
{
    const double width = _width / dissolveCells;
    const double height = _height / dissolveCells;
    const int picks = static_cast<int>(left * dissolveCells);
    for (int row = 0; row < dissolveCells; ++row) {
        SeededRandom random(static_cast<unsigned>(row));
        std::array<int, dissolveCells> cells{0, 1, 2, 3, 4, 5, 6, 7};
        for (int pick = 0; pick < picks; ++pick) {
            const int remaining = dissolveCells - pick;
            auto* const cell = cells.begin() + random.below(remaining);
            _path.addRect(*cell * width, row * height, width, height);
            std::copy(cell + 1, cells.begin() + remaining, cell);
        }
    }
}

void TransitionMask::addRandomBars(double left)
{
    const int limit = std::max(static_cast<int>(_height / 32), 1);
    _bars.clear();
    double y = 0;
    for (unsigned i = 0; y < _height; ++i) {
        // Areas of less than 64 rows get bars of one row: the generator would give none.
        const int height = limit > 1 ? SeededRandom(i).below(limit) : 1;
        _bars.emplace_back(0, y, _width, height);
        y += height;
    }
    const auto picks = static_cast<unsigned>(static_cast<double>(_bars.size()) * left);
    for (unsigned pick = 0; pick < picks; ++pick) {
        const auto bar = _bars.begin() + SeededRandom(pick).below(static_cast<int>(_bars.size()));
        _path.addRect(*bar);
        _bars.erase(bar);
    }
}

void TransitionMask::addBlinds(double left)
{
    const double height = _height / 5;
    for (int slat = 0; slat < 5; ++slat)
        _path.addRect(0, (slat + 1 - left) * height, _width, left * height);
}

/// Begins at the top and goes back clockwise; the pie is twice the area, so that it covers the corners.
void TransitionMask::addWheel(double left)
{
    _path.moveTo(_width / 2, _height / 2);
    _path.arcTo(QRectF(-_width / 2, -_height / 2, 2 * _width, 2 * _height), 90, left * 360);
    _path.closeSubpath();
}

} // namespace tavlo
