#include "audio/TavloAudioFilterDelay.h"

#include "audio/AudioSupport.h"
#include "support/reference/SoundFilters.h"

#include <tavlo/TavloPresentUtil.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace tavlo::test {
namespace {

constexpr int rate = 8000;

tagTavloAudioEffectParam delayParam(double milliseconds, double resample)
{
    tagTavloAudioEffectParam param;
    param.preset = 6;
    param.processDelay = {milliseconds, -600.0, 0.0, 0.0, -600.0, resample}; // stores as it is, plays the store alone
    return param;
}

/// Left counts up from 0.001 to just below 1, right counts down: each frame can be told from every other.
std::vector<float> countingFrames(size_t frames)
{
    std::vector<float> samples;
    for (size_t i = 0; i < frames; ++i) {
        const float left = float(i + 1) / float(frames + 1);
        samples.insert(samples.end(), {left, 1.0F - 0.5F * left});
    }
    return samples;
}

TEST(Delay, EchoesFollowThePresets)
{
    for (TavloAudioChangePreset preset = 6; preset <= 8; ++preset) {
        TavloAudioFilterDelay filter;
        tagTavloAudioEffectParam param;
        TavloPresentUtil::loadAudioChangePreset(preset, param);
        std::vector<float> in(2 * 4 * 12000, 0.0F);
        in[0] = 0.5F;
        in[1] = -0.25F;
        const auto out = run(filter, param, in, 2, rate);
        const auto expected = echoReference(param.processDelay, 0.5, -0.25, rate, in.size() / 2);
        EXPECT_LT(distance(out, expected), 1e-6) << preset;
    }
}

TEST(Delay, StretchesWhatIsStored)
{
    constexpr size_t oldLength = 800; // 100 ms
    for (const size_t newLength : {400U, 533U, 800U, 1200U, 2000U}) {
        for (const size_t ahead : {0U, 321U}) { // frames beyond one whole round
            TavloAudioFilterDelay filter;
            const auto frames = countingFrames(oldLength);
            run(filter, delayParam(100, 1), frames, 2, rate);
            const std::vector<float> again(frames.begin(), frames.begin() + 2 * ahead);
            run(filter, delayParam(100, 1), again, 2, rate);

            filter.reset();
            const double milliseconds = double(newLength) / rate * 1000;
            const auto out = run(filter, delayParam(milliseconds, 1), std::vector<float>(2 * newLength), 2, rate);
            const double step = double(oldLength) / double(newLength);
            for (size_t i = 0; i < newLength; ++i) {
                const size_t at = (size_t(double(ahead) / step) + i) % newLength;
                const size_t nearest = std::min(size_t(std::lround(double(at) * step)), oldLength - 1);
                ASSERT_NEAR(out[2 * i], frames[2 * nearest], 1e-6) << newLength << " ahead " << ahead << " at " << i;
                ASSERT_NEAR(out[2 * i + 1], frames[2 * nearest + 1], 1e-6);
            }
        }
    }
}

TEST(Delay, AShorterDelayWithoutStretching)
{
    const auto frames = countingFrames(800);
    for (const double resample : {-1.0, 0.0}) {
        TavloAudioFilterDelay filter;
        run(filter, delayParam(100, resample), std::vector<float>(frames.begin(), frames.begin() + 1200), 2, rate);
        filter.reset(); // the position stands at 600
        const auto out = run(filter, delayParam(50, resample), std::vector<float>(20), 2, rate);
        // Below 0 the position goes back at once; at 0 it reads where it stands once more and wraps then.
        EXPECT_NEAR(out[0], resample < 0 ? frames[0] : 0.0F, 1e-6);
        EXPECT_NEAR(out[2], resample < 0 ? frames[2] : frames[0], 1e-6);
    }
}

TEST(Delay, FeedbackSaturatesAndOddValuesStayInside)
{
    TavloAudioFilterDelay filter;
    auto param = delayParam(1, 1);
    param.processDelay.feedbackValue = 12.0;
    EXPECT_FLOAT_EQ(run(filter, param, std::vector<float>(2000, 0.9F), 2, rate).back(), 4.0F);

    // Each of these is followed by sound, and then stretched from: nothing may lie outside the store.
    for (const double ms : {1e9, 0.0, -5.0, 0.06, std::numeric_limits<double>::infinity(), 31250.0, 20.0}) {
        filter.reset();
        param.processDelay.delayMsValue = ms;
        param.processDelay.feedbackValue = ms > 20 ? std::nan("") : -6.0;
        for (const float s : run(filter, param, noise(600, 0.5F), 2, rate))
            ASSERT_TRUE(std::isfinite(s));
    }
}

TEST(Delay, MonoHasAnEchoToo)
{
    TavloAudioFilterDelay filter;
    std::vector<float> in(100, 0.0F);
    in[0] = 0.5F;
    EXPECT_NEAR(run(filter, delayParam(5, 0), in, 1, rate)[40], 0.5F, 1e-6);
}

} // namespace
} // namespace tavlo::test
