#include "audio/TavloAudioFilterNoiseGate.h"

#include "audio/AudioSupport.h"

#include <tavlo/records/AudioRecords.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace tavlo::test {
namespace {

tagTavloAudioEffectParam gateParam()
{
    tagTavloAudioEffectParam param;
    param.processNoiseGate = {1, -26.0, -32.0, 25, 40, 30};
    return param;
}

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

/// The gate's formulas, one frame after the other.
std::vector<double> reference(const std::vector<float>& in, const tagTavloAudioProcessParamNoiseGate& p, double rate)
{
    const double open = std::pow(10.0, p.open_threshold_db / 20.0);
    const double close = std::pow(10.0, p.close_threshold_db / 20.0);
    const double decay = (open - close) / (rate * 0.013333334);
    const double attack = 1.0 / (p.attack_time_ms / 1000.0 * rate);
    const double release = 1.0 / (p.release_time_ms / 1000.0 * rate);
    double attenuation = 0.0, level = 0.0, held = 0.0;
    bool isOpen = false;
    std::vector<double> out;
    for (size_t i = 0; i < in.size(); i += 2) {
        const double peak = std::max(std::abs(in[i]), std::abs(in[i + 1]));
        if (peak > open && !isOpen)
            isOpen = true;
        if (level < close && isOpen) {
            held = 0.0;
            isOpen = false;
        }
        level = (level > peak ? level : peak) - decay;
        if (isOpen) {
            attenuation += attack;
        } else {
            held += 1.0 / rate;
            if (held > p.hold_time_ms / 1000.0)
                attenuation -= release;
        }
        attenuation = attenuation < 0.0 ? 0.0 : attenuation > 1.0 ? 1.0 : attenuation;
        out.push_back(in[i] * attenuation);
        out.push_back(in[i + 1] * attenuation);
    }
    return out;
}

TEST(NoiseGate, FollowsItsFormulas)
{
    TavloAudioFilterNoiseGate gate;
    const auto param = gateParam();
    const auto in = speech(90000);
    const auto out = run(gate, param, in, 2, 48000);
    EXPECT_LT(distance(out, reference(in, param.processNoiseGate, 48000)), 1e-6);

    // Open in the words, shut in the long pause.
    EXPECT_EQ(out[2 * 5000], in[2 * 5000]);
    EXPECT_EQ(out[2 * 30000], 0.0F);
    EXPECT_EQ(out[2 * 30000 + 1], 0.0F);
}

TEST(NoiseGate, TakesTheRecordAnewOnReset)
{
    TavloAudioFilterNoiseGate gate;
    auto param = gateParam();
    const std::vector<float> steady(9600, 0.1F);
    EXPECT_EQ(run(gate, param, steady, 2, 48000).back(), 0.1F);
    param.processNoiseGate.open_threshold_db = -6.0;
    EXPECT_EQ(run(gate, param, steady, 2, 48000).back(), 0.1F);
    gate.reset();
    EXPECT_EQ(run(gate, param, steady, 2, 48000).back(), 0.0F);
}

TEST(NoiseGate, RampsOfNoLengthAndOddThresholds)
{
    TavloAudioFilterNoiseGate gate;
    auto param = gateParam();
    param.processNoiseGate.attack_time_ms = 0;
    param.processNoiseGate.release_time_ms = 0;
    param.processNoiseGate.hold_time_ms = 0;
    std::vector<float> samples(48000, 0.0F);
    std::fill_n(samples.begin() + 100, 40, 0.5F);
    const auto out = run(gate, param, samples, 2, 48000);
    EXPECT_EQ(out[101], 0.0F); // the level follows by a frame
    EXPECT_EQ(out[102], 0.5F);
    EXPECT_EQ(out.back(), 0.0F);

    // A threshold that is no number counts as silence: every sound is above it.
    param.processNoiseGate.open_threshold_db = std::numeric_limits<double>::quiet_NaN();
    param.processNoiseGate.close_threshold_db = -std::numeric_limits<double>::infinity();
    gate.reset();
    EXPECT_EQ(run(gate, param, std::vector<float>(9600, 1e-4F), 2, 48000).back(), 1e-4F);
}

TEST(NoiseGate, WithoutARateOrSwitchedOffNothingChanges)
{
    TavloAudioFilterNoiseGate gate;
    auto param = gateParam();
    auto samples = noise(64, 0.01F);
    const auto before = samples;
    EXPECT_EQ(gate.processSamples(param, samples.data(), 32, 2, 16, 0), 32);
    EXPECT_EQ(samples, before);
    param.processNoiseGate.enable = 0;
    EXPECT_EQ(gate.processSamples(param, samples.data(), 32, 2, 16, 48000), 0);
    EXPECT_EQ(samples, before);
}

} // namespace
} // namespace tavlo::test
