#include "OutputSupport.h"
#include "TavloCommonModule/decklink/DecklinkOutput.h"
#include "shared/Gstreamer.h"
#include "support/LogCapture.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <random>
#include <thread>

namespace {

using namespace tavlo::decklink;
using namespace tavlo::test;

constexpr int width = 720, height = 576, row = 2 * width, stride = row + 48;
constexpr qint64 pictureBytes = qint64{row} * height;

/// A picture whose rows tell its number and their own.
std::vector<quint8> picture(int number)
{
    std::vector<quint8> bytes(size_t{stride} * height, 0xee);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < row; ++x)
            bytes[static_cast<size_t>(y * stride + x)] = static_cast<quint8>(x == 0 ? number : x + y);
    return bytes;
}

/// A card that writes down what it plays.
struct FileCard
{
    FileCard()
    {
        sinks.now = [this] { return now; };
    }

    /// As picky as a card's own.
    static std::string videoSink(const QString& path)
    {
        return "capsfilter "
               "caps=video/x-raw,format=UYVY,width=720,height=576,pixel-aspect-ratio=12/11,interlace-mode=interleaved,"
               "colorimetry=bt601,chroma-site=mpeg2 ! " +
               sink(path);
    }

    static std::string sink(const QString& path)
    {
        return "filesink buffer-mode=unbuffered sync=false async=false location=" + path.toStdString();
    }

    /// The numbers of the pictures that it has shown; waits for so many.
    std::vector<int> shown(int count) const
    {
        QFile file(video);
        while (file.size() < count * pictureBytes)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        std::vector<int> numbers;
        for (QByteArray bytes = file.read(pictureBytes); bytes.size() == pictureBytes;
             bytes = file.read(pictureBytes)) {
            numbers.push_back(static_cast<quint8>(bytes[0]));
            const std::vector<quint8> last = picture(numbers.back());
            EXPECT_EQ(std::memcmp(bytes.constData() + pictureBytes - row, last.data() + stride * (height - 1), row), 0);
        }
        return numbers;
    }

    QTemporaryDir folder;
    QString video = folder.filePath(QStringLiteral("video")), audio = folder.filePath(QStringLiteral("audio"));
    qint64 now = 0; ///< the card's clock
    Sinks sinks{videoSink(video), sink(audio), {}};
};

