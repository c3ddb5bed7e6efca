#include <tavlo/ITavloAudioPreviewObject.h>
#include <tavlo/InterfacePtr.h>
#include <tavlo/TavloPresentUtil.h>
#include <tavlo/records/MediaFormat.h>

#include "audio/AudioSupport.h"
#include "audio/FileDevice.h"
#include "support/LogCapture.h"

#include <QElapsedTimer>
#include <QFile>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace tavlo::test {
namespace {

/// Keeps what is mixed, and lets a source hand over its sound at the pace of the mix.
class Sink final : public Implements<Sink, ITavloAudioPreviewObjectSink>
{
public:
    void OnAudioPreviewSamples(ITavloAudioPreviewObject*, const void* samples, int length,
                               const tagTavloAudioInfo& given) override
    {
        {
            const std::lock_guard guard(_lock);
            _format = given;
            const auto* const bytes = static_cast<const quint8*>(samples);
            _mixed.insert(_mixed.end(), bytes, bytes + length);
            const quint8 silence = given.bitsPerSample == 8 ? 128 : 0;
            sounds = std::any_of(bytes, bytes + length, [silence](quint8 byte) { return byte != silence; });
        }
        if (feed)
            feed();
        ++blocks;
    }

    /// What was mixed since it was asked for last.
    std::vector<quint8> mixed()
    {
        const std::lock_guard guard(_lock);
        return std::exchange(_mixed, {});
    }

    /// The left channel of it, in stereo of 16 bits, after that much more of the mix.
    std::vector<double> left(int count = 0)
    {
        EXPECT_TRUE(hear(count));
        const auto bytes = mixed();
        std::vector<double> samples;
        for (size_t i = 0; i + 4 <= bytes.size(); i += 4)
            samples.push_back(qint16(bytes[i] | bytes[i + 1] << 8) / 32768.0);
        return samples;
    }

    tagTavloAudioInfo format()
    {
        const std::lock_guard guard(_lock);
        return _format;
    }

    /// Waits for that much more of the mix.
    bool hear(int count)
    {
        const int enough = blocks + count;
        return becomesTrue([&] { return blocks >= enough; });
    }

    std::function<void()> feed; ///< to be set before the mix runs
    std::atomic<int> blocks{0};
    std::atomic<bool> sounds{false}; ///< the last block is no silence

private:
    std::mutex _lock;
    std::vector<quint8> _mixed;
    tagTavloAudioInfo _format;
};

template <class Sample>
double loudest(const std::vector<Sample>& samples)
{
    const auto [lowest, highest] = std::minmax_element(samples.begin(), samples.end());
    return samples.empty() ? 0 : std::max(double(*highest), -double(*lowest));
}

class ALAudioPreview : public testing::Test
{
protected:
    ALAudioPreview() { object->setSink(&sink); }

    ~ALAudioPreview() override { object->close(); }

    /// From the next opening on a constant sound of half the full scale comes to a channel.
    void feedChannel(quint32 channel)
    {
        fed = 0;
        sink.sounds = false;
        sink.feed = [this, channel, block = std::shared_ptr(blockOf(std::vector<qint16>(960, 16384)))] {
            fed += 10'000;
            object->writeAudio(channel, 0, deviceVolume, block.get(), {}, volume);
        };
    }

    bool waitForSound()
    {
        return becomesTrue([&] { return sink.sounds.load(); });
    }

    /// Microseconds.
    qint64 played(quint32 channel)
    {
        qint64 time = 0;
        object->getTime(channel, &time);
        return time;
    }

    /// What the mix holds in the end at these volumes.
    double heardWith(double ofDevice, double ofChannel)
    {
        deviceVolume = ofDevice;
        volume = ofChannel;
        sink.left(10);
        return loudest(sink.left(5));
    }

    /// The mix, from 100 ms after the sound began on, has no gap.
    void expectNoGap()
    {
        const auto heard = sink.left();
        ASSERT_GT(heard.size(), 9600U);
        EXPECT_GT(*std::min_element(heard.begin() + 4800, heard.end()), 0.49);
    }

