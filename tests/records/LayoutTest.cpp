#include <tavlo/TavloPresentUtil.h>
#include <tavlo/records/LyricRecords.h>
#include <tavlo/records/ShowRecords.h>

#include <gtest/gtest.h>

#include <set>

namespace {

constexpr quint32 everything = 31;

void expectRect(const QRectF& rect, double x, double y, double width, double height)
{
    EXPECT_NEAR(rect.x(), x, 1e-3);
    EXPECT_NEAR(rect.y(), y, 1e-3);
    EXPECT_NEAR(rect.width(), width, 1e-3);
    EXPECT_NEAR(rect.height(), height, 1e-3);
}

} // namespace

TEST(LayoutTest, GridBelowTwoMonitors)
{
    tagTavloPresentViewLayoutInfo info;
    const int rows = TavloPresentUtil::computePresentViewLayoutInfo(TavloPresentViewLayoutTypeGrid, 8, {1920, 1080},
                                                                    info, everything);
    EXPECT_EQ(rows, 2);
    EXPECT_EQ(info.size, QSizeF(1920, 1080));
    expectRect(info.pvmRect, 0, 0, 768, 436.8);
    expectRect(info.pgmRect, 768, 0, 768, 436.8);
    expectRect(info.paneRects[0], 0, 436.8, 384, 321.6);
    expectRect(info.paneRects[5], 384, 758.4, 384, 321.6);
    EXPECT_TRUE(info.paneRects[8].isNull());
    expectRect(info.sideRect, 1536, 0, 384, 1080);
    expectRect(info.lowerRect, 384, 436.8, 1152, 643.2);
}

TEST(LayoutTest, NarrowDividesThePanesOnceMore)
{
    tagTavloPresentViewLayoutInfo info;
    TavloPresentUtil::computePresentViewLayoutInfo(TavloPresentViewLayoutTypeNarrow, 8, {1920, 1080}, info, everything);
    expectRect(info.paneRects[5], 96, 758.4, 96, 321.6);
    expectRect(info.lowerRect, 384, 436.8, 1152, 643.2);

    EXPECT_EQ(TavloPresentUtil::computePresentViewLayoutInfo(TavloPresentViewLayoutTypeNarrow, 12, {1920, 1080}, info,
                                                             everything),
              6);
    expectRect(info.paneRects[11], 192, 436.8 + 5 * 107.2, 192, 107.2);
    expectRect(info.lowerRect, 384, 436.8, 1152, 643.2);
}

TEST(LayoutTest, FlagsLeaveTheOthers)
{
    tagTavloPresentViewLayoutInfo info;
    TavloPresentUtil::computePresentViewLayoutInfo(TavloPresentViewLayoutTypeGridPlain, 4, {1920, 1080}, info,
                                                   TavloPresentViewLayoutFlagPgm);
    EXPECT_TRUE(info.pvmRect.isNull() && info.paneRects[0].isNull() && info.sideRect.isNull() &&
                info.lowerRect.isNull());
    expectRect(info.pgmRect, 768, 0, 768, 436.8);

    const tagTavloPresentViewLayoutInfo before = info;
    EXPECT_EQ(TavloPresentUtil::computePresentViewLayoutInfo(TavloPresentViewLayoutTypeSingle, 4, {640, 480}, info, 0),
              0);
    expectRect(info.pgmRect, 0, 0, 639, 479);
    EXPECT_EQ(info.pvmRect, before.pvmRect);
}

TEST(LayoutTest, ColumnsWithThreeLargePanes)
{
    tagTavloPresentViewLayoutInfo info;
    const int last =
        TavloPresentUtil::computePresentViewLayoutInfo(TavloPresentViewLayoutTypeColumns, 14, {1920, 1080}, info, 0);
    EXPECT_EQ(last, 13); // 12 small panes in 3 rows and 4 + 2 columns
    expectRect(info.topRects[3], 1440, 0, 480, 270);
    expectRect(info.paneRects[0], 0, 270, 320, 270);
    expectRect(info.paneRects[4], 320, 540, 320, 270);
    expectRect(info.paneRects[11], 960, 810, 320, 270);
    expectRect(info.pvmRect, 1280, 270, 640, 270);
    expectRect(info.paneRects[12], 1280, 540, 640, 270);
    expectRect(info.paneRects[13], 1280, 810, 640, 270);
}

