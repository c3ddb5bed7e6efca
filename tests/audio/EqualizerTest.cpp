#include "audio/TavloAudioFilterEqualizer.h"

#include "audio/AudioSupport.h"

#include <tavlo/TavloPresentUtil.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <numbers>

namespace tavlo::test {
namespace {

constexpr std::array<double, 10> centres{60, 170, 310, 600, 1000, 3000, 6000, 12000, 14000, 16000};

struct Band
{
    double alpha, beta, gamma;
};

Band band(double f, double rate)
{
    if (rate / 2 < f)
        return {0, 0, 0};
    const double k = std::sqrt(2.0), w = f * 2.0 * std::numbers::pi / rate, x = w / k;
    const double q = std::sin(x * (k - 1) / 2) * std::sin(x * (k + 1) / 2);
    const double d = std::sin(x) / 2 + q;
    return {q / d, (std::sin(x) / 2 - q) / d, std::cos(w) * std::sin(x) / d};
}

double factor(double decibels) { return std::pow(10.0, decibels / 20.0); }

double amplitude(double gain) { return (factor(std::clamp(gain, -20.0, 20.0)) - 1.0) * 0.25; }

std::vector<double> impulseReference(const tagTavloEQualizerParam& p, double rate, size_t count)
{
    std::vector<double> out(count, 0.0);
    out[0] = 0.25 * factor(p.preamp);
    for (size_t b = 0; b < static_cast<size_t>(p.bands); ++b) {
        const Band c = band(centres[b], rate);
        double y1 = 0, y2 = 0;
        for (size_t n = 0; n < count; ++n) {
            const double x = (n == 0 ? 1.0 : 0.0) - (n == 2 ? 1.0 : 0.0);
            const double y = c.alpha * x + c.gamma * y1 - c.beta * y2;
            y2 = y1;
            y1 = y;
            out[n] += amplitude(p.gains[b]) * y * factor(p.preamp);
        }
    }
    return out;
}

/// What the transfer functions of the bands add up to.
double responseReference(const tagTavloEQualizerParam& p, double frequency, double rate)
{
    const auto z1 = std::polar(1.0, -2.0 * std::numbers::pi * frequency / rate);
    std::complex<double> sum = 0.25;
    for (size_t b = 0; b < 10; ++b) {
        const Band c = band(centres[b], rate);
        sum += amplitude(p.gains[b]) * c.alpha * (1.0 - z1 * z1) / (1.0 - c.gamma * z1 + c.beta * z1 * z1);
    }
    return std::abs(sum) * factor(p.preamp);
}

double response(const std::vector<float>& impulse, double frequency, double rate)
{
    std::complex<double> sum = 0.0;
    for (size_t n = 0; n < impulse.size(); ++n)
        sum += static_cast<double>(impulse[n]) *
               std::polar(1.0, -2.0 * std::numbers::pi * frequency * static_cast<double>(n) / rate);
    return std::abs(sum);
}

std::vector<float> impulseOf(const tagTavloAudioEffectParam& param, int rate, size_t count)
{
    TavloAudioFilterEqualizer filter;
    std::vector<float> impulse(count, 0.0F);
    impulse[0] = 1.0F;
    return run(filter, param, impulse, 1, rate);
}

TEST(Equalizer, EveryPresetFollowsItsFormulas)
{
    for (const int rate : {48000, 44100}) {
        for (TavloAudioChangePreset preset = 9; preset <= 24; ++preset) {
            tagTavloAudioEffectParam param;
            TavloPresentUtil::loadAudioEQPreset(preset, param);
            const auto impulse = impulseOf(param, rate, 32768);
            EXPECT_LT(distance(impulse, impulseReference(param.equalizer, rate, impulse.size())), 1e-6) << preset;
            for (const double f : centres)
                EXPECT_NEAR(response(impulse, f, rate) / responseReference(param.equalizer, f, rate), 1.0, 1e-3)
                    << "preset " << preset << " at " << f;
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
        EXPECT_NEAR(response(impulseOf(param, 48000, 32768), centres[b], 48000), 0.25 * factor(12.0), 1e-3) << b;
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

TEST(Equalizer, BandsAboveHalfTheRateAreSilentAndGainsNeedNoReset)
{
    tagTavloAudioEffectParam param;
    TavloPresentUtil::loadAudioEQPreset(12, param);
    const auto impulse = impulseOf(param, 16000, 8192);
    EXPECT_LT(distance(impulse, impulseReference(param.equalizer, 16000, impulse.size())), 1e-6);

    TavloAudioFilterEqualizer filter;
    std::vector<float> tone = sine(1000, 48000, 4800, 0.1);
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
