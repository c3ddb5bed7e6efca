#include "audio/TavloAudioFilterPitch.h"

#include "audio/AudioSupport.h"

#include <tavlo/TavloPresentUtil.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tavlo::test {
namespace {

constexpr int rate = 48000;

/// The shifter as one long store with both channels' rings in it, in doubles.
class Reference
{
public:
    explicit Reference(const tagTavloAudioProcessParamPitch& p)
    {
        filterOn = p.discreteFilterValue > 0.5;
        window = static_cast<int>(std::min(p.windowSizeMsValue, 1000.0) * 0.001 * rate);
        read = write + window / 2;
        crossfade = std::min(static_cast<int>(p.overlapSizeMsValue * 0.001 * rate), window / 2);
        ratio = std::pow(2.0, (p.centsPitchValue * 0.01 + p.semitonesPitchValue) / 12 + p.octavesPitchValue);
        const double fc = std::max(0.1 / rate, std::min(ratio, 1 / ratio));
        const double k = 1 / std::tan(fc * 3.1415926535 * 0.5);
        b0 = 1 / (k + 1 + k * k);
        b1 = 2 * b0;
        a1 = 2 * (1 - k * k) * b0;
        a2 = (1 - k + k * k) * b0;
        dry = std::pow(2.0, p.dryMixValue / 6);
        wet = std::pow(2.0, p.wetMixValue / 6);
    }

    void frame(double& left, double& right)
    {
        double s[2];
        for (const int c : {0, 1})
            s[c] = at(read, c);
        if (ratio >= 1) {
            const double p = read > write ? read - window : read;
            if (p >= write - crossfade && p < write)
                fade(s, (write - p) / crossfade, p + ratio >= write + 1);
        } else {
            const double p = read < write ? read + window : read;
            if (p >= write && p < write + crossfade)
                fade(s, (p - write) / crossfade, p + ratio < write + 1);
        }
        read = wrap(read + ratio);
        double* io[2] = {&left, &right};
        for (const int c : {0, 1}) {
            const double in = *io[c];
            store[static_cast<size_t>(write + c * offset)] = filterOn && ratio > 1 ? lowPass(in, c) : in;
            double out = s[c] * wet;
            if (filterOn && ratio < 1)
                out = lowPass(out, c);
            *io[c] = in * dry + out;
        }
        if (++write >= base + window)
            write = base;
    }

private:
    static constexpr int base = 10000;
    static constexpr int offset = 49000;

    double at(double position, int c) const
    {
        const int i = static_cast<int>(position);
        const int next = i >= base + window - 1 ? i + 1 - window : i + 1;
        const double f = position - i;
        return (1 - f) * store[static_cast<size_t>(i + c * offset)] + f * store[static_cast<size_t>(next + c * offset)];
    }
    double wrap(double position) const { return position >= base + window ? position - window : position; }
    void fade(double* s, double t, bool jump)
    {
        for (const int c : {0, 1})
            s[c] = t * s[c] + (1 - t) * at(wrap(read + crossfade), c);
        if (jump)
            read = read + crossfade;
    }
    double lowPass(double x, int c)
    {
        const double y = b0 * x + b1 * x1[c] + b0 * x2[c] - a1 * y1[c] - a2 * y2[c];
        x2[c] = x1[c];
        x1[c] = x;
        y2[c] = y1[c];
        y1[c] = y;
        return y;
    }

    std::vector<double> store = std::vector<double>(200000, 0.0);
    int write = base, window = 0, crossfade = 0;
    double read = 0, ratio = 1, dry = 0, wet = 0, b0 = 0, b1 = 0, a1 = 0, a2 = 0;
    bool filterOn = false;
    double x1[2]{}, x2[2]{}, y1[2]{}, y2[2]{};
};

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
    Reference reference(param.processPitch);
    std::vector<double> expected(in.begin(), in.end());
    for (size_t i = 0; i < expected.size(); i += 2)
        reference.frame(expected[i], expected[i + 1]);
    EXPECT_LT(distance(out, expected), 1e-5);
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

/// Hz, from the first to the last rise through zero.
double countedFrequency(const std::vector<double>& samples, size_t begin)
{
    double first = -1, last = 0;
    int periods = -1;
    for (size_t i = begin; i + 1 < samples.size(); ++i) {
        if (samples[i] >= 0 || samples[i + 1] < 0)
            continue;
        last = static_cast<double>(i) + samples[i] / (samples[i] - samples[i + 1]);
        first = first < 0 ? last : first;
        ++periods;
    }
    return periods / (last - first) * rate;
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
            EXPECT_LT(std::abs(1200 * std::log2(countedFrequency(out, rate / 2) / shifted)), 0.1);

            // What the tone's own recursion does not predict is what jumps.
            const double twoCos = 2 * std::cos(2 * std::numbers::pi * shifted / rate);
            double jump = 0;
            for (size_t i = rate / 2; i + 2 < out.size(); ++i)
                jump = std::max(jump, std::abs(out[i + 2] - twoCos * out[i + 1] + out[i]));
            EXPECT_LT(20 * std::log10(jump), -50.0);

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
    for (const tagTavloAudioProcessParamPitch& p :
         {tagTavloAudioProcessParamPitch{}, tagTavloAudioProcessParamPitch{0, 0, 40, 0.01, 5000, 0, 0, 1},
          tagTavloAudioProcessParamPitch{0, 0, -40, 1e9, 1e9, 0, 0, 1},
          tagTavloAudioProcessParamPitch{nan, nan, nan, nan, nan, nan, nan, nan},
          tagTavloAudioProcessParamPitch{0, 7, 0, -4, -9, 0, 0, 1}}) {
        param.processPitch = p;
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
