#pragma once

#include "records/RecordFields.h"

#include <tavlo/records/AudioRecords.h>

namespace tavlo {

using namespace Qt::Literals::StringLiterals;

template <>
struct RecordFields<tagTavloEQualizerParam>
{
    using R = tagTavloEQualizerParam;
    static void visit(auto& v)
    {
        v.numbered("gains_"_L1, &R::gains);
        v.field("preamp"_L1, &R::preamp);
        v.field("bands"_L1, &R::bands);
    }
};

template <>
struct RecordFields<tagTavloAudioProcessParamDelay>
{
    using R = tagTavloAudioProcessParamDelay;
    static void visit(auto& v)
    {
        v.field("delayMsValue"_L1, &R::delayMsValue);
        v.field("feedbackValue"_L1, &R::feedbackValue);
        v.field("mixinValue"_L1, &R::mixinValue);
        v.field("outputWetValue"_L1, &R::outputWetValue);
        v.field("outputDryValue"_L1, &R::outputDryValue);
        v.field("resampleValue"_L1, &R::resampleValue);
    }
};

template <>
struct RecordFields<tagTavloAudioProcessParamPitch>
{
    using R = tagTavloAudioProcessParamPitch;
    static void visit(auto& v)
    {
        v.field("centsPitchValue"_L1, &R::centsPitchValue);
        v.field("semitonesPitchValue"_L1, &R::semitonesPitchValue);
        v.field("octavesPitchValue"_L1, &R::octavesPitchValue);
        v.field("windowSizeMsValue"_L1, &R::windowSizeMsValue);
        v.field("overlapSizeMsValue"_L1, &R::overlapSizeMsValue);
        v.field("wetMixValue"_L1, &R::wetMixValue);
        v.field("dryMixValue"_L1, &R::dryMixValue);
        v.field("discreteFilterValue"_L1, &R::discreteFilterValue);
    }
};

template <>
struct RecordFields<tagTavloAudioProcessParamVolcalCut>
{
    using R = tagTavloAudioProcessParamVolcalCut;
    static void visit(auto& v)
    {
        v.field("preset"_L1, &R::preset);
        v.field("param_Pan"_L1, &R::param_Pan);
        v.field("param_Level"_L1, &R::param_Level);
        v.field("param_FilterSwitch"_L1, &R::param_FilterSwitch);
        v.field("param_FilterFrequency"_L1, &R::param_FilterFrequency);
        v.field("param_FilterQ"_L1, &R::param_FilterQ);
    }
};

template <>
struct RecordFields<tagTavloAudioProcessParamNoiseSuprress>
{
    using R = tagTavloAudioProcessParamNoiseSuprress;
    static void visit(auto& v)
    {
        v.field("enable"_L1, &R::enable);
        v.field("level"_L1, &R::level);
    }
};

template <>
struct RecordFields<tagTavloAudioProcessParamNoiseGate>
{
    using R = tagTavloAudioProcessParamNoiseGate;
    static void visit(auto& v)
    {
        v.field("enable"_L1, &R::enable);
        v.field("open_threshold_db"_L1, &R::open_threshold_db);
        v.field("close_threshold_db"_L1, &R::close_threshold_db);
        v.field("attack_time_ms"_L1, &R::attack_time_ms);
        v.field("hold_time_ms"_L1, &R::hold_time_ms);
        v.field("release_time_ms"_L1, &R::release_time_ms);
    }
};

template <>
struct RecordFields<tagTavloAudioEffectParam>
{
    using R = tagTavloAudioEffectParam;
    static void visit(auto& v)
    {
        v.valued("preset"_L1, &R::preset, &R::equalizer);
        v.field("processDelay"_L1, &R::processDelay);
        v.field("processPitch"_L1, &R::processPitch);
        v.field("audioChannelProcessType"_L1, &R::audioChannelProcessType);
        v.field("processVolcalCut"_L1, &R::processVolcalCut);
        v.field("processNoiseSuppress"_L1, &R::processNoiseSuppress);
        v.field("processNoiseGate"_L1, &R::processNoiseGate);
    }
};

template <>
struct RecordFields<tagTavloPresentAudioPreviewParam>
{
    using R = tagTavloPresentAudioPreviewParam;
    static void visit(auto& v)
    {
        v.numbered("audioEnable_"_L1, &R::audioEnable);
        v.field("audioVolume"_L1, &R::audioVolume);
    }
};

template <>
struct RecordFields<tagTavloPresentAudioMixerParam>
{
    using R = tagTavloPresentAudioMixerParam;
    static void visit(auto& v)
    {
        v.numbered("audioEnable_"_L1, &R::audioEnable);
        v.numbered("audioVolume_"_L1, &R::audioVolume);
        v.numbered("audioVolumePGM_"_L1, &R::audioVolumePGM);
        v.numbered("audioVolumePGMDev_"_L1, &R::audioVolumePGMDev);
        v.field("audioVolumePVM"_L1, &R::audioVolumePVM);
    }
};

} // namespace tavlo
