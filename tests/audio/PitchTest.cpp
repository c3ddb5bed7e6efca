#include "audio/TavloAudioFilterPitch.h"

#include "audio/AudioSupport.h"
#include "support/reference/SoundFilters.h"

#include <tavlo/TavloPresentUtil.h>

#include <gtest/gtest.h>

#include <cmath>

namespace tavlo::test {
namespace {

constexpr int rate = 48000;

tagTavloAudioEffectParam presetParam(TavloAudioChangePreset preset)
{
    tagTavloAudioEffectParam param;
    TavloPresentUtil::loadAudioChangePreset(preset, param);
    return param;
}

void expectReference(const tagTavloAudioEffectParam& param)
{
    const auto in = stereo(sine(331, rate, 48000, 0.4), noise(48000, 0.3F));
    TavloAudioFilterPitch filter;
    const auto out = run(filter, param, in, 2, rate);
    EXPECT_LT(distance(out, pitchReference(in, param.processPitch, rate)), 1e-5);
}

// With a crossfade of half the window there is one jump to choose from, and the formulas tell every sample.
TEST(Pitch, FollowsItsFormulas)
{
    for (TavloAudioChangePreset preset = 1; preset <= 5; ++preset) {
        SCOPED_TRACE(preset);
        auto param = presetParam(preset);
        param.processPitch.overlapSizeMsValue = 25.0;
        expectReference(param);
    }
    auto param = presetParam(2); // other windows, a dry share, no filter, a crossfade longer than half the window
    param.processPitch = {37.0, -1.0, 0.0, 30.0, 40.0, -3.0, -9.0, 0.0};
    expectReference(param);
    param.processPitch = {0.0, 0.0, 0.0, 50.0, 20.0, 0.0, -120.0, 1.0}; // a ratio of exactly 1 is half a window's delay
    expectReference(param);
}

TEST(Pitch, TonesComeOutInTuneSteadyAndWithoutClicks)
{
    constexpr double shifts[]{-8, -4, 3, 6, 12}; // semitones
    for (TavloAudioChangePreset preset = 1; preset <= 5; ++preset) {
        for (const double frequency : {110.0, 440.0, 445.0, 997.0}) {
            SCOPED_TRACE(testing::Message() << "preset " << preset << " at " << frequency);
            const double shifted = frequency * std::exp2(shifts[preset - 1] / 12);
            TavloAudioFilterPitch filter;
            const auto tone = sine(frequency, rate, 3 * rate, 0.5);
            const auto nothing = std::vector<float>(tone.size(), 0.0F);
            const auto out = channel(run(filter, presetParam(preset), stereo(nothing, tone), 2, rate), 1, 2);
            EXPECT_LT(std::abs(1200 * std::log2(countedFrequency(out, rate / 2, out.size(), rate) / shifted)), 0.1);
            EXPECT_LT(clicks(out, shifted, rate, rate / 2), -50.0);
            // Two places of the ring that are out of phase would cancel in the middle of a fade.
            for (size_t i = rate / 2; i + 2400 <= out.size(); i += 2400)
                ASSERT_NEAR(loudness(out, i, i + 2400), -9.03, 0.5);
        }
    }
}

TEST(Pitch, OddValuesStayInsideTheRing)
{
    TavloAudioFilterPitch filter;
    auto param = presetParam(1);
    const double nan = std::nan("");
    using Values = tagTavloAudioProcessParamPitch;
    for (const Values& values : {Values{}, Values{0, 0, 40, 0.01, 5000, 0, 0, 1}, Values{0, 0, -40, 1e9, 1e9, 0, 0, 1},
                                 Values{nan, nan, nan, nan, nan, nan, nan, nan}, Values{0, 7, 0, -4, -9, 0, 0, 1}}) {
        param.processPitch = values;
        for (const int odd : {8000, 192000, 1}) {
            for (const float s : run(filter, param, noise(9600, 0.5F), 2, odd))
                ASSERT_TRUE(std::isfinite(s));
        }
    }
}

TEST(Pitch, AWindowAboveASecondActsAsASecond)
{
    const auto in = noise(2 * 60000, 0.4F);
    auto param = presetParam(4);
    TavloAudioFilterPitch longest, beyond;
    param.processPitch.windowSizeMsValue = 1000;
    const auto expected = run(longest, param, in, 2, rate);
    param.processPitch.windowSizeMsValue = 4000;
    EXPECT_EQ(run(beyond, param, in, 2, rate), expected);
}

} // namespace
} // namespace tavlo::test
