#include "audio/TavloAudioFilterNoiseGate.h"

#include "audio/AudioSupport.h"
#include "support/reference/SoundFilters.h"

#include <tavlo/records/AudioRecords.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace tavlo::test {
namespace {

/// Two words with a long and a short pause, the left channel louder, over quiet noise.
std::vector<float> speech(size_t frames)
{
    const auto hum = noise(frames * 2, 0.004F);
    std::vector<float> samples(frames * 2);
    for (size_t i = 0; i < frames; ++i) {
        const size_t phase = i % 36000;
        const bool word = phase < 7000 || (phase > 8000 && phase < 11000);
        const float tone = word ? 0.4F * static_cast<float>(std::sin(0.05 * static_cast<double>(i))) : 0.0F;
        samples[2 * i] = tone + hum[2 * i];
        samples[2 * i + 1] = -0.3F * tone + hum[2 * i + 1];
    }
    return samples;
}

TEST(NoiseGate, FollowsItsFormulas)
{
    TavloAudioFilterNoiseGate gate;
    tagTavloAudioEffectParam param;
    param.processNoiseGate = {1, -26.0, -32.0, 25, 40, 30};
    const auto in = speech(90000);
    const auto out = run(gate, param, in, 2, 48000);
    EXPECT_LT(distance(out, gateReference(in, param.processNoiseGate, 48000)), 1e-6);

    // Open in the words, shut in the long pause.
    EXPECT_EQ(out[2 * 5000], in[2 * 5000]);
    EXPECT_EQ(out[2 * 30000], 0.0F);
}

TEST(NoiseGate, RampsOfNoLengthAndOddThresholds)
{
    TavloAudioFilterNoiseGate gate;
    tagTavloAudioEffectParam param;
    param.processNoiseGate = {1, -26.0, -32.0, 0, 0, 0};
    std::vector<float> samples(48000, 0.0F);
    std::fill_n(samples.begin() + 100, 40, 0.5F);
    const auto out = run(gate, param, samples, 2, 48000);
    EXPECT_EQ(out[101], 0.0F); // the level follows by a frame
    EXPECT_EQ(out[102], 0.5F);
    EXPECT_EQ(out.back(), 0.0F);

    // A threshold that is no number counts as silence: every sound is above it.
    param.processNoiseGate = {1, std::nan(""), -std::numeric_limits<double>::infinity(), 0, 0, 0};
    gate.reset();
    EXPECT_EQ(run(gate, param, std::vector<float>(9600, 1e-4F), 2, 48000).back(), 1e-4F);
}

} // namespace
} // namespace tavlo::test
