#pragma once

#include <tavlo/TavloPresentChannelID.h>
#include <tavlo/records/RecordTypes.h>

#include <QtGlobal>

#include <array>

/// Number of a sound effect: 0 none, 1 to 5 pitch, 6 to 8 delay, 9 to 24 equalizer.
using TavloAudioChangePreset = quint32;

constexpr bool TavloAudioPresetIsPitch(TavloAudioChangePreset preset) { return preset >= 1 && preset <= 5; }
constexpr bool TavloAudioPresetIsDelay(TavloAudioChangePreset preset) { return preset >= 6 && preset <= 8; }
constexpr bool TavloAudioPresetIsEqualizer(TavloAudioChangePreset preset) { return preset >= 9 && preset <= 24; }

/// Number of a vocal cut: 0 none, 1 prepared but unchanged sound, 2 the whole sound, 3 inside a band.
using TavloAudioVocalCutPreset = quint32;

/// What becomes of the two sides of a stereo source.
enum TavloPresentSourceAudioChannelProcessType : quint32
{
    TavloPresentSourceAudioChannelProcessTypeNone = 0,
    TavloPresentSourceAudioChannelProcessTypeLeftToBoth = 1,
    TavloPresentSourceAudioChannelProcessTypeRightToBoth = 2,
    TavloPresentSourceAudioChannelProcessTypeSwap = 3,
};

struct tagTavloEQualizerParam
{
    std::array<double, 10> gains{}; ///< dB, -20 to 20, for 60, 170, 310, 600, 1000, 3000, 6000, 12000, 14000, 16000 Hz
    double preamp = 0.0;            ///< dB
    qint32 bands = 0;               ///< how many gains are in force
};

struct tagTavloAudioProcessParamDelay
{
    double delayMsValue = 0.0;   ///< milliseconds
    double feedbackValue = 0.0;  ///< dB
    double mixinValue = 0.0;     ///< dB
    double outputWetValue = 0.0; ///< dB
    double outputDryValue = 0.0; ///< dB
    double resampleValue = 0.0;  ///< above 0: a change of the delay stretches what is stored
};

struct tagTavloAudioProcessParamPitch
{
    double centsPitchValue = 0.0;
    double semitonesPitchValue = 0.0;
    double octavesPitchValue = 0.0;
    double windowSizeMsValue = 0.0;   ///< milliseconds
    double overlapSizeMsValue = 0.0;  ///< milliseconds
    double wetMixValue = 0.0;         ///< dB
    double dryMixValue = 0.0;         ///< dB
    double discreteFilterValue = 0.0; ///< a switch
};

struct tagTavloAudioProcessParamVolcalCut
{
    TavloAudioVocalCutPreset preset = 0; ///< 0 off
    double param_Pan = 0.0;              ///< -1 to 1
    double param_Level = 0.0;            ///< -1 full cut to 0 unchanged
    qint32 param_FilterSwitch = 0;       ///< 1: cut inside a band only
    qint32 param_FilterFrequency = 0;    ///< Hz, middle of the band
    double param_FilterQ = 0.0;
};

struct tagTavloAudioProcessParamNoiseSuprress
{
    quint32 enable = 0;
    double level = 0.0;
};

struct tagTavloAudioProcessParamNoiseGate
{
    quint32 enable = 0;
    double open_threshold_db = 0.0;
    double close_threshold_db = 0.0;
    qint32 attack_time_ms = 0;
    qint32 hold_time_ms = 0;
    qint32 release_time_ms = 0;
};

/// The sound filters of one channel.
struct tagTavloAudioEffectParam
{
    TavloAudioChangePreset preset = 0; ///< selects which of equalizer, delay and pitch works
    tagTavloEQualizerParam equalizer;
    tagTavloAudioProcessParamDelay processDelay;
    tagTavloAudioProcessParamPitch processPitch;
    quint32 audioChannelProcessType = 0; ///< a TavloPresentSourceAudioChannelProcessType
    tagTavloAudioProcessParamVolcalCut processVolcalCut;
    tagTavloAudioProcessParamNoiseSuprress processNoiseSuppress;
    tagTavloAudioProcessParamNoiseGate processNoiseGate;
};

struct tagTavloPresentAudioPreviewParam
{
    std::array<qint32, TavloMixedChannelLimit> audioEnable{};
    float audioVolume = 0.0F;
};

/// The mixer. Volumes are factors: 1 leaves the sound as it is.
struct tagTavloPresentAudioMixerParam
{
    tagTavloPresentAudioMixerParam()
    {
        audioVolume.fill(0.8);
        audioVolumePGM.fill(0.8);
        audioVolumePGMDev.fill(0.8);
    }

    std::array<qint32, TavloMixedChannelLimit> audioEnable{}; ///< 0 follows the program, 1 always on, 2 always off
    std::array<double, TavloMixedChannelLimit> audioVolume;
    std::array<double, TavloProgramBusCount> audioVolumePGM;    ///< master of each bus
    std::array<double, TavloProgramBusCount> audioVolumePGMDev; ///< monitor device of each bus
    double audioVolumePVM = 0.0;                                ///< PVM's monitor
};

/// The meters: percent, one for each of up to 8 audio channels; times are of the millisecond clock. It has no XML form.
struct tagTavloPresentAudioLevel
{
    using Meter = std::array<float, 8>;

    std::array<Meter, TavloMixedChannelLimit> sourceLevel{};
    Meter pvmLevel{};
    std::array<Meter, TavloProgramBusCount> pgmLevel{};
    /// Volume at which a channel goes into a bus; 0 when it is not audible there.
    std::array<std::array<float, TavloMixedChannelLimit>, TavloProgramBusCount> pgmBusVolume{};
    std::array<quint32, TavloMixedChannelLimit> sourceTime{}; ///< of the last block
    quint32 pvmTime = 0;
    std::array<quint32, TavloProgramBusCount> pgmTime{};
};
