#include "audio/TavloAudioFilterNoiseGate.h"

#include "audio/FilterMath.h"

#include <tavlo/records/AudioRecords.h>

#include <algorithm>
#include <limits>

namespace {

/// The level falls from the open to the close threshold in this time, seconds.
constexpr double decayTime = 0.013333334;

/// Steps of a ramp over that many milliseconds; a ramp of no length is one step.
double rampRate(qint32 milliseconds, int rate)
{
    if (milliseconds <= 0)
        return std::numeric_limits<double>::infinity();
    return 1.0 / (milliseconds / 1000.0 * rate);
}

} // namespace

void TavloAudioFilterNoiseGate::reset() { _rate = 0; }

bool TavloAudioFilterNoiseGate::isEnabled(const tagTavloAudioEffectParam& param, int, int, int) const
{
    return param.processNoiseGate.enable != 0;
}

int TavloAudioFilterNoiseGate::processSamples(const tagTavloAudioEffectParam& param, float* samples, int frames,
                                              int channels, int bits, int rate)
{
    if (!isEnabled(param, channels, bits, rate))
        return 0;
    if (rate != _rate)
        derive(param, rate);
    if (_rate <= 0)
        return frames;
    for (int i = 0; i < frames; ++i, samples += channels) {
        float peak = 0.0F;
        for (int c = 0; c < channels; ++c)
            peak = std::max(peak, std::abs(samples[c]));
        const auto factor = static_cast<float>(attenuate(peak));
        for (int c = 0; c < channels; ++c)
            samples[c] *= factor;
    }
    return frames;
}

void TavloAudioFilterNoiseGate::derive(const tagTavloAudioEffectParam& param, int rate)
{
    const tagTavloAudioProcessParamNoiseGate& gate = param.processNoiseGate;
    _rate = rate;
    if (rate <= 0)
        return;
    _sampleTime = 1.0 / rate;
    _openThreshold = tavlo::decibelsToFactor(gate.open_threshold_db);
    _closeThreshold = tavlo::decibelsToFactor(gate.close_threshold_db);
    _decay = (_openThreshold - _closeThreshold) / (rate * decayTime);
    _attackRate = rampRate(gate.attack_time_ms, rate);
    _releaseRate = rampRate(gate.release_time_ms, rate);
    _holdTime = gate.hold_time_ms / 1000.0;
    _isOpen = false;
    _attenuation = 0.0;
    _level = 0.0;
    _heldTime = 0.0;
}

/// The factor for the next frame.
double TavloAudioFilterNoiseGate::attenuate(double peak)
{
    if (peak > _openThreshold && !_isOpen)
        _isOpen = true;
    if (_closeThreshold > _level && _isOpen) {
        _heldTime = 0.0;
        _isOpen = false;
    }
    _level = std::max(_level, peak) - _decay;
    if (_isOpen) {
        _attenuation = std::min(1.0, _attenuation + _attackRate);
    } else {
        _heldTime += _sampleTime;
        if (_heldTime > _holdTime)
            _attenuation = std::max(0.0, _attenuation - _releaseRate);
    }
    return _attenuation;
}
