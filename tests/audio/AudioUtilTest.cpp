#include "audio/AudioSupport.h"

#include <tavlo/TavloPresentUtil.h>
#include <tavlo/records/MediaFormat.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>

namespace tavlo::test {
namespace {

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
    const std::vector<qint16> words{1, -2, 300, -400, 7};
    EXPECT_EQ(routed(leftToBoth, words, 2, 16), (std::vector<qint16>{1, 1, 300, 300, 7}));
    EXPECT_EQ(routed(rightToBoth, words, 2, 16), (std::vector<qint16>{-2, -2, -400, -400, 7}));
    EXPECT_EQ(routed(swapSides, words, 2, 16), (std::vector<qint16>{-2, 1, -400, 300, 7}));
    EXPECT_EQ(routed(swapSides, std::vector<quint8>{1, 2, 3, 4, 5}, 2, 8), (std::vector<quint8>{2, 1, 4, 3, 5}));
    EXPECT_EQ(routed(swapSides, std::vector<quint8>{}, 2, 8), std::vector<quint8>{});

    EXPECT_EQ(routed(none, words, 2, 16), words);
    EXPECT_EQ(routed(static_cast<TavloPresentSourceAudioChannelProcessType>(4), words, 2, 16), words);
    for (const int channels : {1, 6})
        EXPECT_EQ(routed(swapSides, words, channels, 16), words);
    EXPECT_EQ(routed(swapSides, words, 2, 0), words);
    EXPECT_EQ(TavloPresentUtil::doAudioChannelProcess(swapSides, 0, nullptr, tagTavloAudioInfo()), nullptr);
}

class AudioMeter : public testing::Test
{
protected:
    void measure(const std::vector<qint16>& samples, int channels, int bits = 16, double scale = 1.0)
    {
        levels.fill(-1.0F);
        TavloPresentUtil::updateAudioLevelData(levels.data(), samples.data(), static_cast<unsigned>(samples.size() * 2),
                                               channels, bits, 0, scale);
    }

    std::array<float, 9> levels{};
};

TEST_F(AudioMeter, CountsTwoPercentForADecibelOfTheMean)
{
    std::vector<qint16> samples(9600);
    for (size_t i = 0; i < samples.size(); i += 2) {
        samples[i] = i % 4 == 0 ? 3277 : -3277;    // -20 dB
        samples[i + 1] = static_cast<qint16>(104); // -49.97 dB
    }
    measure(samples, 2);
    EXPECT_EQ(levels[0], 60.0F);
    EXPECT_EQ(levels[1], 0.0F);
    EXPECT_EQ(levels[2], -1.0F);
    measure(samples, 2, 0, 0.25);
    EXPECT_EQ(levels[0], 15.0F);
    measure(samples, 2, 16, -1.0);
    EXPECT_EQ(levels[0], 0.0F);
    measure(std::vector<qint16>(960, 16384), 1); // -6.02 dB
    EXPECT_EQ(levels[0], 88.0F);
    samples.assign(960, 0);
    std::fill_n(samples.begin(), 480, static_cast<qint16>(16384)); // the first half is looked at
    measure(samples, 1);
    EXPECT_EQ(levels[0], 88.0F);
    measure(std::vector<qint16>(960, 29205), 1); // -1 dB is the loudest that shows
    EXPECT_EQ(levels[0], 98.0F);
    for (const int silent : {0, 50, -32768}) { // full scale reads as silence
        measure(std::vector<qint16>(960, static_cast<qint16>(silent)), 1);
        EXPECT_EQ(levels[0], 0.0F);
    }
}

TEST_F(AudioMeter, KeepsToItsEightChannelsAndToTheBuffer)
{
    measure(std::vector<qint16>(16 * 64, 16384), 16);
    EXPECT_EQ(levels[7], 88.0F);
    EXPECT_EQ(levels[8], -1.0F);
    measure({}, 2);
    EXPECT_EQ(levels[0], -1.0F);
    measure({16384}, 2); // less than a frame in the first half
    EXPECT_EQ(levels[0], -1.0F);
    measure(std::vector<qint16>(960, 16384), 0);
    measure(std::vector<qint16>(960, 16384), 1, 1);
    EXPECT_EQ(levels[0], -1.0F);
    for (const int bits : {8, 24, 32}) {
        measure(std::vector<qint16>(960, 16384), 2, bits);
        EXPECT_EQ(levels[1], 88.0F) << bits;
    }
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
    EXPECT_EQ(param.processDelay.feedbackValue, -120.0);
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
