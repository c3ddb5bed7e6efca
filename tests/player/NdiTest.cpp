// Senders on the network, as NDI's library finds and receives them.

#include "TavloCommonModule/player/WallStamps.h"
#include "output/fake/FakeNdi.h"
#include "shared/VlcTypes.h"
#include "support/PlayerSink.h"
#include "support/TestClips.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstring>
#include <functional>
#include <numbers>
#include <thread>

namespace tavlo::test {
namespace {

using Frame = FakeNdiNetwork::Frame;

/// A sender with a clock of its own: a picture each 20 ms, and its sound.
class Sender
{
public:
    using MakePicture = std::function<Frame(int number)>;

    explicit Sender(MakePicture make) : _make(std::move(make)), _thread([this] { run(); }) {}
    ~Sender()
    {
        _ends = true;
        _thread.join();
    }

    /// 20 ms of the third second's tone on the left, nothing on the right; the channels lie apart.
    static Frame sound(int number)
    {
        constexpr int rate = 48'000, samples = rate / 50;
        Frame frame;
        frame.video = false;
        frame.rate = rate;
        frame.channels = 2;
        frame.samples = samples;
        frame.stride = samples * 4 + 64;
        std::vector<float> values(static_cast<size_t>(frame.stride / 2), 9.0F);
        for (int i = 0; i < samples; ++i) {
            const double time = static_cast<double>(number * samples + i) / rate;
            values[static_cast<size_t>(i)] = 0.5F * static_cast<float>(std::sin(2 * std::numbers::pi * 1000 * time));
            values[static_cast<size_t>(i + frame.stride / 4)] = 0.0F;
        }
        frame.bytes.resize(values.size() * sizeof(float));
        std::memcpy(frame.bytes.data(), values.data(), frame.bytes.size());
        return frame;
    }

private:
    void run()
    {
        const auto begin = std::chrono::steady_clock::now();
        for (int number = 0; !_ends; ++number) {
            std::this_thread::sleep_until(begin + number * std::chrono::milliseconds(20));
            for (Frame frame : {_make(number), sound(number)}) {
                frame.timestamp = 77'000'000'000 + number * 200'000LL;
                fakeNdiNetwork()->send(std::move(frame));
            }
        }
    }

