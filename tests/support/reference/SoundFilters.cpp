#include "support/reference/SoundFilters.h"

#include <tavlo/records/AudioRecords.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <utility>

namespace tavlo::test {

namespace {

struct Biquad
{
    double b0 = 1, b1 = 0, b2 = 0, a1 = 0, a2 = 0;
    double x1 = 0, x2 = 0, y1 = 0, y2 = 0;

    double operator()(double x)
    {
        const double y = b0 * x + b1 * x1 + b2 * x2 - a1 * y1 - a2 * y2;
        x2 = std::exchange(x1, x);
        y2 = std::exchange(y1, y);
        return y;
    }
};

Biquad bandPass(const tagTavloAudioProcessParamVolcalCut& p, double rate, bool notch)
{
    const double w = 2 * std::numbers::pi * p.param_FilterFrequency / rate, cosine = -2.0 * std::cos(w);
    const double alpha = std::sin(w) / (2.0 * p.param_FilterQ), a0 = 1.0 + alpha, a2 = (1.0 - alpha) / a0;
    if (notch)
        return {1.0 / a0, cosine / a0, 1.0 / a0, cosine / a0, a2};
    return {alpha / a0, 0.0, -alpha / a0, cosine / a0, a2};
}

/// A band of the equalizer; silent above half the rate.
Biquad band(double f, double rate)
{
    if (rate / 2 < f)
        return {0};
    const double k = std::sqrt(2.0), w = f * 2.0 * std::numbers::pi / rate, x = w / k;
    const double q = std::sin(x * (k - 1) / 2) * std::sin(x * (k + 1) / 2);
    const double d = std::sin(x) / 2 + q;
    return {q / d, 0, -q / d, -std::cos(w) * std::sin(x) / d, (std::sin(x) / 2 - q) / d};
}

double amplitude(double gain) { return (factor(std::clamp(gain, -20.0, 20.0)) - 1.0) * 0.25; }

/// The shifter as one long store with both channels' rings in it, in doubles.
class Pitch
{
public:
    Pitch(const tagTavloAudioProcessParamPitch& p, double rate)
    {
        filterOn = p.discreteFilterValue > 0.5;
        window = static_cast<int>(std::min(p.windowSizeMsValue, 1000.0) * 0.001 * rate);
        read = write + window / 2;
        crossfade = std::min(static_cast<int>(p.overlapSizeMsValue * 0.001 * rate), window / 2);
        ratio = std::pow(2.0, (p.centsPitchValue * 0.01 + p.semitonesPitchValue) / 12 + p.octavesPitchValue);
        const double fc = std::max(0.1 / rate, std::min(ratio, 1 / ratio));
        const double k = 1 / std::tan(fc * 3.1415926535 * 0.5);
        const double b0 = 1 / (k + 1 + k * k);
        lowPass[0] = lowPass[1] = {b0, 2 * b0, b0, 2 * (1 - k * k) * b0, (1 - k + k * k) * b0};
        dry = std::pow(2.0, p.dryMixValue / 6);
        wet = std::pow(2.0, p.wetMixValue / 6);
    }