TEST(LayoutTest, BearsAnyCount)
{
    tagTavloPresentViewLayoutInfo info;
    for (const int count : {-5, 0, 1, 2, 37, 38, 39, 100000}) {
        for (int type = -1; type <= 5; ++type) {
            TavloPresentUtil::computePresentViewLayoutInfo(static_cast<TavloPresentViewLayoutType>(type), count,
                                                           {1920, 1080}, info, everything);
        }
    }
    EXPECT_EQ(
        TavloPresentUtil::computePresentViewLayoutInfo(TavloPresentViewLayoutTypeColumns, 38, {1920, 1080}, info, 0),
        37);
    int rows = 0;
    int columns = 0;
    TavloPresentUtil::prefetchGridNum(5, rows, columns);
    EXPECT_EQ(rows * 10 + columns, 11);
    TavloPresentUtil::prefetchGridNum(6, rows, columns);
    EXPECT_EQ(rows * 10 + columns, 32);
    EXPECT_EQ(TavloPresentUtil::getGridLineWidth({1920, 1080}), 4.0F);
    EXPECT_EQ(TavloPresentUtil::getGridLineWidth({480, 270}), 2.0F);
}

TEST(PathStringTest, NamesChannels)
{
    EXPECT_EQ(TavloPresentUtil::toPathString(11), QStringLiteral("TCH-S-11"));
    EXPECT_EQ(TavloPresentUtil::toPathString(12), QString());
    EXPECT_EQ(TavloPresentUtil::toPathString(TavloPresentChannelIDPVM), QStringLiteral("PVM"));
    EXPECT_EQ(TavloPresentUtil::fromPathString(QStringLiteral("TCH-S-63")), 63U);
    EXPECT_EQ(TavloPresentUtil::fromPathString(QStringLiteral("TCH-TCH-S-7")), 7U) << "every prefix goes";
    for (const char* unknown : {"TCH-PGM", "TCH-S-64", "TCH-S-07", "TCH-"})
        EXPECT_EQ(TavloPresentUtil::fromPathString(QLatin1String(unknown)), 0U) << unknown;
    for (const char* none : {"PGM", "", "S-3", "tch-S-3"})
        EXPECT_EQ(TavloPresentUtil::fromPathString(QLatin1String(none)), 65535U) << none;
}

TEST(PresetTest, TextStyles)
{
    const auto preset = [](quint32 number) {
        tagTavloShowTextStyle style;
        style.solidColor = style.outlineColor = 0x12345678;
        style.fillType = 9;
        TavloPresentUtil::loadTextStylePreset(number, style);
        return style;
    };
    EXPECT_EQ(preset(3).solidColor, 0xFFFF0000);
    EXPECT_EQ(preset(3).outlineColor, 0U);
    EXPECT_EQ(preset(3).fillType, 0U);
    EXPECT_EQ(preset(7).solidColor, 0xFF000000);
    EXPECT_EQ(preset(7).shadowColor, 0xFFA0A0A4);
    EXPECT_EQ(preset(7).shadowDistance, QPoint(2, -2));
    EXPECT_EQ(preset(7).outlineColor, 0x12345678U) << "as it was";
    EXPECT_EQ(preset(12).outlineColor, 0xFFFFFFFF);
    EXPECT_EQ(preset(13).outlineColor, 0xFF000000);
    EXPECT_EQ(preset(13).outlineSize, 2U);
    EXPECT_EQ(preset(20).solidColor, 0x12345678U) << "as it was";
    EXPECT_EQ(preset(20).outlineColor, 0xFF0000FF);
    EXPECT_EQ(preset(20).outlineSize, 12U);
    EXPECT_EQ(preset(26).gradientBeginColor, 0xFFFFFF00);
    EXPECT_EQ(preset(26).gradientEndColor, 0xFFFFFFFF);
    EXPECT_EQ(preset(21).gradientBeginColor, 0xFF000000);
    EXPECT_EQ(preset(30).texPath, QStringLiteral("VT004.tga"));
    EXPECT_EQ(preset(30).fillType, 2U);
    for (const quint32 none : {0U, 31U, ~0U})
        EXPECT_EQ(preset(none).fillType, 9U);
}

TEST(PresetTest, LyricColours)
{
    std::set<quint32> played;
    for (quint32 number = 1; number <= 11; ++number) {
        tagTavloMusicLRCStyle style;
        style.shadowColor = 5;
        TavloPresentUtil::loadMusicLRCStylePresent(number, style);
        for (const quint32 color : {style.noPlayUpColor, style.noPlayMidColor, style.noPlayDownColor,
                                    style.playedUpColor, style.playedMidColor, style.playedDownColor})
            EXPECT_EQ(color >> 24, 255U) << number;
        EXPECT_NE(style.noPlayMidColor, style.playedMidColor) << number;
        EXPECT_EQ(style.shadowColor, 5U);
        played.insert(style.playedMidColor);
    }
    EXPECT_EQ(played.size(), 11U);
    tagTavloMusicLRCStyle style;
    TavloPresentUtil::loadMusicLRCStylePresent(12, style);
    EXPECT_TRUE(style == tagTavloMusicLRCStyle());
}
