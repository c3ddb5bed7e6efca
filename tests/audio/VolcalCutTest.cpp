#include "audio/TavloAudioFilterVolcalCut.h"

#include "audio/AudioSupport.h"
#include "support/reference/SoundFilters.h"

#include <tavlo/TavloPresentUtil.h>

#include <gtest/gtest.h>

#include <cmath>

namespace tavlo::test {
namespace {

constexpr double rate = 48000.0;

TEST(VolcalCut, BothFormsFollowTheirFormulas)
{
    const auto in = stereo(noise(20000, 0.7F, 3), noise(20000, 0.4F, 8));
    for (const double pan : {-0.6, 0.0, 0.3}) {
        for (const double level : {-1.0, -0.35, 0.0}) {
            for (const int band : {0, 1}) {
                TavloAudioFilterVolcalCut filter;
                tagTavloAudioEffectParam param;
                param.processVolcalCut = {2, pan, level, band, 900, 0.7};
                const auto expected = vocalCutReference(in, param.processVolcalCut, rate);
                EXPECT_LT(distance(run(filter, param, in, 2, 48000), expected), 1e-6)
                    << pan << " " << level << " " << band;
            }
        }
    }
}

TEST(VolcalCut, PresetsCutWhatTheyPromise)
{
    const auto voice = sine(700, rate, 24000, 0.5);
    const auto centred = stereo(voice, voice);
    tagTavloAudioEffectParam param;
    const auto after = [&](TavloAudioVocalCutPreset preset) {
        TavloAudioFilterVolcalCut filter;
        TavloPresentUtil::loadAudioVolcalCutPreset(preset, param.processVolcalCut);
        return run(filter, param, centred, 2, 48000);
    };
    EXPECT_EQ(after(1), centred);
    EXPECT_EQ(after(2), std::vector<float>(centred.size(), 0.0F));
    const auto inBand = channel(after(3), 0, 2);
    EXPECT_LT(loudness(inBand, 12000, 24000), loudness(channel(centred, 0, 2), 12000, 24000) - 10.0);
}

TEST(VolcalCut, FurtherChannelsStayAndOddBandsDoNotPoison)
{
    TavloAudioFilterVolcalCut filter;
    tagTavloAudioEffectParam param;
    param.processVolcalCut = {3, 0.0, -1.0, 1, -5, 0.0};
    const auto in = noise(3 * 480, 0.5F);
    const auto out = run(filter, param, in, 3, 48000);
    for (size_t i = 0; i < out.size(); ++i) {
        ASSERT_TRUE(std::isfinite(out[i])) << i;
        ASSERT_TRUE(i % 3 != 2 || out[i] == in[i]) << i;
    }
}

} // namespace
} // namespace tavlo::test
