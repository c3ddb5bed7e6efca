#include "audio/TavloAudioFilterDelay.h"

#include "audio/FilterMath.h"

#include <tavlo/records/AudioRecords.h>

#include <algorithm>
#include <new>

namespace {

constexpr float storeLimit = 4.0F; ///< four times full scale: a feedback above 1 saturates here

float stored(float in, float delayed, float mixin, float feedback)
{
    return tavlo::withoutTiny(std::clamp(mixin * in + feedback * delayed, -storeLimit, storeLimit));
}

} // namespace

TavloAudioFilterDelay::TavloAudioFilterDelay()
    : _store(static_cast<Frame*>(std::calloc(static_cast<size_t>(capacity), sizeof(Frame))))
{
    if (!_store)
        throw std::bad_alloc();
}

void TavloAudioFilterDelay::reset() { _rate = 0; }

bool TavloAudioFilterDelay::isEnabled(const tagTavloAudioEffectParam& param, int, int, int) const
{
    return TavloAudioPresetIsDelay(param.preset);
}

int TavloAudioFilterDelay::processSamples(const tagTavloAudioEffectParam& param, float* samples, int frames,
                                          int channels, int bits, int rate)
{
    if (!isEnabled(param, channels, bits, rate))
        return 0;
    if (rate != _rate)
        derive(param.processDelay, rate);
    float unusedRight = 0.0F;
    for (int i = 0; i < frames; ++i, samples += channels) {
        float& left = samples[0];
        float& right = channels > 1 ? samples[1] : unusedRight;
        Frame& frame = _store[static_cast<size_t>(_position)];
        const Frame delayed = frame;
        frame = {stored(left, delayed.left, _mixin, _feedback), stored(right, delayed.right, _mixin, _feedback)};
        if (++_position >= _length)
            _position = 0;
        left = _wet * delayed.left + _dry * left;
        right = _wet * delayed.right + _dry * right;
    }
    return frames;
}

void TavloAudioFilterDelay::derive(const tagTavloAudioProcessParamDelay& delay, int rate)
{
    _rate = rate;
    const double frames = tavlo::finiteOr(delay.delayMsValue, 0.0) / 1000.0 * rate;
    const double newLength = std::clamp(frames, 0.0, double{capacity});
    if (newLength != _length) {
        if (delay.resampleValue > 0.0)
            stretch(_length, newLength);
        else if (delay.resampleValue < 0.0 && _position >= newLength)
            _position = 0;
        _length = newLength;
    }
    _feedback = static_cast<float>(tavlo::sixthsToFactor(delay.feedbackValue));
    _mixin = static_cast<float>(tavlo::sixthsToFactor(delay.mixinValue));
    _wet = static_cast<float>(tavlo::sixthsToFactor(delay.outputWetValue));
    _dry = static_cast<float>(tavlo::sixthsToFactor(delay.outputDryValue));
}

/// Resamples what is stored to the nearest frame, in place. The frame that is read never lies behind the one that is
/// written: shrinking goes forward and growing backward.
void TavloAudioFilterDelay::stretch(double oldLength, double newLength)
{
    if (oldLength < 1.0 || newLength < 1.0)
        return;
    const double step = oldLength / newLength;
    const int last = static_cast<int>(std::ceil(oldLength)) - 1;
    const int count = static_cast<int>(std::ceil(newLength));
    const auto take = [&](int i) {
        const int nearest = std::min(static_cast<int>(i * step + 0.5), last);
        _store[static_cast<size_t>(i)] = _store[static_cast<size_t>(nearest)];
    };
    if (step > 1.0) {
        for (int i = 0; i < count; ++i)
            take(i);
    } else {
        for (int i = count - 1; i >= 0; --i)
            take(i);
    }
    _position = std::clamp(static_cast<int>(_position / step), 0, count - 1);
}
