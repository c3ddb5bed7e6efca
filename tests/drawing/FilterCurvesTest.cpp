#include "drawing/FilterCurves.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace tavlo {
namespace {

constexpr int red = 0;
constexpr int green = 1;
constexpr int blue = 2;
constexpr int alpha = 3;

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
        for (const int channel : {red, green, blue}) {
            for (int value = 1; value < 256; ++value) {
                const int step = at(row, channel, value) - at(row, channel, value - 1);
                ASSERT_GE(step, 0) << "row " << row << ", channel " << channel << ", value " << value;
                ASSERT_LE(step, 4) << "row " << row << ", channel " << channel << ", value " << value;
            }
            EXPECT_LE(at(row, channel, 0), 80) << "black stays dark";
            EXPECT_GE(at(row, channel, 255), 200) << "white stays light";
        }
    }
}

TEST_P(FilterCurve, ChangesThePictureInItsFirstRow)
{
    int change = 0;
    for (int value = 0; value < 256; ++value)
        change = std::max(change, std::abs(at(0, red, value) - value));
    EXPECT_GE(change, 4);
}

INSTANTIATE_TEST_SUITE_P(AllSlots, FilterCurve, testing::Range(firstFilterCurveSlot, lastFilterCurveSlot + 1),
                         [](const auto& slot) { return "Slot" + std::to_string(slot.param); });

TEST(FilterCurves, RowsFollowTheFiltersAndOtherSlotsHoldNone)
{
    const std::map<int, int> rows{{37, 0}, {38, 2}, {39, 2}, {40, 1}, {41, 1}, {42, 1}, {43, 2},
                                  {44, 2}, {45, 3}, {46, 2}, {47, 2}, {48, 0}, {-1, 0}};
    for (const auto& [slot, count] : rows) {
        EXPECT_EQ(filterCurveRows(slot), count) << slot;
        EXPECT_EQ(makeFilterCurve(slot).size(), size_t(count) * 256 * 4) << slot;
    }
}

TEST(FilterCurves, AlphaIsOpaqueButForTheSunsetsSecondCurve)
{
    constexpr int sunset = 39;
    for (int slot = firstFilterCurveSlot; slot <= lastFilterCurveSlot; ++slot) {
        const auto pixels = makeFilterCurve(slot);
        bool opaque = true;
        for (size_t i = alpha; i < pixels.size(); i += 4)
            opaque = opaque && pixels[i] == 255;
        EXPECT_EQ(opaque, slot != sunset) << slot;
    }
    // The second curve takes light away, most from the middle, and goes from black to near white.
    const auto pixels = makeFilterCurve(sunset);
    EXPECT_EQ(pixels[alpha], 0);
    EXPECT_EQ(pixels[128 * 4 + alpha], 106);
    EXPECT_EQ(pixels[255 * 4 + alpha], 250);
}

TEST(FilterCurves, GoThroughTheirPointsAndSmoothlyBetween)
{
    // Sunrise, row 0 red: (0, 6) (64, 82) (128, 168) (192, 234) (255, 255). Exact at the points; between the first two
    // a cubic of slope 76/64 at the first and the mean of 76/64 and 86/64 at the second.
    const auto pixels = makeFilterCurve(38);
    const auto redAt = [&pixels](int value) { return int{pixels[size_t(value) * 4]}; };
    EXPECT_EQ(redAt(0), 6);
    EXPECT_EQ(redAt(64), 82);
    EXPECT_EQ(redAt(128), 168);
    EXPECT_EQ(redAt(192), 234);
    EXPECT_EQ(redAt(255), 255);
    EXPECT_EQ(redAt(32), 43); // (6 + 82) / 2 + 64 / 8 * (76/64 - 81/64) = 43.375
    EXPECT_EQ(redAt(48), 62); // 62.3 by the same cubic
}

TEST(FilterCurves, ChannelsStandInTheOrderRedGreenBlue)
{
    // Looks that warm end with less blue than red in the lights, cold ones the other way round.
    const auto lights = [](int slot, int row, int channel) {
        return int{makeFilterCurve(slot)[size_t((row * 256 + 192) * 4 + channel)]};
    };
    for (const int warm : {39, 43, 44})
        EXPECT_GT(lights(warm, 0, red), lights(warm, 0, blue) + 30) << warm;
    EXPECT_GT(lights(47, 1, blue), lights(47, 1, red) + 30);
}

} // namespace
} // namespace tavlo
