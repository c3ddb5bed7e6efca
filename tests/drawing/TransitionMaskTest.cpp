#include "drawing/TransitionMask.h"

#include "drawing/SeededRandom.h"

#include <QImage>
#include <QPainter>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <vector>

namespace tavlo {
namespace {

constexpr int side = 512;

QImage transitionMask(quint32 kind, double position)
{
    TransitionMask painter;
    QImage mask(side, side, QImage::Format_ARGB32);
    mask.fill(Qt::magenta);
    EXPECT_TRUE(painter.paintTransition(kind, position, mask));
    return mask;
}

QImage wipeMask(int shape, double position, QSize size = {side, side})
{
    TransitionMask wipe;
    QImage mask(size, QImage::Format_ARGB32_Premultiplied);
    mask.fill(Qt::transparent);
    QPainter painter(&mask);
    wipe.paintWipe(shape, painter, size, position);
    return mask;
}

/// How black a pixel is, 0..1: on white by its colour, on nothing by its alpha.
double blackAt(const QImage& mask, int x, int y)
{
    const QRgb pixel = mask.pixel(x, y);
    return mask.format() == QImage::Format_ARGB32 ? 1 - qRed(pixel) / 255.0 : qAlpha(pixel) / 255.0;
}

/// Share of the picture.
double blackShare(const QImage& mask)
{
    double sum = 0;
    for (int y = 0; y < mask.height(); ++y) {
        for (int x = 0; x < mask.width(); ++x)
            sum += blackAt(mask, x, y);
    }
    return sum / (mask.width() * mask.height());
}

/// The picks that the C library's own generator makes: the bars left of a height, by first row.
std::vector<std::pair<int, int>> remainingBars(double position)
{
    std::vector<std::pair<int, int>> bars, taken;
    for (int y = 0, i = 0; y < side; ++i) {
        std::srand(static_cast<unsigned>(i));
        const int height = std::rand() % (side / 32);
        bars.emplace_back(y, height);
        y += height;
    }
    const int count = static_cast<int>(static_cast<double>(bars.size()) * (1 - position));
    for (int s = 0; s < count; ++s) {
        std::srand(static_cast<unsigned>(s));
        const auto bar = bars.begin() + std::rand() % static_cast<int>(bars.size());
        taken.push_back(*bar);
        bars.erase(bar);
    }
    return taken;
}

TEST(TransitionMask, GivesTheNumbersOfTheCLibrary)
{
    for (const unsigned seed : {0U, 1U, 7U, 1700000000U}) {
        SeededRandom random(seed);
        std::srand(seed);
        for (int i = 0; i < 100; ++i)
            ASSERT_EQ(random.next(), std::rand()) << "seed " << seed << ", number " << i;
    }
}

TEST(TransitionMask, CoversTheShareThatIsLeft)
{
    for (const double p : {0.25, 0.5, 0.8}) {
        EXPECT_NEAR(blackShare(transitionMask(11, p)), p * p, 1e-3);      // the box grows
        EXPECT_NEAR(blackShare(wipeMask(0, p)), (1 - p) * (1 - p), 1e-3); // that of the items shrinks
        EXPECT_NEAR(blackShare(transitionMask(12, p)), 1 - p, 0.01);
        EXPECT_NEAR(blackShare(transitionMask(15, p)), int((1 - p) * 8) / 8.0, 1e-6);
        EXPECT_NEAR(blackShare(transitionMask(17, p)), 1 - p, 1e-3);
        EXPECT_NEAR(blackShare(wipeMask(7, p)), 1 - p, 1e-3);
        int rows = 0;
        for (const auto& [y, height] : remainingBars(p))
            rows += std::min(height, side - y);
        EXPECT_NEAR(blackShare(transitionMask(16, p)), rows / double(side), 1e-6);
    }
    EXPECT_NEAR(blackShare(transitionMask(20, 0.25)), 0.75, 1e-3);
    EXPECT_NEAR(blackShare(wipeMask(8, 0.5)), 0.5, 1e-3);
    EXPECT_NEAR(blackShare(wipeMask(2, 0.5)), M_PI / 8, 1e-3); // half the width and height, times the root of two
    EXPECT_NEAR(blackShare(transitionMask(14, 0.5)), 21 / 64.0, 1e-6); // eight steps, the outer ones outside
}

TEST(TransitionMask, PutsTheShapesWhereTheyBelong)
{
    const QImage box = transitionMask(11, 0.5);
    EXPECT_EQ(blackAt(box, 256, 130), 1);
    EXPECT_EQ(blackAt(box, 256, 126), 0);
    EXPECT_EQ(blackAt(box, 130, 256), 1);

    const QImage checkers = transitionMask(12, 0.5); // cells of 102.4 by 51.2; the right half of each is left
    EXPECT_EQ(blackAt(checkers, 30, 20), 0);
    EXPECT_EQ(blackAt(checkers, 80, 20), 1);
    EXPECT_EQ(blackAt(checkers, 30, 70), 1); // odd rows stand half a cell to the left
    EXPECT_EQ(blackAt(checkers, 80, 70), 0);
    EXPECT_EQ(blackAt(checkers, 480, 70), 0);
    EXPECT_EQ(blackAt(checkers, 440, 70), 1);

    const QImage steps = transitionMask(14, 0.75); // four steps
    EXPECT_EQ(blackAt(steps, 511, 511), 1);
    EXPECT_EQ(blackAt(steps, 400, 500), 1);
    EXPECT_EQ(blackAt(steps, 380, 500), 0);
    EXPECT_EQ(blackAt(steps, 400, 440), 0);
    EXPECT_EQ(blackAt(steps, 500, 440), 1);

    const QImage split = transitionMask(17, 0.5);
    EXPECT_EQ(blackAt(split, 0, 126), 0);
    EXPECT_EQ(blackAt(split, 0, 130), 1);
    EXPECT_EQ(blackAt(split, 511, 380), 1);

    const QImage blinds = wipeMask(7, 0.5);
    EXPECT_EQ(blackAt(blinds, 100, 20), 0);
    EXPECT_EQ(blackAt(blinds, 100, 90), 1);

    const QImage wheel = transitionMask(20, 0.75); // a quarter, from the top anticlockwise
    EXPECT_EQ(blackAt(wheel, 5, 5), 1);
    EXPECT_EQ(blackAt(wheel, 250, 10), 1);
    EXPECT_EQ(blackAt(wheel, 262, 10), 0);
    EXPECT_EQ(blackAt(wheel, 10, 262), 0);
}

TEST(TransitionMask, PicksTheCellsAndBarsOfTheCLibrarysNumbers)
{
    for (const double p : {0.1, 0.4, 0.7}) {
        const QImage mask = transitionMask(15, p);
        for (int row = 0; row < 8; ++row) {
            std::srand(static_cast<unsigned>(row));
            std::vector<int> cells{0, 1, 2, 3, 4, 5, 6, 7};
            for (int pick = 0; pick < static_cast<int>((1 - p) * 8); ++pick)
                cells.erase(cells.begin() + std::rand() % static_cast<int>(cells.size()));
            for (int column = 0; column < 8; ++column) {
                const bool isGone = std::find(cells.begin(), cells.end(), column) != cells.end();
                EXPECT_EQ(blackAt(mask, column * 64 + 32, row * 64 + 32), isGone ? 0 : 1) << row << " " << column;
            }
        }
        const QImage bars = transitionMask(16, p);
        std::vector<int> rows(side, 0);
        for (const auto& [y, height] : remainingBars(p))
            std::fill(rows.begin() + y, rows.begin() + std::min(y + height, side), 1);
        for (int y = 0; y < side; ++y)
            ASSERT_EQ(blackAt(bars, 300, y), rows[static_cast<std::size_t>(y)]) << "row " << y;
    }
}

TEST(TransitionMask, LeavesNoSeamsAtTheBeginningAndNothingAtTheEnd)
{
    for (int shape = 0; shape < maskShapeCount; ++shape) {
        EXPECT_EQ(blackShare(wipeMask(shape, 1)), 0) << shape;
        EXPECT_EQ(blackShare(wipeMask(shape, 1.5)), 0) << shape;
        // The staircase has 16 steps, the first outside: it leaves the last cell.
        const bool isStaircase = shape == static_cast<int>(MaskShape::DiagonalSquares);
        const double missing = isStaircase ? 1 / 64.0 : 0;
        EXPECT_NEAR(blackShare(wipeMask(shape, 0)), 1 - missing, 1e-6) << shape;
        EXPECT_NEAR(blackShare(wipeMask(shape, -0.5)), 1 - missing, 1e-6) << shape;
    }
}

TEST(TransitionMask, TakesOddSizesAndRefusesWhatIsNoShape)
{
    for (int shape = 0; shape < maskShapeCount; ++shape) {
        const double share = blackShare(wipeMask(shape, 0.5, {37, 23}));
        EXPECT_GT(share, 0.1) << shape;
        EXPECT_LT(share, 0.9) << shape;
    }
    EXPECT_EQ(blackShare(wipeMask(-1, 0.5)), 0);
    EXPECT_EQ(blackShare(wipeMask(maskShapeCount, 0.5)), 0);
    TransitionMask painter;
    QImage mask(8, 8, QImage::Format_ARGB32);
    mask.fill(Qt::magenta);
    for (const quint32 kind : {0U, 13U, 18U, 22U, 4000U})
        EXPECT_FALSE(painter.paintTransition(kind, 0.5, mask)) << kind;
    EXPECT_EQ(mask.pixelColor(4, 4), QColor(Qt::magenta));
}

} // namespace
} // namespace tavlo
