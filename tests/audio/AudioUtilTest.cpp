#include "audio/AudioSupport.h"

#include <tavlo/TavloPresentUtil.h>
#include <tavlo/records/MediaFormat.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>

namespace tavlo::test {
namespace {

using Words = std::vector<qint16>;

constexpr auto none = TavloPresentSourceAudioChannelProcessTypeNone;
constexpr auto leftToBoth = TavloPresentSourceAudioChannelProcessTypeLeftToBoth;
constexpr auto rightToBoth = TavloPresentSourceAudioChannelProcessTypeRightToBoth;
constexpr auto swapSides = TavloPresentSourceAudioChannelProcessTypeSwap;

template <class Sample>
std::vector<Sample> routed(TavloPresentSourceAudioChannelProcessType type, const std::vector<Sample>& samples,
                           int channels, int bits)
{
    tagTavloAudioInfo format;
    format.channels = channels;
    format.bitsPerSample = bits;
    const BlockPtr block = blockOf(samples);
    EXPECT_EQ(TavloPresentUtil::doAudioChannelProcess(type, 0, block.get(), format), block.get());
    return samplesOf<Sample>(*block);
}

TEST(AudioRouting, MovesTheSidesOfStereo)
{
    const Words words{1, -2, 300, -400, 7};
    EXPECT_EQ(routed(leftToBoth, words, 2, 16), (Words{1, 1, 300, 300, 7}));
    EXPECT_EQ(routed(rightToBoth, words, 2, 16), (Words{-2, -2, -400, -400, 7}));
    EXPECT_EQ(routed(swapSides, words, 2, 16), (Words{-2, 1, -400, 300, 7}));
    EXPECT_EQ(routed(swapSides, std::vector<quint8>{1, 2, 3, 4, 5}, 2, 8), (std::vector<quint8>{2, 1, 4, 3, 5}));
    EXPECT_EQ(routed(swapSides, std::vector<quint8>{}, 2, 8), std::vector<quint8>{});

    EXPECT_EQ(routed(none, words, 2, 16), words);
    EXPECT_EQ(routed(static_cast<TavloPresentSourceAudioChannelProcessType>(4), words, 2, 16), words);
    for (const int channels : {1, 6})
        EXPECT_EQ(routed(swapSides, words, channels, 16), words);
    EXPECT_EQ(routed(swapSides, words, 2, 0), words);
    EXPECT_EQ(TavloPresentUtil::doAudioChannelProcess(swapSides, 0, nullptr, tagTavloAudioInfo()), nullptr);
}

Words constant(int value, size_t count = 960) { return Words(count, qint16(value)); }

std::array<float, 9> levelsOf(const Words& samples, int channels = 1, int bits = 16, double scale = 1.0)
{
    std::array<float, 9> levels;
    levels.fill(-1.0F);
    TavloPresentUtil::updateAudioLevelData(levels.data(), samples.data(), unsigned(samples.size() * 2), channels, bits,
                                           0, scale);
    return levels;
}

TEST(AudioMeter, CountsTwoPercentForADecibelOfTheMean)
{
    Words samples;
    for (int i = 0; i < 4800; ++i)
        samples.insert(samples.end(), {qint16(i % 2 ? -3277 : 3277), 104}); // -20 dB and -49.97 dB
    const auto both = levelsOf(samples, 2);
    EXPECT_EQ(both[0], 60.0F);
    EXPECT_EQ(both[1], 0.0F);
    EXPECT_EQ(both[2], -1.0F);
    EXPECT_EQ(levelsOf(samples, 2, 0, 0.25)[0], 15.0F);
    EXPECT_EQ(levelsOf(samples, 2, 16, -1.0)[0], 0.0F);
    // -6.02 dB; -1 dB is the loudest that shows; full scale reads as silence
    for (const auto& [value, level] : {std::pair(16384, 88.0F), {29205, 98.0F}, {0, 0.0F}, {50, 0.0F}, {-32768, 0.0F}})
        EXPECT_EQ(levelsOf(constant(value))[0], level) << value;
    Words half = constant(0);
    std::fill_n(half.begin(), 480, qint16(16384)); // the first half is looked at
    EXPECT_EQ(levelsOf(half)[0], 88.0F);
}

TEST(AudioMeter, KeepsToItsEightChannelsAndToTheBuffer)
{
    const auto many = levelsOf(constant(16384, 1024), 16);
    EXPECT_EQ(many[7], 88.0F);
    EXPECT_EQ(many[8], -1.0F);
    const Words sound = constant(16384);
    // nothing, less than a frame in the first half, no channel, no such sample
    for (const auto& levels : {levelsOf({}, 2), levelsOf({16384}, 2), levelsOf(sound, 0), levelsOf(sound, 1, 1)})
        EXPECT_EQ(levels[0], -1.0F);
    for (const int bits : {8, 24, 32})
        EXPECT_EQ(levelsOf(sound, 2, bits)[1], 88.0F) << bits;
}

TEST(AudioPresets, ChooseTheirFamily)
{
    for (TavloAudioChangePreset preset = 0; preset <= 26; ++preset) {
        tagTavloAudioEffectParam param;
        TavloPresentUtil::loadAudioChangePreset(preset, param);
        EXPECT_EQ(param.preset, preset);
        EXPECT_EQ(param.processPitch.windowSizeMsValue != 0.0, preset >= 1 && preset <= 5) << preset;
        EXPECT_EQ(param.processDelay.delayMsValue != 0.0, preset >= 6 && preset <= 8) << preset;
        EXPECT_EQ(param.equalizer.bands != 0, preset >= 9 && preset <= 24) << preset;
    }
}

TEST(AudioPresets, NumbersOfOtherFamiliesLeaveTheRecord)
{
    tagTavloAudioEffectParam param;
    TavloPresentUtil::loadAudioEQPreset(24, param);
    const auto gains = param.equalizer.gains;
    EXPECT_EQ(gains[3], -6.0);
    param.equalizer.preamp = 0.0;
    param.equalizer.bands = 0;
    TavloPresentUtil::loadAudioEQPreset(8, param); // but for these
    EXPECT_EQ(param.equalizer.gains, gains);
    EXPECT_EQ(param.equalizer.preamp, 8.0);
    EXPECT_EQ(param.equalizer.bands, 10);
    EXPECT_EQ(param.preset, 8U);

    TavloPresentUtil::loadAudioDelayPreset(7, param.processDelay);
    TavloPresentUtil::loadAudioDelayPreset(9, param.processDelay);
    EXPECT_EQ(param.processDelay.delayMsValue, 1500.0);
    TavloPresentUtil::loadAudioPitchPreset(5, param.processPitch);
    TavloPresentUtil::loadAudioPitchPreset(6, param.processPitch);
    EXPECT_EQ(param.processPitch.octavesPitchValue, 1.0);
    TavloPresentUtil::loadAudioVolcalCutPreset(3, param.processVolcalCut);
    TavloPresentUtil::loadAudioVolcalCutPreset(4, param.processVolcalCut);
    EXPECT_EQ(param.processVolcalCut.preset, 4U);
    EXPECT_EQ(param.processVolcalCut.param_FilterFrequency, 2000);
}

} // namespace
} // namespace tavlo::test
