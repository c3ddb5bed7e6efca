#include "audio/TavloAudioFilterVolcalCut.h"

#include "audio/AudioSupport.h"

#include <tavlo/TavloPresentUtil.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>

namespace tavlo::test {
namespace {

constexpr double rate = 48000.0;

/// One band pass or notch, its coefficients computed on every sample.
struct ReferenceFilter
{
    bool notch;
    double x1 = 0, x2 = 0, y1 = 0, y2 = 0;

    double operator()(double x, double frequency, double quality)
    {
        const double w = 6.283185307179586 * frequency / rate;
        const double alpha = std::sin(w) / (2.0 * quality);
        const double b0 = notch ? 1.0 : alpha;
        const double b1 = notch ? -2.0 * std::cos(w) : 0.0;
        const double b2 = notch ? 1.0 : -alpha;
        const double a0 = 1.0 + alpha;
        const double a1 = -2.0 * std::cos(w);
        const double a2 = 1.0 - alpha;
        const double y = b0 / a0 * x + b1 / a0 * x1 + b2 / a0 * x2 - a1 / a0 * y1 - a2 / a0 * y2;
        x2 = x1;
        x1 = x;
        y2 = y1;
        y1 = y;
        return y;
    }
};

std::vector<double> reference(const std::vector<float>& in, const tagTavloAudioProcessParamVolcalCut& p)
{
    double a = 1, b = -1, c = -1, d = 1;
    if (p.param_Pan < 0) {
        a = std::pow(1 + p.param_Pan, 2);
        b = -a;
    }
    if (p.param_Pan > 0) {
        d = std::pow(1 - p.param_Pan, 2);
        c = -d;
    }
    const double t = p.param_Level + 1;
    a = a * (1 - t) + t;
    b = b * (1 - t);
    c = c * (1 - t);
    d = d * (1 - t) + t;
    ReferenceFilter notchL{true}, notchR{true}, bandL{false}, bandR{false};
    std::vector<double> out;
    for (size_t i = 0; i < in.size(); i += 2) {
        const double left = in[i], right = in[i + 1];
        double m = a * left + c * right;
        double n = b * left + d * right;
        if (p.param_FilterSwitch == 1) {
            const double f = p.param_FilterFrequency, q = p.param_FilterQ;
            m = bandL(m, f, q) + notchL(left, f, q);
            n = bandR(n, f, q) + notchR(right, f, q);
        }
        out.push_back(m);
        out.push_back(n);
    }
    return out;
}

TEST(VolcalCut, BothFormsFollowTheirFormulas)
{
    const auto in = stereo(noise(20000, 0.7F, 3), noise(20000, 0.4F, 8));
    for (const double pan : {-0.6, 0.0, 0.3}) {
        for (const double level : {-1.0, -0.35, 0.0}) {
            for (const int band : {0, 1}) {
                TavloAudioFilterVolcalCut filter;
                tagTavloAudioEffectParam param;
                param.processVolcalCut = {2, pan, level, band, 900, 0.7};
                EXPECT_LT(distance(run(filter, param, in, 2, 48000), reference(in, param.processVolcalCut)), 1e-6)
                    << "pan " << pan << " level " << level << " band " << band;
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
        if (i % 3 == 2) {
            ASSERT_EQ(out[i], in[i]);
        }
    }
}

} // namespace
} // namespace tavlo::test
