#include <tavlo/TavloPresentUtil.h>

#include <tavlo/records/AudioRecords.h>

#include <array>

namespace {

constexpr TavloAudioChangePreset firstEqualizer = 9;
constexpr TavloAudioChangePreset firstPitch = 1;
constexpr TavloAudioVocalCutPreset firstVocalCut = 1;

/// dB, for the ten bands from the lowest up.
constexpr std::array<std::array<double, 10>, 16> equalizerGains{{
    {0, 0, 4, 6, 6, 6, 4, 0, 0, 0},             // 9
    {10, 7, 2, 0, 0, -6, -8, -8, 0, 0},         // 10
    {14, 14, 14, 8, 4, -4, -9, -10, -11, -11},  // 11
    {-10, -10, -10, -5, 3, 11, 16, 16, 16, 17}, // 12
    {7, 6, 0, -8, -5, 2, 9, 11, 12, 12},        // 13
    {5, 10, 5, -4, 0, -6, -8, -8, 0, 0},        // 14
    {10, 10, 6, 6, 0, -5, -5, -5, 0, 0},        // 15
    {-5, 0, 4, 5, 6, 6, 4, 3, 3, 2},            // 16
    {7, 7, 0, 0, 0, 0, 0, 0, 7, 7},             // 17
    {-2, 5, 7, 8, 5, -1, -3, -3, -2, -2},       // 18
    {0, 0, -1, -6, 0, -7, -7, 0, 0, 0},         // 19
    {8, 5, -6, -8, -4, 4, 9, 11, 11, 11},       // 20
    {5, 2, -1, -3, -1, 4, 9, 10, 11, 12},       // 21
    {-3, -5, -5, -1, 4, 6, 9, 10, 11, 10},      // 22
    {4, 4, 2, -1, -5, -6, -4, -1, 3, 9},        // 23
    {8, 6, 0, -6, -5, 0, 8, 10, 10, 9},         // 24
}};

struct PitchPreset
{
    double semitones;
    double octaves;
};

constexpr std::array pitches{PitchPreset{-8, 0}, PitchPreset{-4, 0}, PitchPreset{3, 0}, PitchPreset{6, 0},
                             PitchPreset{0, 1}};

constexpr std::array vocalCuts{
    tagTavloAudioProcessParamVolcalCut{1, 0.0, 0.0, 0, 10, 1.0},
    tagTavloAudioProcessParamVolcalCut{2, 0.0, -1.0, 0, 10, 1.0},
    tagTavloAudioProcessParamVolcalCut{3, 0.0, -1.0, 1, 2000, 0.1},
};

} // namespace

void TavloPresentUtil::loadAudioChangePreset(TavloAudioChangePreset preset, tagTavloAudioEffectParam& param)
{
    if (TavloAudioPresetIsPitch(preset))
        loadAudioPitchPreset(preset, param.processPitch);
    else if (TavloAudioPresetIsDelay(preset))
        loadAudioDelayPreset(preset, param.processDelay);
    else if (TavloAudioPresetIsEqualizer(preset))
        loadAudioEQPreset(preset, param);
    param.preset = preset;
}

void TavloPresentUtil::loadAudioEQPreset(TavloAudioChangePreset preset, tagTavloAudioEffectParam& param)
{
    if (TavloAudioPresetIsEqualizer(preset))
        param.equalizer.gains = equalizerGains[preset - firstEqualizer];
    param.equalizer.preamp = 8.0;
    param.equalizer.bands = 10;
    param.preset = preset;
}

void TavloPresentUtil::loadAudioDelayPreset(TavloAudioChangePreset preset, tagTavloAudioProcessParamDelay& param)
{
    if (!TavloAudioPresetIsDelay(preset))
        return;
    param = {300.0, -5.0, 0.0, -6.0, 0.0, 0.0};
    if (preset == 6) {
        param.mixinValue = 6.0;
    } else if (preset == 7) {
        param.delayMsValue = 1500.0;
        param.feedbackValue = -120.0;
    }
}

void TavloPresentUtil::loadAudioPitchPreset(TavloAudioChangePreset preset, tagTavloAudioProcessParamPitch& param)
{
    if (!TavloAudioPresetIsPitch(preset))
        return;
    const PitchPreset& pitch = pitches[preset - firstPitch];
    param = {
        .centsPitchValue = 0.0,
        .semitonesPitchValue = pitch.semitones,
        .octavesPitchValue = pitch.octaves,
        .windowSizeMsValue = 50.0,
        .overlapSizeMsValue = 20.0,
        .wetMixValue = 0.0,
        .dryMixValue = -120.0,
        .discreteFilterValue = 1.0,
    };
}

void TavloPresentUtil::loadAudioVolcalCutPreset(TavloAudioVocalCutPreset preset,
                                                tagTavloAudioProcessParamVolcalCut& param)
{
    if (preset >= firstVocalCut && preset - firstVocalCut < vocalCuts.size())
        param = vocalCuts[preset - firstVocalCut];
    else
        param.preset = preset;
}
