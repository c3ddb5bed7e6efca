#pragma once

#include "audio/SecondOrderFilter.h"
#include "audio/TavloAudioFilter.h"

struct tagTavloAudioProcessParamVolcalCut;

/// Takes the voice out of a stereo recording: what both sides share is subtracted, in the whole sound or inside one
/// band. Further channels stay as they are.
class TavloAudioFilterVolcalCut final : public TavloAudioFilter
{
public:
    void reset() override;
    int processSamples(const tagTavloAudioEffectParam& param, float* samples, int frames, int channels, int bits,
                       int rate) override;

    /// Logs when the sound is not stereo.
    bool isEnabled(const tagTavloAudioEffectParam& param, int channels, int bits, int rate) const override;

private:
    /// left = a L + c R, right = b L + d R
    struct Matrix
    {
        double a, b, c, d;
    };

    static Matrix matrixOf(const tagTavloAudioProcessParamVolcalCut& cut);
    void cutAll(const Matrix& matrix, float* samples, int frames, int channels) const;
    void cutBand(const Matrix& matrix, float* samples, int frames, int channels);

    int _rate = 0; ///< Hz that the filters stand at; 0 for none
    tavlo::SecondOrderFilter _notchL{tavlo::SecondOrderFilter::Kind::Notch};
    tavlo::SecondOrderFilter _notchR{tavlo::SecondOrderFilter::Kind::Notch};
    tavlo::SecondOrderFilter _bandL{tavlo::SecondOrderFilter::Kind::BandPass};
    tavlo::SecondOrderFilter _bandR{tavlo::SecondOrderFilter::Kind::BandPass};
};
