#include "audio/Audibility.h"
#include "audio/AudioMonitor.h"
#include "audio/DitheredGain.h"
#include "channels/ChannelSound.h"

#include "audio/AudioSupport.h"
#include "audio/FileDevice.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace tavlo::test {
namespace {

TEST(ChannelAudio, FollowsThePictureThroughATransition)
{
    struct Case
    {
        int enable;
        double position;
        bool onProgram, onNext;
        double mixed; ///< of a volume of 0.8
    };
    for (const Case& c : {Case{0, 0.0, true, false, 0.8},
                          {0, 0.0, false, true, 0.0},
                          {0, 0.25, true, false, 0.6},
                          {0, 0.25, false, true, 0.2},
                          {0, 0.25, true, true, 0.8},
                          {0, 0.25, false, false, 0.0},
                          {0, 1.0, true, false, 0.0},
                          {0, 1.0, false, true, 0.8},
                          {1, 0.5, false, false, 0.8},
                          {2, 0.0, true, true, 0.0},
                          {3, 0.0, true, true, 0.0}}) {
        const auto heard = audibilityOf(c.enable, 0.8, c.position, c.onProgram, c.onNext);
        EXPECT_NEAR(heard.mixed(), c.mixed, 1e-12) << c.enable << " at " << c.position;
        EXPECT_TRUE(c.mixed != 0.0 || heard.volume == 0.8) << "what the meter shows";
    }
}

TEST(ChannelAudio, DitheredGainKeepsTheMeanAndSaturates)
{
    for (const double volume : {0.0, 0.3, 1.5}) {
        std::vector<qint16> samples(100'000, 1001);
        scaleWithDither(samples.data(), 200'000, 16, volume);
        double sum = 0;
        for (const qint16 s : samples) {
            ASSERT_NEAR(s, 1001 * volume, 2) << volume;
            sum += s;
        }
        EXPECT_NEAR(sum / 100'000, 1001 * std::floor(volume * 1024) / 1024, 0.1) << volume;
        // Noise, not one value; at a volume of 0 the dither stays below a sample.
        EXPECT_EQ(std::count(samples.begin(), samples.end(), samples[0]) < 100'000, volume != 0.0) << volume;
    }
    std::vector<qint16> loud{32767, -32768};
    scaleWithDither(loud.data(), 4, 16, 2.0);
    EXPECT_EQ(loud, (std::vector<qint16>{32767, -32768}));
    std::vector<qint8> bytes{100, -100, 50};
    scaleWithDither(bytes.data(), 3, 8, 2.0);
    EXPECT_EQ(bytes[0], 127);
    EXPECT_EQ(bytes[1], -128);
    EXPECT_NEAR(bytes[2], 100, 1);
}

TEST(ChannelAudio, TheEffectsRoutingCountsBeforeTheSources)
{
    ChannelSound sound;
    sound.create();
    sound.setRouting(TavloPresentSourceAudioChannelProcessTypeSwap);
    const auto routed = [&sound] {
        const BlockPtr block = blockOf(std::vector<qint16>{1, 2, 1, 2});
        return samplesOf<qint16>(*sound.process(block.get(), {}))[1];
    };
    EXPECT_EQ(routed(), 1);
    tagTavloAudioEffectParam effect;
    effect.audioChannelProcessType = TavloPresentSourceAudioChannelProcessTypeRightToBoth;
    sound.setEffect(effect);
    EXPECT_EQ(routed(), 2);
    sound.destroy();
}

TEST(ChannelAudio, ALMonitorPlaysAtItsVolume)
{
    FileDevice& device = FileDevice::instance();
    AudioMonitor monitor;
    const std::vector<qint16> words(9600, 16384);
    for (const char* name : {"None", "Disable", "Nowhere"}) {
        EXPECT_FALSE(monitor.open(name, {}));
        monitor.write(words.data(), 19200, 0.5);
    }
    const auto expectPeak = [&](int bits, const void* samples, double volume, double tolerance) {
        tagTavloAudioInfo format;
        format.bitsPerSample = bits;
        ASSERT_TRUE(monitor.open("Auto", format));
        monitor.write(samples, 1200 * bits, volume);
        EXPECT_TRUE(device.play(300));
        monitor.close();
        const auto played = device.played();
        EXPECT_NEAR(*std::max_element(played.begin(), played.end()), 16384 * volume, tolerance) << bits;
    };
    expectPeak(16, words.data(), 1.0, 2);
    expectPeak(16, words.data(), 0.25, 2);
    expectPeak(8, std::vector<quint8>(9600, 192).data(), 0.25, 260); // a step of eight bits
}

} // namespace
} // namespace tavlo::test
