#include "audio/TavloAudioFilterEqualizer.h"

#include "audio/AudioSupport.h"
#include "support/reference/SoundFilters.h"

#include <tavlo/TavloPresentUtil.h>

#include <gtest/gtest.h>

#include <cmath>

namespace tavlo::test {
namespace {

std::vector<float> impulseOf(const tagTavloAudioEffectParam& param, int rate, size_t count)
{
    TavloAudioFilterEqualizer filter;
    std::vector<float> impulse(count, 0.0F);
    impulse[0] = 1.0F;
    return run(filter, param, impulse, 1, rate);
}

TEST(Equalizer, EveryPresetFollowsItsFormulas)
{
    for (const int rate : {48000, 44100, 16000}) { // at the last one bands lie above half the rate
        for (TavloAudioChangePreset preset = 9; preset <= 24; ++preset) {
            tagTavloAudioEffectParam param;
            TavloPresentUtil::loadAudioEQPreset(preset, param);
            const auto impulse = impulseOf(param, rate, 32768);
            EXPECT_LT(distance(impulse, equalizerReference(param.equalizer, rate, impulse.size())), 1e-6) << preset;
        }
    }
}

// A lone band passes its centre with exactly its own gain.
TEST(Equalizer, EachBandReachesItsGainAtItsCentre)
{
    for (size_t b = 0; b < 10; ++b) {
        tagTavloAudioEffectParam param;
        param.preset = 9;
        param.equalizer.bands = 10;
        param.equalizer.gains[b] = 12.0;
        const auto impulse = impulseOf(param, 48000, 32768);
        EXPECT_NEAR(response(impulse, equalizerCentres[b], 48000), 0.25 * factor(12.0), 1e-3) << b;
    }
}

TEST(Equalizer, LimitsOfGainsPreampAndBands)
{
    tagTavloAudioEffectParam param;
    param.preset = 24;
    param.equalizer = {{30, -40, 20, -20, 5, 5, 5, 5, 5, 5}, 25.0, 4};
    const auto limited = impulseOf(param, 48000, 4096);
    param.equalizer = {{20, -20, 20, -20}, 20.0, 10};
    EXPECT_EQ(limited, impulseOf(param, 48000, 4096));
    EXPECT_NEAR(limited[0], 2.5, 1.0); // a preamp of 20 dB is a factor of 10
    param.equalizer = {{}, -50.0, -3};
    EXPECT_FLOAT_EQ(impulseOf(param, 48000, 16)[0], 0.025F);
    param.equalizer = {{std::nan("")}, std::nan(""), 10};
    EXPECT_FLOAT_EQ(impulseOf(param, 48000, 16)[0], 0.25F);
}

TEST(Equalizer, GainsNeedNoReset)
{
    tagTavloAudioEffectParam param;
    TavloPresentUtil::loadAudioEQPreset(12, param);
    TavloAudioFilterEqualizer filter;
    const std::vector<float> tone = sine(1000, 48000, 4800, 0.1);
    run(filter, param, tone, 1, 48000);
    param.equalizer = {{}, 0.0, 10};
    EXPECT_FLOAT_EQ(run(filter, param, tone, 1, 48000)[4799], tone[4799] * 0.25F);
}

TEST(Equalizer, ChannelsDoNotMeet)
{
    tagTavloAudioEffectParam param;
    TavloPresentUtil::loadAudioEQPreset(17, param);
    TavloAudioFilterEqualizer both, alone;
    const auto left = noise(4800, 0.2F, 1), right = noise(4800, 0.2F, 2);
    const auto out = run(both, param, stereo(left, right), 2, 48000);
    EXPECT_LT(distance(run(alone, param, right, 1, 48000), channel(out, 1, 2)), 1e-9);
}

} // namespace
} // namespace tavlo::test
