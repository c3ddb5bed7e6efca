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

/// The rows of the bars that the C library's own generator picks.
std::vector<bool> remainingRows(double position)
{
    std::vector<std::pair<int, int>> bars; // from row to row
    for (int y = 0, i = 0; y < side; ++i) {
        std::srand(i);
        const int begin = std::exchange(y, y + std::rand() % (side / 32));
        bars.emplace_back(begin, std::min(y, side));
    }
    std::vector<bool> rows(side, false);
    const int count = int(double(bars.size()) * (1 - position));
    for (int s = 0; s < count; ++s) {
        std::srand(s);
        const auto bar = bars.begin() + std::rand() % int(bars.size());
        std::fill(rows.begin() + bar->first, rows.begin() + bar->second, true);
        bars.erase(bar);
    }
    return rows;
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
        EXPECT_NEAR(blackShare(transitionMask(17, p)), 1 - p, 1e-3);
        EXPECT_NEAR(blackShare(wipeMask(7, p)), 1 - p, 1e-3);
    }
    EXPECT_NEAR(blackShare(transitionMask(20, 0.25)), 0.75, 1e-3);
    EXPECT_NEAR(blackShare(wipeMask(8, 0.5)), 0.5, 1e-3);
    EXPECT_NEAR(blackShare(wipeMask(2, 0.5)), M_PI / 8, 1e-3); // half the width and height, times the root of two
    EXPECT_NEAR(blackShare(transitionMask(14, 0.5)), 21 / 64.0, 1e-6); // eight steps, the outer ones outside
}

TEST(TransitionMask, PutsTheShapesWhereTheyBelong)
{
    struct Pixel
    {
        int x, y, black;
    };
    const auto expectAt = [](const QImage& mask, const char* shape, std::initializer_list<Pixel> pixels) {
        for (const Pixel& pixel : pixels)
            EXPECT_EQ(blackAt(mask, pixel.x, pixel.y), pixel.black) << shape << " " << pixel.x << " " << pixel.y;
    };
    expectAt(transitionMask(11, 0.5), "box", {{256, 130, 1}, {256, 126, 0}, {130, 256, 1}});
    // Cells of 102.4 by 51.2; the right half of each is left, and odd rows stand half a cell to the left.
    expectAt(transitionMask(12, 0.5), "checkers",
             {{30, 20, 0}, {80, 20, 1}, {30, 70, 1}, {80, 70, 0}, {480, 70, 0}, {440, 70, 1}});
    expectAt(transitionMask(14, 0.75), "four steps",
             {{511, 511, 1}, {400, 500, 1}, {380, 500, 0}, {400, 440, 0}, {500, 440, 1}});
    expectAt(transitionMask(17, 0.5), "split", {{0, 126, 0}, {0, 130, 1}, {511, 380, 1}});
    expectAt(wipeMask(7, 0.5), "blinds", {{100, 20, 0}, {100, 90, 1}});
    expectAt(transitionMask(20, 0.75), "a quarter, from the top anticlockwise",
             {{5, 5, 1}, {250, 10, 1}, {262, 10, 0}, {10, 262, 0}});
}

TEST(TransitionMask, PicksTheCellsAndBarsOfTheCLibrarysNumbers)
{
    for (const double p : {0.1, 0.4, 0.7}) {
        const QImage mask = transitionMask(15, p);
        for (int row = 0; row < 8; ++row) {
            std::srand(row);
            std::vector<int> cells{0, 1, 2, 3, 4, 5, 6, 7};
            for (int pick = 0; pick < int((1 - p) * 8); ++pick)
                cells.erase(cells.begin() + std::rand() % int(cells.size()));
            for (int column = 0; column < 8; ++column)
                EXPECT_EQ(blackAt(mask, column * 64 + 32, row * 64 + 32),
                          std::count(cells.begin(), cells.end(), column) ? 0 : 1)
                    << row << " " << column;
        }
        const QImage bars = transitionMask(16, p);
        const std::vector<bool> rows = remainingRows(p);
        for (int y = 0; y < side; ++y)
            ASSERT_EQ(blackAt(bars, 300, y), rows[y]) << "row " << y;
    }
}

TEST(TransitionMask, LeavesNoSeamsAtTheBeginningAndNothingAtTheEnd)
{
    for (int shape = 0; shape < maskShapeCount; ++shape) {
        for (const double end : {1.0, 1.5})
            EXPECT_EQ(blackShare(wipeMask(shape, end)), 0) << shape;
        // The staircase has 16 steps, the first outside: it leaves the last cell.
        const double whole = shape == int(MaskShape::DiagonalSquares) ? 1 - 1 / 64.0 : 1;
        for (const double beginning : {0.0, -0.5})
            EXPECT_NEAR(blackShare(wipeMask(shape, beginning)), whole, 1e-6) << shape;
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
