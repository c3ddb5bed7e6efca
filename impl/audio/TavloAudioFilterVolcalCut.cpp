#include "audio/TavloAudioFilterVolcalCut.h"

#include <tavlo/records/AudioRecords.h>

#include <QDebug>

#include <algorithm>

void TavloAudioFilterVolcalCut::reset() { _rate = 0; }

bool TavloAudioFilterVolcalCut::isEnabled(const tagTavloAudioEffectParam& param, int channels, int, int) const
{
    if (param.processVolcalCut.preset == 0)
        return false;
    if (channels < 2)
        qDebug() << "TavloAudioFilterVolcalCut::process channel < 2";
    return channels >= 2;
}

int TavloAudioFilterVolcalCut::processSamples(const tagTavloAudioEffectParam& param, float* samples, int frames,
                                              int channels, int, int rate)
{
    const tagTavloAudioProcessParamVolcalCut& cut = param.processVolcalCut;
    if (cut.preset == 0 || channels < 2) // as isEnabled, without saying it a second time for one block
        return 0;
    if (rate != _rate) {
        _rate = rate;
        for (tavlo::SecondOrderFilter* filter : {&_notchL, &_notchR, &_bandL, &_bandR})
            filter->clear();
    }
    const Matrix matrix = matrixOf(cut);
    if (cut.param_FilterSwitch != 1 || rate <= 0) {
        cutAll(matrix, samples, frames, channels);
        return frames;
    }
    for (tavlo::SecondOrderFilter* filter : {&_notchL, &_notchR, &_bandL, &_bandR})
        filter->tune(rate, cut.param_FilterFrequency, cut.param_FilterQ);
    cutBand(matrix, samples, frames, channels);
    for (tavlo::SecondOrderFilter* filter : {&_notchL, &_notchR, &_bandL, &_bandR})
        filter->dropTiny();
    return frames;
}

/// The full difference of the sides where the level is -1, and their untouched selves where it is 0. The pan moves
/// what is cut away from the middle.
TavloAudioFilterVolcalCut::Matrix TavloAudioFilterVolcalCut::matrixOf(const tagTavloAudioProcessParamVolcalCut& cut)
{
    const double pan = tavlo::finiteOr(cut.param_Pan, 0.0);
    const double blend = tavlo::finiteOr(cut.param_Level, 0.0) + 1.0;
    Matrix m{1.0, -1.0, -1.0, 1.0};
    if (pan < 0.0) {
        m.a = (1.0 + pan) * (1.0 + pan);
        m.b = -m.a;
    } else if (pan > 0.0) {
        m.d = (1.0 - pan) * (1.0 - pan);
        m.c = -m.d;
    }
    m.a += (1.0 - m.a) * blend;
    m.b -= m.b * blend;
    m.c -= m.c * blend;
    m.d += (1.0 - m.d) * blend;
    return m;
}

void TavloAudioFilterVolcalCut::cutAll(const Matrix& matrix, float* samples, int frames, int channels) const
{
    for (int i = 0; i < frames; ++i, samples += channels) {
        const double left = samples[0];
        const double right = samples[1];
        samples[0] = static_cast<float>(matrix.a * left + matrix.c * right);
        samples[1] = static_cast<float>(matrix.b * left + matrix.d * right);
    }
}

void TavloAudioFilterVolcalCut::cutBand(const Matrix& matrix, float* samples, int frames, int channels)
{
    for (int i = 0; i < frames; ++i, samples += channels) {
        const double left = samples[0];
        const double right = samples[1];
        const double cutLeft = matrix.a * left + matrix.c * right;
        const double cutRight = matrix.b * left + matrix.d * right;
        samples[0] = static_cast<float>(_bandL.process(cutLeft) + _notchL.process(left));
        samples[1] = static_cast<float>(_bandR.process(cutRight) + _notchR.process(right));
    }
}
