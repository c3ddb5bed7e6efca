#include "drawing/FilterTable.h"
#include "drawing/PictureChroma.h"
#include "support/DrawStage.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

namespace tavlo {
namespace {

constexpr QSize size{37, 23};

/// One device for all tests of the file: compiling the effects takes longer than drawing.
DrawStage& stage()
{
    static DrawStage one;
    return one;
}

/// A picture of the figures that resources/generate/figures.py has computed: 0 and 1 are drawn, 1 + n is filter n's.
QImage figure(int number)
{
    static const QImage all = QImage(QStringLiteral(TAVLO_FILTER_FIGURES)).convertToFormat(QImage::Format_RGBA8888);
    return all.copy(0, number * size.height(), size.width(), size.height());
}

QImage drawn(quint32 type, const QImage& picture, const QImage& below, bool flip = false, Rows rows = Rows::TopFirst)
{
    TavloDrawDX11* const target = stage().target(size, rows);
    target->drawFilter(type, stage().upload(picture), stage().upload(below), picture.size(), flip, false);
    return stage().readBack();
}

/// Whether two pictures are the same. A value that lies between two texels of a table may become either one's: a few
/// pixels may be a little further off.
testing::AssertionResult isNear(const QImage& is, const QImage& should, int tolerance, int further)
{
    if (is.size() != should.size())
        return testing::AssertionFailure() << "another size";
    int off = 0;
    auto failure = testing::AssertionFailure();
    for (int y = 0; y < is.height(); ++y) {
        for (int x = 0; x < is.width() * 4; ++x) {
            const int got = is.constScanLine(y)[x], wanted = should.constScanLine(y)[x];
            if (std::abs(got - wanted) > further)
                return failure << x / 4 << ", " << y << " channel " << x % 4 << ": " << got << ", not " << wanted;
            off += std::abs(got - wanted) > tolerance;
        }
    }
    if (off > is.width() * is.height() * 4 / 50)
        return failure << off << " values are off";
    return testing::AssertionSuccess();
}

class FilterGL : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(stage().fault(), QString());
        ASSERT_EQ(figure(22 + 1).size(), size);
        ASSERT_NE(figure(0), figure(1));
    }
};

class EachFilterGL : public FilterGL, public testing::WithParamInterface<quint32>
{};

TEST_P(EachFilterGL, DrawsItsLook)
{
    const quint32 type = GetParam();
    const QImage look = drawn(type, figure(0), figure(1));
    EXPECT_TRUE(isNear(look, figure(static_cast<int>(type) + 1), 1, 4));
    // Pictures are turned over where they are read; lights and weights stay. The middle column lies between two texels.
    EXPECT_TRUE(isNear(drawn(type, figure(0).mirrored(), figure(1).mirrored(), true), look, 0, 4));
    EXPECT_TRUE(isNear(drawn(type, figure(0), figure(1), false, Rows::BottomFirst).mirrored(), look, 0, 4));
}

INSTANTIATE_TEST_SUITE_P(All, EachFilterGL, testing::Range(1U, 23U),
                         [](const auto& type) { return std::string(findFilter(type.param)->name); });

TEST_F(FilterGL, DrawsThePictureAsItIsWithoutAFilter)
{
    stage().target(size)->drawPicture(chromaRgba, stage().upload(figure(0)), size, {}, nullptr, true, false, false);
    const QImage plain = stage().readBack();
    for (const quint32 type : {0U, 23U, 0x80000000U, 0xffffffffU})
        EXPECT_EQ(drawn(type, figure(0), figure(1)), plain) << type;
}

TEST_F(FilterGL, DrawsMissingPicturesAsNothing)
{
    QImage nothing(size, QImage::Format_RGBA8888);
    nothing.fill(Qt::transparent);
    const graphics::TexturePtr picture = stage().upload(figure(0));
    for (const auto& [type, first] : {std::pair(TavloPresentPictureFilterType_ScreenBlend, picture),
                                      {TavloPresentPictureFilterType_COOL, nullptr}}) {
        drawn(TavloPresentPictureFilterType_COOL, figure(0), figure(1));
        stage().target(size)->drawFilter(type, first, nullptr, size, false, false);
        EXPECT_EQ(stage().readBack(), nothing) << type;
    }
}

/// A picture lower than its target lies in the middle, over the clear colour.
TEST_F(FilterGL, FitsThePictureIntoAClearedTarget)
{
    constexpr QSize tall{37, 47};
    constexpr std::array<double, 4> behind{51, 102, 153, 204};
    TavloDrawDX11& target = *stage().target(tall);
    target.clear({1, 1, 1, 1});
    target.clearColor = {0.2F, 0.4F, 0.6F, 0.8F};
    target.drawFilter(TavloPresentPictureFilterType_INKWELL, stage().upload(figure(0)), nullptr, size, false, false);
    target.clearColor = {};
    const QImage frame = stage().readBack();
    QImage look(tall, QImage::Format_RGBA8888); // with nothing above and below
    look.fill(Qt::transparent);
    std::copy_n(figure(TavloPresentPictureFilterType_INKWELL + 1).constBits(), figure(0).sizeInBytes(),
                look.scanLine(12));
    for (int y = 0; y < tall.height(); ++y) {
        for (int x = 0; x < tall.width(); ++x) {
            const uchar *const is = frame.constScanLine(y) + x * 4, *const shown = look.constScanLine(y) + x * 4;
            const double kept = 1 - std::sqrt(shown[3] / 255.0); // of what lies behind
            for (std::size_t c = 0; c < 3; ++c)
                ASSERT_NEAR(is[c], shown[c] + behind[c] * kept, 3) << x << ", " << y;
            const double uncovered = kept < 1 ? behind[3] / 255 : 1; // drawn alpha adds up in squares
            ASSERT_NEAR(is[3], std::min(255.0, shown[3] + behind[3] * uncovered), 2) << x << ", " << y;
        }
    }
}

} // namespace
} // namespace tavlo
