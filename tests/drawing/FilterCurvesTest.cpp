#include "drawing/FilterCurves.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace tavlo {
namespace {

class FilterCurve : public testing::TestWithParam<int>
{
protected:
    /// What a channel's curve makes of a value.
    int at(int row, int channel, int value) const { return _pixels[size_t((row * 256 + value) * 4 + channel)]; }

    std::vector<quint8> _pixels = makeFilterCurve(GetParam());
    int _rows = filterCurveRows(GetParam());
};

TEST_P(FilterCurve, RisesWithoutAJumpInEveryChannelOfEveryRow)
{
    ASSERT_EQ(_pixels.size(), size_t(_rows) * 256 * 4);
    for (int row = 0; row < _rows; ++row) {
        for (const int channel : {0, 1, 2}) {
            for (int value = 1; value < 256; ++value) {
                const int step = at(row, channel, value) - at(row, channel, value - 1);
                ASSERT_TRUE(step >= 0 && step <= 4) << "row " << row << ", channel " << channel << ", value " << value;
            }
            EXPECT_LE(at(row, channel, 0), 80) << "black stays dark";
            EXPECT_GE(at(row, channel, 255), 200) << "white stays light";
        }
    }
}

INSTANTIATE_TEST_SUITE_P(AllSlots, FilterCurve, testing::Range(firstFilterCurveSlot, lastFilterCurveSlot + 1),
                         [](const auto& slot) { return "Slot" + std::to_string(slot.param); });

TEST(FilterCurves, OtherSlotsHoldNone)
{
    for (const int slot : {-1, firstFilterCurveSlot - 1, lastFilterCurveSlot + 1}) {
        EXPECT_EQ(filterCurveRows(slot), 0) << slot;
        EXPECT_TRUE(makeFilterCurve(slot).empty()) << slot;
    }
}

TEST(FilterCurves, GoThroughTheirPointsAndSmoothlyBetween)
{
    // Sunrise, row 0 red: (0, 6) (64, 82) (128, 168) (192, 234) (255, 255). Exact at the points; between the first two
    // a cubic of slope 76/64 at the first and the mean of 76/64 and 86/64 at the second.
    const auto pixels = makeFilterCurve(38);
    // between them: (6 + 82) / 2 + 64 / 8 * (76/64 - 81/64) = 43.375 at 32, and 62.3 at 48 by the same cubic
    const std::map<size_t, int> points{{0, 6}, {32, 43}, {48, 62}, {64, 82}, {128, 168}, {192, 234}, {255, 255}};
    for (const auto& [value, curved] : points)
        EXPECT_EQ(pixels[value * 4], curved) << value;
}

} // namespace
} // namespace tavlo