    void frame(double& left, double& right)
    {
        double s[2]{at(read, 0), at(read, 1)};
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
        for (const int c : {0, 1}) {
            double& io = c ? right : left;
            store[write + c * offset] = filterOn && ratio > 1 ? lowPass[c](io) : io;
            io = io * dry + (filterOn && ratio < 1 ? lowPass[c](s[c] * wet) : s[c] * wet);
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
        return (1 - f) * store[i + c * offset] + f * store[next + c * offset];
    }
    double wrap(double position) const { return position >= base + window ? position - window : position; }
    void fade(double* s, double t, bool jump)
    {
        for (const int c : {0, 1})
            s[c] = t * s[c] + (1 - t) * at(wrap(read + crossfade), c);
        if (jump)
            read = read + crossfade;
    }

    std::vector<double> store = std::vector<double>(200000, 0.0);
    int write = base, window = 0, crossfade = 0;
    double read = 0, ratio = 1, dry = 0, wet = 0;
    bool filterOn = false;
    Biquad lowPass[2];
};

} // namespace

double factor(double decibels) { return std::pow(10.0, decibels / 20.0); }

std::vector<double> gateReference(const std::vector<float>& in, const tagTavloAudioProcessParamNoiseGate& p,
                                  double rate)
{
    const double open = factor(p.open_threshold_db), close = factor(p.close_threshold_db);
    const double decay = (open - close) / (rate * 0.013333334);
    const double attack = 1.0 / (p.attack_time_ms / 1000.0 * rate);
    const double release = 1.0 / (p.release_time_ms / 1000.0 * rate);
    double attenuation = 0.0, level = 0.0, held = 0.0;
    bool isOpen = false;
    std::vector<double> out;
    for (size_t i = 0; i < in.size(); i += 2) {
        const double peak = std::max(std::abs(in[i]), std::abs(in[i + 1]));
        isOpen = (isOpen || peak > open) && level >= close;
        level = std::max(level, peak) - decay;
        held = isOpen ? 0.0 : held + 1.0 / rate;
        if (isOpen)
            attenuation += attack;
        else if (held > p.hold_time_ms / 1000.0)
            attenuation -= release;
        attenuation = std::clamp(attenuation, 0.0, 1.0);
        out.insert(out.end(), {in[i] * attenuation, in[i + 1] * attenuation});
    }
    return out;
}

std::vector<double> vocalCutReference(const std::vector<float>& in, const tagTavloAudioProcessParamVolcalCut& p,
                                      double rate)
{
    const double ofLeft = std::pow(1 + std::min(p.param_Pan, 0.0), 2);
    const double ofRight = std::pow(1 - std::max(p.param_Pan, 0.0), 2);
    const double cut = -p.param_Level, kept = 1 - cut;
    Biquad notchL = bandPass(p, rate, true), notchR = notchL, bandL = bandPass(p, rate, false), bandR = bandL;
    std::vector<double> out;
    for (size_t i = 0; i < in.size(); i += 2) {
        const double left = in[i], right = in[i + 1];
        double m = kept * left + cut * (ofLeft * left - ofRight * right);
        double n = kept * right + cut * (ofRight * right - ofLeft * left);
        if (p.param_FilterSwitch == 1) {
            m = bandL(m) + notchL(left);
            n = bandR(n) + notchR(right);
        }
        out.insert(out.end(), {m, n});
    }
    return out;
}

std::vector<double> equalizerReference(const tagTavloEQualizerParam& p, double rate, size_t count)
{
    std::vector<double> out(count, 0.0);
    out[0] = 0.25 * factor(p.preamp);
    for (size_t b = 0; b < static_cast<size_t>(p.bands); ++b) {
        Biquad filter = band(equalizerCentres[b], rate);
        for (size_t n = 0; n < count; ++n)
            out[n] += amplitude(p.gains[b]) * filter(n == 0 ? 1.0 : 0.0) * factor(p.preamp);
    }
    return out;
}

double response(const std::vector<float>& impulse, double frequency, double rate)
{
    std::complex<double> sum = 0.0;
    for (size_t n = 0; n < impulse.size(); ++n)
        sum += static_cast<double>(impulse[n]) *
               std::polar(1.0, -2.0 * std::numbers::pi * frequency * static_cast<double>(n) / rate);
    return std::abs(sum);
}

std::vector<double> echoReference(const tagTavloAudioProcessParamDelay& p, double left, double right, double rate,
                                  size_t frames)
{
    const auto length = static_cast<size_t>(p.delayMsValue * rate / 1000);
    std::vector<double> out(2 * frames, 0.0);
    double gain = std::exp2(p.outputDryValue / 6);
    double stored = std::exp2((p.mixinValue + p.outputWetValue) / 6);
    for (size_t i = 0; i < frames; i += length) {
        out[2 * i] = left * gain;
        out[2 * i + 1] = right * gain;
        gain = stored;
        stored *= std::exp2(p.feedbackValue / 6);
    }
    return out;
}

std::vector<double> pitchReference(const std::vector<float>& in, const tagTavloAudioProcessParamPitch& p, double rate)
{
    Pitch shifter(p, rate);
    std::vector<double> out(in.begin(), in.end());
    for (size_t i = 0; i < out.size(); i += 2)
        shifter.frame(out[i], out[i + 1]);
    return out;
}

} // namespace tavlo::test
