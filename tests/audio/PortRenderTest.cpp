#include "TavloAudioPortModule/ITavloAudioPortRender.h"

#include "audio/AudioSupport.h"
#include "audio/FileDevice.h"
#include "base/CTempldateHelper.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace tavlo::test {
namespace {

constexpr int rate = 48000;

class ALPortRender : public testing::Test
{
protected:
    ALPortRender() : render("TavloAudioPortModule", "CreateTavloAudioPortRenderOutput") { render.create(); }

    void SetUp() override { ASSERT_TRUE(render.isReady()); }

    template <class Sample>
    bool write(const std::vector<Sample>& samples)
    {
        return render->write(samples.data(), int(samples.size() * sizeof(Sample)), 0, 0);
    }

    FileDevice& device = FileDevice::instance(); // before the library looks at the machine
    CTempldateHelper<ITavloAudioPortRender> render;
};

/// A tone on the left, nothing on the right.
std::vector<qint16> leftTone(int milliseconds)
{
    std::vector<qint16> samples;
    for (const float s : sine(500, rate, rate / 1000 * milliseconds, 0.5))
        samples.insert(samples.end(), {qint16(std::lround(s * 32767)), 0});
    return samples;
}

/// The part of a channel from its first to its last sound.
std::vector<double> soundOf(const std::vector<qint16>& samples, size_t first)
{
    std::vector<double> out;
    for (size_t i = first; i < samples.size(); i += 2)
        out.push_back(samples[i] / 32767.0);
    const auto heard = [](double s) { return std::abs(s) > 0.001; };
    out.erase(out.begin(), std::find_if(out.begin(), out.end(), heard));
    out.erase(std::find_if(out.rbegin(), out.rend(), heard).base(), out.end());
    return out;
}

TEST_F(ALPortRender, PlaysWhatIsWrittenOnTheDefaultDevice)
{
    const LogCapture log;
    for (const char* name : {"", "Auto"}) {
        ASSERT_TRUE(render->open(name, 2, rate, 16));
        for (int i = 0; i < 10; ++i)
            EXPECT_TRUE(write(leftTone(20)));
        EXPECT_TRUE(device.play(400));
        render->close();
        const auto played = device.played();
        const auto left = soundOf(played, 0);
        EXPECT_NEAR(double(left.size()), rate * 0.2, 100);
        EXPECT_NEAR(countedFrequency(left, 100, left.size() - 100, rate), 500.0, 1.0);
        EXPECT_NEAR(loudness(left, 100, left.size() - 100), 20 * std::log10(0.5) - 3.01, 0.5);
        EXPECT_TRUE(soundOf(played, 1).empty());
    }
    EXPECT_EQ(log.lines().size(), 0);
}

TEST_F(ALPortRender, DropsTheOldestBeyondAQuarterOfASecond)
{
    const LogCapture log;
    ASSERT_TRUE(render->open({}, 2, rate, 16));
    for (int i = 0; i < 50; ++i) // a second at once, each 20 ms a little louder
        EXPECT_TRUE(write(std::vector<qint16>(1920, qint16(100 * (i + 1)))));
    EXPECT_TRUE(device.play(600));
    EXPECT_EQ(log.count("dropped"), 1);
    render->close();
    EXPECT_EQ(log.count("ms in all"), 1);
    const auto heard = soundOf(device.played(), 0);
    EXPECT_LE(heard.size(), rate / 4U + rate / 50U); // and what the device itself had taken
    EXPECT_GE(heard.size(), rate / 10U);
    ASSERT_FALSE(heard.empty());
    EXPECT_NEAR(heard.back(), 5000 / 32767.0, 1e-3); // the newest is there
}

TEST_F(ALPortRender, GoesOnAfterItRanDry)
{
    ASSERT_TRUE(render->open({}, 1, 44100, 8));
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(write(std::vector<quint8>(441 * 10, 192)));
        EXPECT_TRUE(device.play(300));
    }
    render->close();
    const auto played = device.played();
    const auto heard = std::count_if(played.begin(), played.end(), [](qint16 s) { return std::abs(s) > 1000; });
    EXPECT_NEAR(double(heard), 2 * rate * 0.2, 400);
}

TEST_F(ALPortRender, NamesWhatItCannotOpen)
{
    const LogCapture log;
    EXPECT_FALSE(render->open("Loudspeaker on the moon", 2, rate, 16));
    EXPECT_EQ(log.count("Loudspeaker on the moon"), 1);
    EXPECT_FALSE(render->open({}, 3, rate, 16));
    EXPECT_FALSE(render->open({}, 2, rate, 24));
    EXPECT_FALSE(render->open({}, 2, 0, 16));
    EXPECT_EQ(log.count("cannot play"), 3);
    EXPECT_FALSE(write(leftTone(20)));
    render->close();
    EXPECT_TRUE(render.isReady());
}

} // namespace
} // namespace tavlo::test