    std::atomic<double> deviceVolume{1.0};
    std::atomic<double> volume{1.0};
    std::atomic<qint64> fed{0}; ///< microseconds
    Sink sink;
    FileDevice& device = FileDevice::instance(); // before the sound library looks at the machine
    InterfacePtr<ITavloAudioPreviewObject> object{TavloPresentUtil::createAudioPreviewObject()};
};

TEST_F(ALAudioPreview, MixesWithoutADevice)
{
    const LogCapture log;
    qint64 time = 5;
    EXPECT_EQ(object->getTime(3, &time), -1); // closed
    EXPECT_EQ(time, 0);
    for (const char* name : {"None", "Disable"}) {
        sink.feed = {};
        object->open(name, 48000, 2, 16, 38);
        EXPECT_EQ(loudest(sink.left(10)), 0.0);
        object->close();

        feedChannel(3);
        object->open(name, 48000, 2, 16, 38);
        ASSERT_TRUE(waitForSound());
        EXPECT_NEAR(heardWith(1.0, 1.0), 0.5, 0.001);
        EXPECT_NEAR(heardWith(1.0, 0.25), 0.125, 0.001);
        object->setVolume(0.1F); // the device's alone
        EXPECT_NEAR(heardWith(0.5, 0.25), 0.0625, 0.001);
        EXPECT_EQ(object->getTime(38, &time), -1);
        object->close();
        sink.left();
    }
    EXPECT_EQ(log.count("succeeded to open audio render None , 48000 , 2 , 16"), 2);
    EXPECT_EQ(log.lines().size(), 4);
}

TEST_F(ALAudioPreview, SettlesPausesAndFlushes)
{
    feedChannel(3);
    QElapsedTimer settling;
    settling.start();
    object->open("None", 8000, 1, 8, 4);
    ASSERT_TRUE(waitForSound());
    EXPECT_GE(settling.elapsed(), 240);
    EXPECT_GE(played(3) + 200'000, fed) << "what was left out meanwhile has its time as well";
    EXPECT_EQ(sink.format().audioFourcc, tavloFourcc("u8  "));
    EXPECT_EQ(sink.format().channels, 1);

    object->pause(3, 0);
    ASSERT_TRUE(sink.hear(3));
    const qint64 before = played(3);
    sink.mixed();
    ASSERT_TRUE(sink.hear(5));
    EXPECT_EQ(played(3), before);
    const auto paused = sink.mixed();
    EXPECT_GE(paused.size(), 400U);
    EXPECT_EQ(paused, std::vector<quint8>(paused.size(), 128)); // silence of 8 bits
    object->resume(3, 0);
    EXPECT_TRUE(becomesTrue([&] { return played(3) > before; }));
    object->flush(3, true);
    EXPECT_TRUE(waitForSound());
    object->flush(4, true); // no such channel
    object->writeAudio(ITavloAudioPreviewObject::allChannels, 0, 0.0, nullptr, {}, 1.0);
}

TEST_F(ALAudioPreview, AMissingDeviceIsToldAndTriedAgainWhileTheMixGoesOn)
{
    const LogCapture log;
    feedChannel(1);
    object->open("Loudspeaker on the moon", 48000, 2, 16, 2);
    ASSERT_TRUE(waitForSound());
    sink.left();
    ASSERT_TRUE(becomesTrue([&] { return log.count("open audio preview again ") == 2; }));
    EXPECT_GE(log.count("[impl\\TavloAudioPreviewObject-"), 2);
    EXPECT_GE(log.count("TavloAudioPreviewObject::openAudioRenderInner] openAudioRender: "
                        "_audioDeviceContext.initGLAudioDevice Loudspeaker on the moon , 48000 , 2 , 16"),
              2);
    EXPECT_GE(log.count("failed to create audio render !!!"), 2);
    expectNoGap();
}

TEST_F(ALAudioPreview, PlaysOnADeviceOfTheListAndAgainAfterItWasPulledOut)
{
    const QStringList devices = TavloPresentUtil::soundDevices();
    ASSERT_EQ(devices.size(), 1);
    const LogCapture log;
    feedChannel(0);
    object->setVolume(0.5F);
    object->open(devices.first(), 48000, 2, 16, 2);
    ASSERT_TRUE(waitForSound());
    sink.left();
    device.unplug(true);
    ASSERT_TRUE(becomesTrue([&] { return log.count("sound mix: the sound device has gone") == 1; }));
    device.unplug(false);
    ASSERT_TRUE(becomesTrue([&] { return log.count("succeeded to open audio render ") == 2; }));
    EXPECT_EQ(log.count("open audio preview again "), 1);
    ASSERT_TRUE(device.play(1000));
    expectNoGap();
    object->close();

    const auto heard = device.played();
    EXPECT_NEAR(loudest(heard), 8192, 20);
    EXPECT_GT(std::count_if(heard.begin(), heard.end(), [](qint16 s) { return s > 8000; }), 2 * 24000);
}

TEST_F(ALAudioPreview, ADeviceThatOpensLateDelaysNobody)
{
    const LogCapture log;
    device.makeLate();
    feedChannel(0);
    object->open("Auto", 48000, 2, 16, 2);
    ASSERT_TRUE(waitForSound());
    EXPECT_EQ(log.count("succeeded"), 0);
    std::thread reader([path = device.path()] {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Unbuffered));
        std::array<char, 4096> content;
        while (file.read(content.data(), content.size()) > 0) {
        }
    });
    EXPECT_TRUE(becomesTrue([&] { return log.count("succeeded to open audio render ") == 1; }));
    object->close();
    reader.join();
    device.makePrompt();
}

// What the thread sanitizer looks at.
TEST_F(ALAudioPreview, OpensClosesAndWritesOnThreadsOfTheirOwn)
{
    std::atomic<bool> stop{false};
    std::vector<std::thread> writers;
    for (quint32 channel = 0; channel < 2; ++channel) {
        writers.emplace_back([&, channel] {
            const BlockPtr block = blockOf(std::vector<qint16>(960, 1000));
            for (int turn = 0; !stop; ++turn) {
                object->writeAudio(channel, 0, 0.5 + turn % 2, block.get(), {}, turn % 5 * 0.1);
                played(channel);
                object->setVolume(0.5F);
                if (turn % 50 == 0)
                    object->flush(channel, turn % 100 == 0);
                if (turn % 50 == 10)
                    object->pause(channel, 0);
                if (turn % 50 == 20)
                    object->resume(channel, 0);
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
        });
    }
    for (const char* name : {"None", "Auto", "Nowhere", "Auto"}) {
        object->open(name, 48000, 2, 16, 2);
        EXPECT_TRUE(sink.hear(40));
        if (name[1] == 'u')
            object->close();
    }
    stop = true;
    for (std::thread& writer : writers)
        writer.join();
}

} // namespace
} // namespace tavlo::test
