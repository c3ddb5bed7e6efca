#include <tavlo/ITavloAudioPreviewObject.h>
#include <tavlo/InterfacePtr.h>
#include <tavlo/TavloPresentUtil.h>
#include <tavlo/records/MediaFormat.h>

#include "audio/AudioSupport.h"
#include "audio/FileDevice.h"
#include "support/LogCapture.h"

#include <QFile>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <thread>

namespace tavlo::test {
namespace {

/// Keeps what is mixed.
class Sink final : public Implements<Sink, ITavloAudioPreviewObjectSink>
{
public:
    void OnAudioPreviewSamples(ITavloAudioPreviewObject*, const void* samples, int length,
                               const tagTavloAudioInfo& given) override
    {
        const std::lock_guard guard(lock);
        format = given;
        const auto* const bytes = static_cast<const quint8*>(samples);
        mixed.insert(mixed.end(), bytes, bytes + length);
        blocks = blocks + 1;
    }

    /// The left channel of a stereo mix of 16 bits, since it was asked for last.
    std::vector<double> left()
    {
        const std::lock_guard guard(lock);
        std::vector<double> samples;
        for (size_t i = 0; i + 4 <= mixed.size(); i += 4)
            samples.push_back(static_cast<qint16>(mixed[i] | mixed[i + 1] << 8) / 32768.0);
        mixed.clear();
        return samples;
    }

    /// Waits for that much more of the mix.
    bool hear(int count)
    {
        const int enough = blocks + count;
        return becomesTrue([&] { return blocks >= enough; });
    }

    std::mutex lock;
    std::vector<quint8> mixed;
    tagTavloAudioInfo format;
    std::atomic<int> blocks{0};
};

double loudest(const std::vector<double>& samples)
{
    double peak = 0;
    for (const double s : samples)
        peak = std::max(peak, std::abs(s));
    return peak;
}

class ALAudioPreview : public testing::Test
{
protected:
    ALAudioPreview() : object((FileDevice::instance(), TavloPresentUtil::createAudioPreviewObject()))
    {
        object->setSink(&sink);
    }

    ~ALAudioPreview() override { object->close(); }

    /// Writes 20 ms blocks of a constant sound at the pace of the mix, until something is so.
    bool writeUntil(quint32 channel, double deviceVolume, double volume, const std::function<bool()>& done)
    {
        const BlockPtr block = blockOf(std::vector<qint16>(1920, 16384));
        int next = sink.blocks;
        return becomesTrue([&] {
            for (; next <= sink.blocks; next += 2)
                object->writeAudio(channel, 0, deviceVolume, block.get(), {}, volume);
            return done();
        });
    }

    bool isPlaying(quint32 channel)
    {
        qint64 time = 0;
        return object->getTime(channel, &time) == 0 && time > 0;
    }

    /// What the mix holds in the end at these volumes.
    double heardWith(double deviceVolume, double volume)
    {
        const int begun = sink.blocks;
        EXPECT_TRUE(writeUntil(3, deviceVolume, volume, [&] { return sink.blocks > begun + 20; }));
        sink.left();
        EXPECT_TRUE(writeUntil(3, deviceVolume, volume, [&] { return sink.blocks > begun + 40; }));
        return loudest(sink.left());
    }

