#include "support/reference/SoundFilters.h"

#include <tavlo/records/AudioRecords.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>

namespace tavlo::test {

namespace {

/// One band pass or notch, its coefficients computed on every sample.
struct ReferenceFilter
{
    bool notch;
    double x1 = 0, x2 = 0, y1 = 0, y2 = 0;

    double operator()(double x, double frequency, double quality, double rate)
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

} // namespace

double factor(double decibels) { return std::pow(10.0, decibels / 20.0); }

std::vector<double> gateReference(const std::vector<float>& in, const tagTavloAudioProcessParamNoiseGate& p,
                                  double rate)
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

std::vector<double> vocalCutReference(const std::vector<float>& in, const tagTavloAudioProcessParamVolcalCut& p,
                                      double rate)
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
            m = bandL(m, f, q, rate) + notchL(left, f, q, rate);
            n = bandR(n, f, q, rate) + notchR(right, f, q, rate);
        }
        out.push_back(m);
        out.push_back(n);
    }
    return out;
}

std::vector<double> equalizerReference(const tagTavloEQualizerParam& p, double rate, size_t count)
{
    std::vector<double> out(count, 0.0);
    out[0] = 0.25 * factor(p.preamp);
    for (size_t b = 0; b < static_cast<size_t>(p.bands); ++b) {
        const Band c = band(equalizerCentres[b], rate);
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

double equalizerResponse(const tagTavloEQualizerParam& p, double frequency, double rate)
{
    const auto z1 = std::polar(1.0, -2.0 * std::numbers::pi * frequency / rate);
    std::complex<double> sum = 0.25;
    for (size_t b = 0; b < 10; ++b) {
        const Band c = band(equalizerCentres[b], rate);
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