TEST(Decklink, APipelineShowsPicturesAtTheCardsRateWithTheirSound)
{
    struct Case
    {
        qint64 step; ///< microseconds from picture to picture
        std::vector<int> shown;
    };
    for (const Case& one :
         {Case{40'000, {0, 1, 2, 3, 4, 5, 6}}, Case{20'000, {0, 2, 4, 6}}, Case{80'000, {0, 0, 1, 1, 2, 2, 3, 3, 4}}}) {
        FileCard card;
        std::string error;
        const auto pipeline = Pipeline::open(*findMode(QStringLiteral("pal")), card.sinks, error);
        ASSERT_TRUE(pipeline) << error;
        const std::vector<quint8> sound(40'000, 7);             // larger than a buffer
        EXPECT_FALSE(pipeline->writeAudio(sound.data(), 4, 0)); // nothing to be in time with
        for (int number = 0; number < 8; ++number) {
            const qint64 time = 9'000'000'000 + number * one.step;
            card.now = 123'000 + number * one.step;
            while (!pipeline->writeVideo(picture(number).data(), stride, time))
                std::this_thread::sleep_for(std::chrono::milliseconds(1)); // all buffers wait to be written
        }
        EXPECT_TRUE(pipeline->writeAudio(sound.data(), static_cast<int>(sound.size()), 9'000'000'000));
        const std::vector<int> shown = card.shown(static_cast<int>(one.shown.size()));
        EXPECT_EQ(std::vector(shown.begin(), shown.begin() + static_cast<ptrdiff_t>(one.shown.size())), one.shown);
        QFile audio(card.audio);
        while (audio.size() < static_cast<qint64>(sound.size()))
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        EXPECT_EQ(audio.size(), static_cast<qint64>(sound.size()));
    }
}

TEST(Decklink, ACardThatIsNotThereIsTriedAgainAndHoldsUpNobody)
{
    FileCard card;
    const QDir folder(card.folder.path());
    card.sinks.video = FileCard::videoSink(folder.filePath(QStringLiteral("later/video")));
    card.video = folder.filePath(QStringLiteral("later/video"));
    LogCapture log;
    DecklinkOutput output;
    ASSERT_TRUE(output.open(QStringLiteral("pal"), card.sinks));
    EXPECT_EQ(output.getHeight(), height);
    output.writeVideo(picture(1).data(), stride, 0, 0, 0);
    while (log.count("does not play") == 0)
        std::this_thread::yield();
    folder.mkdir(QStringLiteral("later"));
    while (log.count(" plays") == 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_EQ(log.count("tries again"), 1);
    for (const int number : {2, 3})
        output.writeVideo(picture(number).data(), stride, 0, number * 40'000, 0);
    EXPECT_EQ(card.shown(1)[0], 2);
}

TEST(Decklink, WithoutHardwareTheLogTellsAndTheOutputEndsAtOnce)
{
    LogCapture log;
    tagTavloPresentOutputParam param;
    param.decklinkDevice = 1000;
    Stage stage(Stage::Way::Memory);
    stage.start(TavloPresentOutputTypeDecklink, param);
    stage.commit(0, 3, false); // smaller than the card's mode, so nothing counts
    while (log.count("does not play") == 0)
        std::this_thread::yield();
    EXPECT_EQ(stage.statistics().decklinkVideoFps, 0);
    stage.stop(TavloPresentOutputTypeDecklink);
    param.decklinkMode = QStringLiteral("1080p26 ! filesink location=x");
    stage.start(TavloPresentOutputTypeDecklink, param);
    EXPECT_EQ(log.count("no card has the mode"), 1);
}

/// The sink's own words for a mode's size, where it is installed.
TEST(Decklink, ModesAreAsLargeAsTheSinkSays)
{
    std::string error;
    ASSERT_TRUE(tavlo::initGstreamer(error)) << error;
    for (const Mode& mode : modes()) {
        GError* failure = nullptr;
        const std::string text = std::string("decklinkvideosink mode=") + mode.name;
        const tavlo::GstOwned<GstElement> sink(gst_parse_launch(text.c_str(), &failure));
        if (!sink)
            GTEST_SKIP() << tavlo::takeGstError(failure, "no decklinkvideosink");
        ASSERT_EQ(failure, nullptr) << tavlo::takeGstError(failure, "");
        gst_object_ref_sink(sink.get());
        const tavlo::GstOwned<GstPad> pad(gst_element_get_static_pad(sink.get(), "sink"));
        GstCaps* const caps = gst_pad_query_caps(pad.get(), nullptr);
        int shownWidth = 0, shownHeight = 0;
        gst_structure_get(gst_caps_get_structure(caps, 0), "width", G_TYPE_INT, &shownWidth, "height", G_TYPE_INT,
                          &shownHeight, nullptr);
        gst_caps_unref(caps);
        EXPECT_EQ(std::pair(shownWidth, shownHeight), std::pair(mode.width, mode.height)) << mode.name;
    }
}

TEST(ClockBridge, FollowsACardsClockWithoutItsJitterAndTakesOverAJump)
{
    std::minstd_rand random(7);
    ClockBridge bridge;
    qint64 previous = 0;
    for (qint64 i = 0; i < 100'000; ++i) { // the card is 50 millionths fast
        const qint64 time = i * 40'000, now = 5'000 + i * 40'002;
        const qint64 shown = bridge.follow(time, now + static_cast<qint64>(random() % 10'000));
        if (i > 0) {
            ASSERT_NEAR(static_cast<double>(shown - previous), 40'000, 50);
        }
        ASSERT_NEAR(static_cast<double>(shown), static_cast<double>(now), 12'000);
        previous = shown;
    }
    EXPECT_EQ(bridge.follow(0, 77), 77);
    EXPECT_EQ(bridge.timeOf(3), 80);
}

} // namespace
