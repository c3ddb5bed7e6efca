#include "audio/TavloAudioFilterEqualizer.h"

#include "audio/FilterMath.h"

#include <tavlo/records/AudioRecords.h>

#include <algorithm>

namespace {

constexpr std::array<double, TavloAudioFilterEqualizer::bandCount> frequencies{60,   170,  310,   600,   1000,
                                                                               3000, 6000, 12000, 14000, 16000}; // Hz

/// How loud the dry sound goes into the sum, and each band at its full amplitude: headroom for ten bands.
constexpr double headroom = 0.25;

double bandAmplitude(double decibels)
{
    return (std::pow(10.0, std::clamp(tavlo::finiteOr(decibels, 0.0), -20.0, 20.0) / 20.0) - 1.0) * headroom;
}

double preampGain(double decibels)
{
    return std::pow(10.0, std::clamp(tavlo::finiteOr(decibels, 0.0), -20.0, 20.0) / 20.0);
}

} // namespace

void TavloAudioFilterEqualizer::reset() { _rate = 0; }

bool TavloAudioFilterEqualizer::isEnabled(const tagTavloAudioEffectParam& param, int, int, int) const
{
    return TavloAudioPresetIsEqualizer(param.preset);
}

int TavloAudioFilterEqualizer::processSamples(const tagTavloAudioEffectParam& param, float* samples, int frames,
                                              int channels, int bits, int rate)
{
    if (!isEnabled(param, channels, bits, rate))
        return 0;
    if (rate != _rate)
        derive(rate);
    const tagTavloEQualizerParam& equalizer = param.equalizer;
    Bands amps{};
    const int bands = std::clamp(equalizer.bands, 0, bandCount);
    std::transform(equalizer.gains.begin(), equalizer.gains.begin() + bands, amps.begin(), bandAmplitude);
    const double preamp = preampGain(equalizer.preamp);
    for (int c = 0; c < std::min(channels, channelLimit); ++c)
        processChannel(_channels[static_cast<size_t>(c)], amps, preamp, samples + c, frames, channels);
    return frames;
}

/// Band passes by the bilinear transform, one octave between the points of half power: the band's lower edge lies at
/// w / sqrt(2), its upper edge at w * sqrt(2).
void TavloAudioFilterEqualizer::derive(int rate)
{
    _rate = rate;
    for (size_t i = 0; i < bandCount; ++i) {
        _alpha[i] = _beta[i] = _gamma[i] = 0.0;
        if (rate / 2.0 < frequencies[i])
            continue;
        const double k = std::sqrt(2.0);
        const double w = frequencies[i] * 6.283185307179586 / rate;
        const double x = w / k;
        const double s = std::sin(x);
        const double q = std::sin(x * (k - 1.0) / 2.0) * std::sin(x * (k + 1.0) / 2.0);
        const double sum = s / 2.0 + q;
        _alpha[i] = q / sum;
        _beta[i] = (s / 2.0 - q) / sum;
        _gamma[i] = std::cos(w) * s / sum;
    }
}

void TavloAudioFilterEqualizer::processChannel(Channel& state, const Bands& amps, double preamp, float* samples,
                                               int frames, int stride) const
{
    Channel c = state; // in registers and on the stack, where nothing else can point at it
    for (int i = 0; i < frames; ++i, samples += stride) {
        const double x = *samples;
        const double change = x - c.x2;
        double sum = 0.0;
        for (size_t b = 0; b < bandCount; ++b) {
            const double y = _alpha[b] * change + _gamma[b] * c.y1[b] - _beta[b] * c.y2[b];
            c.y2[b] = c.y1[b];
            c.y1[b] = y;
            sum += amps[b] * y;
        }
        c.x2 = c.x1;
        c.x1 = x;
        *samples = static_cast<float>((headroom * x + sum) * preamp);
    }
    for (size_t b = 0; b < bandCount; ++b) {
        c.y1[b] = tavlo::withoutTiny(c.y1[b]);
        c.y2[b] = tavlo::withoutTiny(c.y2[b]);
    }
    state = c;
}
