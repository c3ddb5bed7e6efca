#include "support/LogCapture.h"
#include "support/PlayerSink.h"
#include "support/TestClips.h"

#include <gmock/gmock.h>

#include <QRegularExpression>

#include <algorithm>
#include <numeric>

namespace tavlo::test {
namespace {

constexpr int rate = 48000;
constexpr int playing = TavloSourcePlayerStatePlaying;
constexpr int ended = TavloSourcePlayerStateEnded;

/// How many pictures the player says it left out, which a machine without time to spare can make it do.
int leftOut(const LogCapture& log)
{
    static const QRegularExpression form(QStringLiteral("left out: (\\d+)"));
    int sum = 0;
    for (const QString& line : log.lines())
        sum += form.match(line).captured(1).toInt();
    return sum;
}

/// Each number from 0 on is there once and in order, again and again, but for those that the player says it left out.
/// \param length  of a round
void expectEachOnce(const std::vector<int>& numbers, int length, int missing)
{
    ASSERT_FALSE(numbers.empty());
    int steps = numbers.front(); // that were left out
    for (size_t i = 1; i < numbers.size(); ++i)
        steps += (numbers[i] - numbers[i - 1] + length - 1) % length;
    EXPECT_LE(steps, missing) << testing::PrintToString(numbers);
    EXPECT_LT(missing * 2, static_cast<int>(numbers.size()));
}

/// All of these are there in their order, but for those that the player says it left out.
void expectAllBut(const std::vector<int>& numbers, const std::vector<int>& expected, int missing)
{
    EXPECT_TRUE(std::ranges::includes(expected, numbers)) << testing::PrintToString(numbers);
    EXPECT_LE(static_cast<int>(expected.size() - numbers.size()), missing) << testing::PrintToString(numbers);
    EXPECT_FALSE(numbers.empty());
}

ClipForm coded(const char* suffix, QStringList options, int frames = 50)
{
    ClipForm form;
    form.frames = frames;
    form.suffix = QString::fromLatin1(suffix);
    form.options = std::move(options);
    return form;
}

QStringList words(const char* text) { return QString::fromLatin1(text).split(u' '); }

TEST(PlayerFiles, ShowsEachPictureOnceWhateverTheFormat)
{
    const std::vector<ClipForm> forms{
        ClipForm{},
        coded("ts", words("-c:v mpeg2video -b:v 2M -g 12 -bf 2 -c:a mp2")),
        coded("mkv", words("-c:v mpeg4 -q:v 3 -c:a libopus")),
        coded("avi", words("-c:v mjpeg -q:v 3 -c:a pcm_s16le")),
        coded("mov", words("-c:v prores_ks -c:a pcm_s24le")),
        coded("flv", words("-c:v flv -q:v 3 -c:a libmp3lame -ar 44100")),
        coded("webm", words("-c:v libvpx -deadline realtime -b:v 2M -c:a libvorbis")),
        coded("mxf", words("-c:v mpeg2video -b:v 5M -c:a pcm_s16le -ar 48000")),
    };
    for (const ClipForm& form : forms) {
        SCOPED_TRACE(form.suffix.toStdString());
        const LogCapture log;
        PlayerStage stage;
        ASSERT_TRUE(stage);
        stage.player->setRate(2);
        stage.play({clipFile(form)});
        ASSERT_TRUE(stage.sink.waitForState({ended, 0})) << log.lines().join(u'\n').toStdString();
        stage.player->stop();
        expectEachOnce(stage.sink.numbers(), 50, leftOut(log));
        EXPECT_EQ(static_cast<int>(stage.sink.pictures.size()) + leftOut(log), 50);
        EXPECT_NEAR(static_cast<double>(stage.sink.soundFrames), rate * 2.0 / 2, rate * 0.15);
        EXPECT_EQ(stage.sink.videoStarts, 1);
        EXPECT_EQ(stage.sink.videoStops, 1);
        EXPECT_EQ(stage.sink.audioStarts, 1);
        EXPECT_EQ(stage.sink.audioStops, 1);
    }
}

/// The dates of pictures are as far apart as the clip's rate has it; a machine that stalls may move some.
void expectEvenDates(const std::vector<PlayerSink::Picture>& pictures, double interval)
{
    size_t even = 0;
    for (size_t i = 1; i < pictures.size(); ++i)
        even += std::abs(static_cast<double>(pictures[i].date - pictures[i - 1].date) - interval) < 4000;
    EXPECT_GE(even * 10, (pictures.size() - 1) * 8);
}

TEST(PlayerFiles, ListAndLoopHaveNoSeam)
{
    ClipForm first, second;
    first.frames = 20;
    second.frames = 15;
    second.firstNumber = 20;
    const LogCapture log;
    PlayerStage stage;
    stage.sink.hasDevice = true;
    stage.play({clipFile(first), clipFile(second)}, true);
    ASSERT_TRUE(stage.sink.waitForPictures(3 * 35));
    stage.player->stop();
    expectEachOnce(stage.sink.numbers(), 35, leftOut(log));
    EXPECT_EQ(stage.sink.videoStarts, 1) << "one format, one pool";
    EXPECT_EQ(stage.sink.audioStarts, 1);
    expectEvenDates(stage.sink.pictures, 40'000);
    // Sound is one run as well: each block where the one before ends, and as much of it as there is of pictures.
    for (size_t i = 1; i < stage.sink.blocks.size(); ++i)
        EXPECT_EQ(stage.sink.blocks[i].frames, rate / 50) << i;
    EXPECT_NEAR(static_cast<double>(stage.sink.soundFrames) / rate,
                static_cast<double>(stage.sink.pictures.size()) / 25, 0.3);
    const std::vector<PlayerSink::State> cycle{{playing, 0}, {ended, 0}, {playing, 1}, {ended, 1}, {playing, 0}};
    ASSERT_GE(stage.sink.states.size(), 6U);
    EXPECT_EQ(stage.sink.states.front(), (PlayerSink::State{TavloSourcePlayerStateOpening, 0}));
    EXPECT_TRUE(std::equal(cycle.begin(), cycle.end(), stage.sink.states.begin() + 1));
    EXPECT_EQ(stage.sink.states.back().state, TavloSourcePlayerStateStopped);
}

TEST(PlayerFiles, GoesToTheExactPicture)
{
    for (const ClipForm& form : {ClipForm{}, coded("ts", words("-c:v mpeg2video -b:v 2M -g 12 -bf 2 -c:a mp2")),
                                 coded("mkv", words("-c:v libx264 -preset ultrafast -g 250 -c:a aac"))}) {
        SCOPED_TRACE(form.suffix.toStdString());
        PlayerStage stage;
        stage.play({clipFile(form)});
        ASSERT_TRUE(stage.sink.waitForPictures(2));
        EXPECT_NEAR(static_cast<double>(stage.length()), 2000, 60);
        stage.player->pause();
        EXPECT_EQ(stage.player->state(), TavloSourcePlayerStatePaused);
        for (const int number : {30, 7, 8, 0, 49, 11}) {
            size_t before = 0;
            stage.sink.waitFor([&] {
                before = stage.sink.pictures.size();
                return true;
            });
            stage.player->setTime(number * 40 + (number % 2) * 20); // at its beginning, or in its middle
            ASSERT_TRUE(stage.sink.waitForPictures(before + 1)) << number;
            ASSERT_TRUE(stage.sink.waitFor([&] { return stage.sink.pictures.back().number == number; }))
                << testing::PrintToString(stage.sink.numbers());
            EXPECT_NEAR(static_cast<double>(stage.time()), number * 40, 21);
        }
        const size_t reports = stage.sink.states.size();
        stage.player->setTime(1240);
        stage.player->pause();
        ASSERT_TRUE(stage.sink.waitForState({ended, 0}, reports));
        stage.player->stop();
        const auto numbers = stage.sink.numbers();
        const auto place = std::find(numbers.rbegin(), numbers.rend(), 31);
        ASSERT_NE(place, numbers.rend());
        EXPECT_THAT(std::vector<int>(place.base(), numbers.end()), testing::Contains(49));
        EXPECT_EQ(stage.sink.pauses, 1);
        EXPECT_EQ(stage.sink.resumes, 1);
        EXPECT_GT(stage.sink.flushes, 1);
        EXPECT_EQ(stage.sink.blocks.back().second, 1); // the tone of the second that it ended in
    }
}

TEST(PlayerFiles, GoesBackAfterTheEnd)
{
    PlayerStage stage;
    ClipForm form;
    form.frames = 10;
    stage.play({clipFile(form)});
    ASSERT_TRUE(stage.sink.waitForState({ended, 0}));
    const size_t reports = stage.sink.states.size(), before = stage.sink.pictures.size();
    stage.player->setTime(200);
    ASSERT_TRUE(stage.sink.waitForState({playing, 0}, reports));
    ASSERT_TRUE(stage.sink.waitForState({ended, 0}, reports));
    stage.player->stop();
    const auto numbers = stage.sink.numbers();
    ASSERT_GT(numbers.size(), before);
    EXPECT_EQ(numbers[before], 5);
}

TEST(PlayerFiles, PlaysAtOtherSpeedsWithThePitchKept)
{
    ClipForm form;
    form.frames = 50;
    for (const float speed : {0.5F, 1.5F, 4.0F}) {
        SCOPED_TRACE(speed);
        const LogCapture log;
        PlayerStage stage;
        stage.player->setRate(speed);
        stage.play({clipFile(form)});
        EXPECT_EQ(stage.player->rate(), speed);
        ASSERT_TRUE(stage.sink.waitForState({ended, 0}));
        stage.player->stop();
        expectEachOnce(stage.sink.numbers(), 50, leftOut(log));
        EXPECT_EQ(static_cast<int>(stage.sink.pictures.size()) + leftOut(log), 50);
        expectEvenDates(stage.sink.pictures, 40'000 / speed);
        EXPECT_NEAR(static_cast<double>(stage.sink.soundFrames) / rate, 2.0 / speed, 0.2);
        int pure = 0;
        for (const PlayerSink::Block& block : stage.sink.blocks)
            pure += block.second == 0 || block.second == 1;
        EXPECT_GT(pure * 10, static_cast<int>(stage.sink.blocks.size()) * 8);
    }
    PlayerStage stage;
    stage.player->setRate(100);
    EXPECT_EQ(stage.player->rate(), 1.0F); // nothing plays
    stage.play({clipFile(form)});
    EXPECT_EQ(stage.player->rate(), 4.0F);
}

/// The median, as a machine that stalls for a moment is not the player's fault.
double medianOffset(const PlayerSink& sink, size_t from)
{
    std::vector<double> offsets; // milliseconds by which the picture is behind what is heard
    for (size_t i = from; i < sink.pictures.size(); ++i) {
        const auto& picture = sink.pictures[i];
        offsets.push_back(static_cast<double>(picture.heard) * 1000 / rate - picture.number * 40.0);
    }
    std::nth_element(offsets.begin(), offsets.begin() + static_cast<std::ptrdiff_t>(offsets.size() / 2), offsets.end());
    return offsets[offsets.size() / 2];
}

TEST(PlayerFiles, PicturesFollowWhatIsHeard)
{
    struct Device
    {
        qint64 latency; ///< microseconds
        double speed;
    };
    ClipForm form;
    form.frames = 100;
    const std::vector<Device> devices{{0, 1.0}, {300'000, 1.0}, {60'000, 0.98}};
    std::vector<std::unique_ptr<PlayerStage>> stages; // side by side, to be quick
    for (const Device& device : devices) {
        stages.push_back(std::make_unique<PlayerStage>());
        PlayerStage& stage = *stages.back();
        stage.sink.hasDevice = true;
        stage.sink.deviceLatency = device.latency;
        stage.sink.deviceSpeed = device.speed;
        stage.play({clipFile(form)});
    }
    for (const auto& each : stages) {
        PlayerStage& stage = *each;
        SCOPED_TRACE(stage.sink.deviceLatency);
        ASSERT_TRUE(stage.sink.waitForPictures(90));
        stage.player->stop();
        EXPECT_NEAR(medianOffset(stage.sink, 50), 0, 25);
        // The same by what each says of itself: the tone of a second begins with the picture of that second.
        const auto tone = std::find_if(stage.sink.blocks.begin(), stage.sink.blocks.end(),
                                       [](const PlayerSink::Block& b) { return b.second == 2; });
        const auto picture = std::find_if(stage.sink.pictures.begin(), stage.sink.pictures.end(),
                                          [](const PlayerSink::Picture& p) { return p.number >= 50; });
        ASSERT_NE(tone, stage.sink.blocks.end());
        const double early = (picture->number - 50) * 40'000.0;
        EXPECT_NEAR(static_cast<double>(picture->date - tone->date) - early, 0, 40'000);
    }
}

TEST(PlayerFiles, PausesAndGoesOn)
{
    const LogCapture log;
    PlayerStage stage;
    stage.play({clipFile({})}, true);
    ASSERT_TRUE(stage.sink.waitForPictures(5));
    stage.player->pause();
    const qint64 stood = stage.time();
    ASSERT_TRUE(stage.sink.waitFor([&] { return stage.sink.pauses == 1; }));
    EXPECT_EQ(stage.time(), stood);
    stage.play(stage.info.pathList, true); // the same again goes on
    EXPECT_EQ(stage.player->state(), playing);
    ASSERT_TRUE(stage.sink.waitForPictures(20));
    stage.player->stop();
    EXPECT_EQ(stage.player->state(), TavloSourcePlayerStateStopped);
    const auto numbers = stage.sink.numbers();
    EXPECT_TRUE(std::ranges::is_sorted(numbers));
    EXPECT_LE(numbers.back() - numbers.front() + 1 - static_cast<int>(numbers.size()), leftOut(log))
        << "nothing is lost in a pause";
    EXPECT_EQ(stage.sink.resumes, 1);
}

TEST(PlayerFiles, PlaysWhatIsThere)
{
    ClipForm soundOnly;
    soundOnly.pictures = false;
    soundOnly.suffix = QStringLiteral("mp3");
    soundOnly.options = words("-c:a libmp3lame");
    soundOnly.frames = 10;
    ClipForm picturesOnly;
    picturesOnly.sound = false;
    picturesOnly.frames = 10;
    picturesOnly.options = words("-c:v libx264 -preset ultrafast");
    ClipForm both;
    both.frames = 10;
    {
        PlayerStage stage;
        stage.play({clipFile(soundOnly), clipFile(picturesOnly)});
        ASSERT_TRUE(stage.sink.waitForState({ended, 1}));
        stage.player->stop();
        EXPECT_EQ(stage.sink.pictures.size(), 10U);
        EXPECT_NEAR(static_cast<double>(stage.sink.soundFrames), rate * 0.4, rate * 0.06);
    }
    for (const bool pictures : {true, false}) {
        PlayerStage stage;
        stage.wanted.videoInfo.enable = pictures;
        stage.wanted.audioInfo.enable = !pictures;
        stage.info.url = QStringLiteral("dshow://") + clipFile(both); // as songs name their files
        stage.play({});
        ASSERT_TRUE(stage.sink.waitForState({ended, 0}));
        stage.player->stop();
        EXPECT_EQ(stage.sink.pictures.size(), pictures ? 10U : 0U);
        EXPECT_EQ(stage.sink.soundFrames > 0, !pictures);
    }
}

TEST(PlayerFiles, HandsOnEachLayout)
{
    struct Case
    {
        const char* format;
        const char* suffix;
        const char* codec;
        quint32 chroma;
    };
    const std::vector<Case> cases{
        {"yuv420p", "avi", "rawvideo", tavloFourcc("I420")}, {"nv12", "nut", "rawvideo", tavloFourcc("NV12")},
        {"nv21", "nut", "rawvideo", tavloFourcc("NV21")},    {"yuyv422", "avi", "rawvideo", tavloFourcc("YUY2")},
        {"uyvy422", "avi", "rawvideo", tavloFourcc("UYVY")}, {"rgba", "nut", "rawvideo", tavloFourcc("RGBA")},
        {"bgra", "nut", "rawvideo", tavloFourcc("BGRA")},    {"bgr0", "nut", "rawvideo", tavloFourcc("RV32")},
        {"rgb24", "nut", "rawvideo", tavloFourcc("RGBA")},   {"yuv422p10le", "nut", "rawvideo", tavloFourcc("NV12")},
        {"yuvj420p", "avi", "mjpeg", tavloFourcc("NV12")},   {"yuva420p", "nut", "rawvideo", tavloFourcc("RGBA")},
    };
    for (const bool odd : {false, true}) {
        for (const Case& c : cases) {
            SCOPED_TRACE(c.format);
            ClipForm form = coded(c.suffix, {"-c:v", c.codec, "-pix_fmt", c.format}, 4);
            form.sound = false;
            form.width = odd ? 193 : 192;
            form.height = odd ? 107 : 108;
            if (odd && (c.chroma == tavloFourcc("YUY2") || c.chroma == tavloFourcc("UYVY")))
                continue; // there is no half pair of pixels
            const LogCapture log;
            PlayerStage stage;
            stage.play({clipFile(form)});
            ASSERT_TRUE(stage.sink.waitForState({ended, 0}));
            stage.player->stop();
            EXPECT_EQ(stage.sink.videoInfo.chroma, c.chroma);
            EXPECT_EQ(stage.sink.videoInfo.sourceWidth, form.width);
            expectAllBut(stage.sink.numbers(), {0, 1, 2, 3}, leftOut(log));
        }
    }
    PlayerStage stage; // the sink has the last word
    stage.sink.layouts = {tavloFourcc("NV12")};
    stage.play({clipFile(coded("nut", {"-c:v", "rawvideo", "-pix_fmt", "rgba"}, 4))});
    ASSERT_TRUE(stage.sink.waitForPictures(1));
    stage.player->stop();
    EXPECT_EQ(stage.sink.videoInfo.chroma, tavloFourcc("NV12"));
    EXPECT_EQ(stage.sink.pictures.front().number, 0);
}

/// Brightness of the last picture, which has to be planar or NV12.
int lumaAt(const PlayerSink& sink, int x, int y)
{
    return sink.lastPicture[static_cast<size_t>(y * sink.videoInfo.sourceWidth + x)];
}

TEST(PlayerFiles, TurnsDeinterlacesAndStands)
{
    const QString plain = clipFile(coded("mp4", words("-c:v libx264 -preset ultrafast -an"), 5));
    const QString turned = clipFolderFile(QStringLiteral("turned.mp4"));
    ASSERT_TRUE(runFfmpeg({"-i", plain, "-c", "copy", "-metadata:s:v", "rotate=90", turned}));
    {
        PlayerStage stage;
        stage.play({turned});
        ASSERT_TRUE(stage.sink.waitForPictures(5));
        stage.player->stop();
        EXPECT_EQ(stage.sink.videoInfo.sourceWidth, 108);
        EXPECT_EQ(stage.sink.videoInfo.sourceHeight, 192);
        // The upper half, black but for the lowest bits, has become one side.
        const int left = lumaAt(stage.sink, 20, 20), right = lumaAt(stage.sink, 85, 20);
        EXPECT_TRUE((left < 40) != (right < 40)) << left << ' ' << right;
    }
    const QString fields = clipFolderFile(QStringLiteral("fields.ts"));
    ASSERT_TRUE(runFfmpeg({"-f", "lavfi", "-i",
                           "color=black:s=64x64:r=50,drawbox=x=0:y=0:w=64:h=64:t=fill:c=white:enable='not(mod(n,3))'",
                           "-vf", "interlace=lowpass=off", "-frames:v", "10", "-c:v", "mpeg2video", "-q:v", "2",
                           "-flags", "+ildct+ilme", fields}));
    for (const int mode : {0, 1, 2}) {
        PlayerStage stage;
        stage.info.deinterlaceMode = mode;
        stage.play({fields});
        ASSERT_TRUE(stage.sink.waitForState({ended, 0}));
        stage.player->stop();
        EXPECT_GE(stage.sink.pictures.size(), 9U);
        const int step = std::abs(lumaAt(stage.sink, 32, 32) - lumaAt(stage.sink, 32, 33));
        EXPECT_EQ(step > 150, mode == 0) << mode; // a comb of the two fields, or not
    }
    const QString still = clipFolderFile(QStringLiteral("still 100%d.png"));
    ASSERT_TRUE(runFfmpeg({"-i", plain, "-frames:v", "1", "-update", "1", still}));
    PlayerStage stage;
    stage.play({still});
    ASSERT_TRUE(stage.sink.waitForPictures(1));
    EXPECT_EQ(stage.length(), 5000);
    stage.player->setRate(4);
    ASSERT_TRUE(stage.sink.waitForState({ended, 0}));
    stage.player->stop();
    EXPECT_EQ(stage.sink.numbers(), std::vector<int>{0});
}

TEST(PlayerFiles, KeepsUnevenTimes)
{
    const QString uneven = clipFolderFile(QStringLiteral("uneven.mkv"));
    ASSERT_TRUE(runFfmpeg({"-i", clipFile(coded("mp4", words("-c:v libx264 -preset ultrafast -an"), 20)), "-vf",
                           "select='not(mod(n,3))+eq(n,1)',setpts=PTS", "-vsync", "vfr", "-c:v", "libx264", uneven}));
    const LogCapture log;
    PlayerStage stage;
    stage.play({uneven});
    ASSERT_TRUE(stage.sink.waitForState({ended, 0}));
    stage.player->stop();
    expectAllBut(stage.sink.numbers(), {0, 1, 3, 6, 9, 12, 15, 18}, leftOut(log));
    for (const PlayerSink::Picture& picture : stage.sink.pictures)
        EXPECT_NEAR(static_cast<double>(picture.date - stage.sink.pictures.front().date), picture.number * 40'000.0,
                    4000);
}

TEST(PlayerFiles, SkipsWhatItCannotPlayAndTellsSo)
{
    ClipForm form;
    form.frames = 5;
    const LogCapture log;
    PlayerStage stage;
    stage.play({QStringLiteral("/nowhere.mp4"), clipFile(form), QStringLiteral("gopher://x/"), QStringLiteral("/")});
    ASSERT_TRUE(stage.sink.waitForState({ended, 3}));
    EXPECT_EQ(stage.player->itemCount(), 4);
    EXPECT_EQ(stage.player->itemIndex(), 3);
    stage.player->stop();
    EXPECT_EQ(log.count("/nowhere.mp4"), 1);
    EXPECT_EQ(log.count("gopher://x/"), 1);
    expectAllBut(stage.sink.numbers(), {0, 1, 2, 3, 4}, leftOut(log));
    const std::vector<PlayerSink::State> expected{
        {TavloSourcePlayerStateOpening, 0}, {ended, 0}, {playing, 1}, {ended, 1}, {ended, 2}, {ended, 3},
        {TavloSourcePlayerStateStopped, 3}};
    EXPECT_EQ(stage.sink.states, expected);
    PlayerStage empty;
    empty.play({});
    EXPECT_EQ(log.count("neither a path nor an address"), 1);
    EXPECT_EQ(empty.player->state(), TavloSourcePlayerStateStopped);
}

TEST(PlayerFiles, WithoutAPoolPicturesArePlain)
{
    PlayerStage stage;
    stage.sink.hasPool = false;
    stage.play({clipFile({})});
    ASSERT_TRUE(stage.sink.waitForPictures(3));
    stage.player->stop();
    EXPECT_EQ(stage.sink.pictures.front().number, 0);
}

} // namespace
} // namespace tavlo::test
