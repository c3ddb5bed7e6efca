#pragma once

#include "audio/TavloAudioFilter.h"

/// Silences a channel while it is quiet: opens above one level, closes below another, with attack, hold and release.
class TavloAudioFilterNoiseGate final : public TavloAudioFilter
{
public:
    void reset() override;
    int processSamples(const tagTavloAudioEffectParam& param, float* samples, int frames, int channels, int bits,
                       int rate) override;
    bool isEnabled(const tagTavloAudioEffectParam& param, int channels, int bits, int rate) const override;

private:
    void derive(const tagTavloAudioEffectParam& param, int rate);
    double attenuate(double peak);

    int _rate = 0; ///< Hz that the rest is derived for; 0 for none

    // derived from the record
    double _sampleTime = 0.0;     ///< seconds
    double _openThreshold = 0.0;  ///< full scale is 1
    double _closeThreshold = 0.0; ///< full scale is 1
    double _decay = 0.0;          ///< of the level, a frame
    double _attackRate = 0.0;     ///< of the attenuation, a frame
    double _releaseRate = 0.0;    ///< of the attenuation, a frame
    double _holdTime = 0.0;       ///< seconds

    // running
    bool _isOpen = false;
    double _attenuation = 0.0; ///< the factor now
    double _level = 0.0;       ///< peak that decays
    double _heldTime = 0.0;    ///< seconds since it closed
};