    Sink sink;
    InterfacePtr<ITavloAudioPreviewObject> object;
};

TEST_F(ALAudioPreview, MixesWithoutADevice)
{
    const LogCapture log;
    qint64 time = 5;
    EXPECT_EQ(object->getTime(3, &time), -1); // closed
    EXPECT_EQ(time, 0);
    for (const char* name : {"None", "Disable"}) {
        object->open(QString::fromLatin1(name), 48000, 2, 16, 38);
        ASSERT_TRUE(sink.hear(10));
        EXPECT_EQ(loudest(sink.left()), 0.0);
        ASSERT_TRUE(writeUntil(3, 1.0, 1.0, [&] { return isPlaying(3); }));
        EXPECT_NEAR(heardWith(1.0, 1.0), 0.5, 0.001);
        EXPECT_NEAR(heardWith(1.0, 0.25), 0.125, 0.001);
        object->setVolume(0.1F); // the device's alone
        EXPECT_NEAR(heardWith(0.5, 0.25), 0.0625, 0.001);
        object->writeAudio(ITavloAudioPreviewObject::allChannels, 0, 0.25, nullptr, {}, 1.0);
        EXPECT_EQ(object->getTime(38, &time), -1);
        object->close();
    }
    EXPECT_EQ(sink.format.sampleRate, 48000);
    EXPECT_EQ(sink.format.bitsPerSample, 16);
    EXPECT_EQ(log.count("succeeded to open audio render None , 48000 , 2 , 16"), 1);
    EXPECT_EQ(log.lines().size(), 2);
}

TEST_F(ALAudioPreview, PausesFlushesAndSettles)
{
    object->open("None", 8000, 1, 8, 4);
    ASSERT_TRUE(sink.hear(1));
    EXPECT_EQ(sink.format.audioFourcc, tavloFourcc("u8  "));
    const auto early = sink.blocks.load();
    ASSERT_TRUE(writeUntil(3, 1.0, 1.0, [&] { return isPlaying(3); }));
    EXPECT_GT(sink.blocks - early, 15); // the first 240 ms do not count
    object->pause(3, 0);
    ASSERT_TRUE(sink.hear(3));
    qint64 before = 0, after = 0;
    object->getTime(3, &before);
    ASSERT_TRUE(sink.hear(5));
    object->getTime(3, &after);
    EXPECT_EQ(before, after);
    object->resume(3, 0);
    object->flush(3, true);
    ASSERT_TRUE(sink.hear(3));
    object->getTime(3, &after);
    EXPECT_GT(after, before);
    object->flush(4, true); // no such channel
    const std::lock_guard guard(sink.lock);
    EXPECT_EQ(sink.mixed.back(), 128); // silence of 8 bits
}

TEST_F(ALAudioPreview, AMissingDeviceIsToldAndTriedAgainWhileTheMixGoesOn)
{
    const LogCapture log;
    object->open("Loudspeaker on the moon", 48000, 2, 16, 2);
    ASSERT_TRUE(writeUntil(1, 1.0, 1.0, [&] { return isPlaying(1); }));
    sink.left();
    ASSERT_TRUE(writeUntil(1, 1.0, 1.0, [&] { return log.count("open audio preview again ") == 2; }));
    EXPECT_GE(log.count("[impl\\TavloAudioPreviewObject-"), 2);
    EXPECT_GE(log.count("TavloAudioPreviewObject::openAudioRenderInner] openAudioRender: "
                        "_audioDeviceContext.initGLAudioDevice Loudspeaker on the moon , 48000 , 2 , 16"),
              2);
    EXPECT_GE(log.count("failed to create audio render !!!"), 2);
    const auto heard = sink.left();
    const auto settled = heard.begin() + 4800;
    EXPECT_GT(*std::min_element(settled, heard.end()), 0.49); // no gap
}

TEST_F(ALAudioPreview, PlaysAndComesBackAfterTheDeviceWasPulledOut)
{
    const LogCapture log;
    object->open("Auto", 48000, 2, 16, 2);
    object->setVolume(0.5F);
    ASSERT_TRUE(writeUntil(0, 1.0, 1.0, [&] { return isPlaying(0); }));
    sink.left();
    FileDevice::instance().unplug(true);
    ASSERT_TRUE(writeUntil(0, 1.0, 1.0, [&] { return log.count("sound mix: the sound device has gone") == 1; }));
    FileDevice::instance().unplug(false);
    ASSERT_TRUE(writeUntil(0, 1.0, 1.0, [&] { return log.count("succeeded to open audio render ") == 2; }));
    EXPECT_EQ(log.count("open audio preview again "), 1);
    const int back = sink.blocks;
    ASSERT_TRUE(writeUntil(0, 1.0, 1.0, [&] { return sink.blocks > back + 100; }));
    const auto heard = sink.left();
    EXPECT_GT(*std::min_element(heard.begin() + 4800, heard.end()), 0.49); // no gap in the mix
    object->close();

    auto played = FileDevice::instance().played();
    const auto loud = std::find_if(played.begin(), played.end(), [](qint16 s) { return s > 8000; });
    ASSERT_GT(played.end() - loud, 48000); // half a second and more
    EXPECT_NEAR(*std::max_element(loud, played.end()), 8192, 20);
    EXPECT_GT(*std::min_element(loud, loud + 40000), 8000);
}

TEST_F(ALAudioPreview, ADeviceThatOpensLateDelaysNobody)
{
    const LogCapture log;
    FileDevice::instance().makeLate();
    object->open({}, 48000, 2, 16, 2);
    ASSERT_TRUE(writeUntil(0, 1.0, 1.0, [&] { return isPlaying(0); }));
    EXPECT_EQ(log.count("succeeded"), 0);
    std::thread reader([path = FileDevice::instance().path()] {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Unbuffered));
        std::array<char, 4096> content;
        while (file.read(content.data(), content.size()) > 0) {
        }
    });
    EXPECT_TRUE(becomesTrue([&] { return log.count("succeeded to open audio render ") == 1; }));
    object->close();
    reader.join();
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
                qint64 time = 0;
                object->getTime(channel, &time);
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
        object->open(QString::fromLatin1(name), 48000, 2, 16, 2);
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