    const MakePicture _make;
    std::atomic<bool> _ends{false};
    std::thread _thread;
};

/// A picture of high definition, whose matrix is the drawing's; each byte differs from those around it.
Frame picture(const std::string& chroma, int padding = 0)
{
    const int bytesPerPixel = chroma == "UYVY" ? 2 : chroma.starts_with("BGR") ? 4 : 1;
    Frame frame;
    frame.chroma = chroma;
    frame.width = 66;
    frame.height = 720;
    frame.rate = 50;
    frame.stride = frame.width * bytesPerPixel + padding;
    for (int y = 0; y < (chroma == "NV12" ? frame.height * 3 / 2 : frame.height); ++y)
        for (int x = 0; x < frame.stride; ++x)
            frame.bytes.push_back(static_cast<uint8_t>(x < frame.stride - padding ? 16 + (7 * x + 3 * y) % 200 : 0));
    return frame;
}

void playNdi(PlayerStage& stage, const char* url, const QStringList& parts = {})
{
    stage.info.kind = TavloSourcePlayerKindNDI;
    stage.info.url = QString::fromLatin1(url);
    stage.play(parts);
}

/// Everything that the library lent was given back.
void expectNothingKept()
{
    EXPECT_TRUE(readersEnd());
    FakeNdiNetwork& network = *fakeNdiNetwork();
    const std::lock_guard guard(network.lock);
    EXPECT_EQ(network.finders, 0);
    EXPECT_EQ(network.receivers, 0);
    EXPECT_EQ(network.lentFrames, 0);
}

TEST(PlayerNdi, PicturesComeInEachLayoutAndSoundBesideThem)
{
    constexpr int padding = 6;
    fakeNdiNetwork()->announce({{"STUDIO (camera)", "10.0.0.7:5961"}});
    std::atomic<const char*> layout{"UYVY"};
    {
        PlayerStage stage;
        playNdi(stage, "ndi:STUDIO (camera)");
        const Sender sender([&](int number) { return picture(number % 5 == 4 ? "????" : layout.load(), padding); });
        for (const auto& [chroma, handedOn] :
             {std::pair("UYVY", tavloFourcc("UYVY")), std::pair("BGRA", tavloFourcc("BGRA")),
              std::pair("NV12", tavloFourcc("NV12")), std::pair("BGRX", tavloFourcc("RV32"))}) {
            SCOPED_TRACE(chroma);
            layout = chroma;
            const std::vector<quint8> expected = picture(chroma).bytes;
            ASSERT_TRUE(stage.sink.waitFor(
                [&] { return stage.sink.videoInfo.chroma == handedOn && stage.sink.lastPicture == expected; }));
        }
        ASSERT_TRUE(stage.sink.waitFor([&] { return stage.sink.blocks.size() > 50; }));
        EXPECT_EQ(stage.player->state(), TavloSourcePlayerStatePlaying);
        EXPECT_EQ(stage.length(), 0);
        stage.player->stop();
        EXPECT_EQ(stage.sink.videoInfo.fpsNum, 50 * stage.sink.videoInfo.fpsDen);
        EXPECT_GT(std::ranges::count(stage.sink.blocks, 3, &PlayerSink::Block::second), 10);
    }
    expectNothingKept();
}

TEST(PlayerNdi, ASenderIsKnownByItsNameOrItsPlaceAndMayGoAndComeBack)
{
    FakeNdiNetwork& network = *fakeNdiNetwork();
    network.announce({{"A (camera)", "10.0.0.1:5961"}, {"B (camera)", "10.0.0.2:5961"}, {"B (desk)", "10.0.0.2:5962"}});
    struct Case
    {
        const char* url;
        QStringList parts;
        const char* address;
    };
    const std::vector<Case> cases{{"ndi:B (camera)", {}, "10.0.0.2:5961"},
                                  {"ndi://desk", {}, "10.0.0.2:5962"},
                                  {"ndi:camera@b", {"ndi:camera", "b"}, "10.0.0.2:5961"},
                                  {"ndi:@10.0.0.2", {"ndi:", "10.0.0.2"}, "10.0.0.2:5961"},
                                  {"ndi:@10.0.0.2:5962", {"ndi:", "10.0.0.2:5962"}, "10.0.0.2:5962"}};
    const Sender sender([](int) { return picture("UYVY"); });
    for (const Case& c : cases) {
        SCOPED_TRACE(c.url);
        PlayerStage stage;
        stage.wanted.videoInfo.enable = c.parts.isEmpty();
        playNdi(stage, c.url, c.parts);
        ASSERT_TRUE(stage.sink.waitFor([&] { return stage.sink.blocks.size() > 2; }));
        const std::lock_guard guard(network.lock);
        EXPECT_EQ(network.connectedTo, c.address);
        EXPECT_EQ(network.asked, QString::fromLatin1(c.url).contains(u'1') ? "10.0.0.2" : "");
        EXPECT_EQ(network.bandwidth, c.parts.isEmpty() ? 100 : 10);
    }
    PlayerStage stage;
    playNdi(stage, "ndi:desk");
    ASSERT_TRUE(stage.sink.waitForPictures(3));
    const size_t states = stage.sink.stateCount();
    network.announce({});
    ASSERT_TRUE(stage.sink.waitForState({TavloSourcePlayerStateOpening, 0}, states));
    const size_t before = stage.sink.pictureCount();
    network.announce({{"C (desk)", "10.0.0.3:5961"}});
    ASSERT_TRUE(stage.sink.waitForPictures(before + 3));
    EXPECT_EQ(stage.player->state(), TavloSourcePlayerStatePlaying);
    stage.player->stop();
    expectNothingKept();
}

/// A clock that runs 200 ppm slower than ours, and a way that takes up to 15 ms longer at times.
TEST(PlayerNdi, UnevenArrivalsGetEvenStamps)
{
    WallStamps stamps;
    qint64 last = 0;
    for (int number = 0; number < 20'000; ++number) {
        const qint64 stamp = 77'000 + number * 20'000LL;
        const qint64 sent = 5'000'000'000 + number * 20'004LL;
        const qint64 now = sent + 2'000 + number * 7919LL % 15'000;
        const qint64 wall = stamps.toWall(stamp, now);
        EXPECT_GT(wall, last);
        last = wall;
        if (number > 1000) {
            EXPECT_NEAR(wall - sent, 4'000, 4'000) << number;
        }
    }
    const qint64 set = stamps.toWall(3'000'000'000, 9'000'000'000);
    EXPECT_EQ(set, 9'000'000'000) << "the sender's clock was set";
}

} // namespace
} // namespace tavlo::test
