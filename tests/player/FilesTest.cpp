#include "support/LogCapture.h"
#include "support/PlayerSink.h"
#include "support/TestClips.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

namespace tavlo::test {
namespace {

constexpr int rate = 48000;
constexpr int playing = TavloSourcePlayerStatePlaying;
constexpr int ended = TavloSourcePlayerStateEnded;

/// The numbers from `first` on, again from 0 after each `length`.
std::vector<int> run(int first, size_t count, int length)
{
    std::vector<int> numbers(count);
    for (size_t i = 0; i < count; ++i)
        numbers[i] = (first + static_cast<int>(i)) % length;
    return numbers;
}

/// The dates of pictures are as far apart as the clip's rate has it.
void expectEvenDates(const std::vector<PlayerSink::Picture>& pictures, double interval, size_t from = 0)
{
    for (size_t i = from + 1; i < pictures.size(); ++i)
        ASSERT_NEAR(static_cast<double>(pictures[i].date - pictures[i - 1].date), interval, 1000) << i;
}

TEST(PlayerFiles, ShowsEachPictureOnceWhateverTheFormat)
{
    const std::vector<ClipForm> forms{
        ClipForm{},
        codedClip("ts", "-c:v mpeg2video -b:v 2M -g 12 -bf 2 -c:a mp2"),
        codedClip("mkv", "-c:v mpeg4 -q:v 3 -c:a libopus"),
        codedClip("avi", "-c:v mjpeg -q:v 3 -c:a pcm_s16le"),
        codedClip("mov", "-c:v prores_ks -c:a pcm_s24le"),
        codedClip("flv", "-c:v flv -q:v 3 -c:a libmp3lame -ar 44100"),
        codedClip("webm", "-c:v libvpx -deadline realtime -b:v 2M -c:a libvorbis"),
        codedClip("mxf", "-c:v mpeg2video -b:v 5M -c:a pcm_s16le -ar 48000"),
    };
    for (const ClipForm& form : forms) {
        SCOPED_TRACE(form.suffix.toStdString());
        const LogCapture log;
        PlayerStage stage;
        stage.player->setRate(2);
        stage.info.hwDecode = form.suffix == QStringLiteral("mp4");
        ASSERT_TRUE(stage.playToEnd({clipFile(form)}, 50, 1.0)) << log.lines().join(u'\n').toStdString();
        EXPECT_EQ(stage.sink.numbers(), run(0, 50, 50));
        EXPECT_EQ(log.count("left out"), 0);
        EXPECT_EQ(log.count("player: decoding h264 with") + log.count("no graphics processor decodes this h264"),
                  stage.info.hwDecode ? 1 : 0);
        expectEvenDates(stage.sink.pictures, 20'000);
        EXPECT_NEAR(static_cast<double>(stage.sink.soundFrames), rate * 2.0 / 2, rate * 0.06);
        EXPECT_EQ(std::pair(stage.sink.videoStarts, stage.sink.videoStops), std::pair(1, 1));
        EXPECT_EQ(std::pair(stage.sink.audioStarts, stage.sink.audioStops), std::pair(1, 1));
    }
}

TEST(PlayerFiles, ListAndLoopHaveNoSeam)
{
    PlayerStage stage;
    stage.holdTime();
    stage.sink.hasDevice = true;
    stage.play({clipFile({.frames = 20}), clipFile({.frames = 15, .firstNumber = 20})}, true);
    ASSERT_TRUE(stage.sink.waitForPictures(3 * 35));
    EXPECT_EQ(stage.player->itemCount(), 2);
    stage.player->stop();
    EXPECT_EQ(stage.sink.numbers(), run(0, stage.sink.pictures.size(), 35));
    EXPECT_EQ(stage.sink.videoStarts, 1) << "one format, one pool";
    EXPECT_EQ(stage.sink.audioStarts, 1);
    expectEvenDates(stage.sink.pictures, 40'000, 30); // once it has found what the device holds back
    // Sound is one run as well: each block where the one before ends, and as much of it as there is of pictures.
    for (size_t i = 1; i < stage.sink.blocks.size(); ++i)
        EXPECT_EQ(stage.sink.blocks[i].frames, rate / 50) << i;
    EXPECT_NEAR(static_cast<double>(stage.sink.soundFrames) / rate,
                static_cast<double>(stage.sink.pictures.size()) / 25, 0.2);
    const std::vector<PlayerSink::State> cycle{{playing, 0}, {ended, 0}, {playing, 1}, {ended, 1}, {playing, 0}};
    ASSERT_GE(stage.sink.states.size(), 6U);
    EXPECT_EQ(stage.sink.states.front(), (PlayerSink::State{TavloSourcePlayerStateOpening, 0}));
    EXPECT_TRUE(std::equal(cycle.begin(), cycle.end(), stage.sink.states.begin() + 1));
    EXPECT_EQ(stage.sink.states.back().state, TavloSourcePlayerStateStopped);
}

TEST(PlayerFiles, GoesToTheExactPicture)
{
    for (const ClipForm& form : {ClipForm{}, codedClip("ts", "-c:v mpeg2video -b:v 2M -g 12 -bf 2 -c:a mp2"),
                                 codedClip("mkv", "-c:v libx264 -preset ultrafast -g 250 -c:a aac")}) {
        SCOPED_TRACE(form.suffix.toStdString());
        PlayerStage stage;
        stage.holdTime();
        stage.play({clipFile(form)});
        ASSERT_TRUE(stage.sink.waitForPictures(2));
        EXPECT_NEAR(static_cast<double>(stage.length()), 2000, 60);
        stage.player->pause();
        EXPECT_EQ(stage.player->state(), TavloSourcePlayerStatePaused);
        for (const int number : {30, 7, 8, 0, 49, 11}) {
            const size_t before = stage.sink.pictureCount();
            stage.player->setTime(number * 40 + (number % 2) * 20); // at its beginning, or in its middle
            ASSERT_TRUE(stage.sink.waitForPictures(before + 1)) << number;
            ASSERT_TRUE(stage.sink.waitFor([&] { return stage.sink.pictures.back().number == number; }))
                << testing::PrintToString(stage.sink.numbers());
            EXPECT_NEAR(static_cast<double>(stage.place()), number * 40, 21);
        }
        stage.holdTime(19, 0.76);
        stage.player->setTime(1240);
        stage.player->pause();
        ASSERT_TRUE(stage.sink.waitForState({ended, 0}));
        stage.player->stop();
        auto numbers = stage.sink.numbers();
        ASSERT_GE(numbers.size(), 19U);
        numbers.erase(numbers.begin(), numbers.end() - 19);
        EXPECT_EQ(numbers, run(31, 19, 50));
        EXPECT_EQ(stage.sink.pauses, 1);
        EXPECT_EQ(stage.sink.resumes, 1);
        EXPECT_GT(stage.sink.flushes, 1);
        EXPECT_EQ(stage.sink.blocks.end()[-3].second, 1); // the tone of the second that it ended in
    }
}

TEST(PlayerFiles, GoesBackAfterTheEnd)
{
    PlayerStage stage;
    stage.holdTime(10, 0.4);
    stage.play({clipFile({.frames = 10})});
    ASSERT_TRUE(stage.sink.waitForState({ended, 0}));
    const size_t reports = stage.sink.stateCount();
    stage.holdTime(5, 0.2);
    stage.player->setTime(200);
    ASSERT_TRUE(stage.sink.waitForState({playing, 0}, reports));
    ASSERT_TRUE(stage.sink.waitForState({ended, 0}, reports));
    stage.player->stop();
    EXPECT_EQ(stage.sink.numbers(), (std::vector{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 5, 6, 7, 8, 9}));
}

TEST(PlayerFiles, PlaysAtOtherSpeedsWithThePitchKept)
{
    for (const float speed : {0.5F, 1.5F, 4.0F}) {
        SCOPED_TRACE(speed);
        PlayerStage stage;
        stage.player->setRate(speed);
        ASSERT_TRUE(stage.playToEnd({clipFile({})}, 50, 2.0 / speed));
        EXPECT_EQ(stage.sink.numbers(), run(0, 50, 50));
        expectEvenDates(stage.sink.pictures, 40'000 / speed);
        EXPECT_NEAR(static_cast<double>(stage.sink.soundFrames) / rate, 2.0 / speed, 0.2);
        const auto pure = std::ranges::count_if(stage.sink.blocks, [](const auto& b) { return (b.second | 1) == 1; });
        EXPECT_GT(pure * 10, std::ssize(stage.sink.blocks) * 8);
    }
    PlayerStage stage;
    stage.player->setRate(100);
    EXPECT_EQ(stage.player->rate(), 1.0F); // nothing plays
    stage.play({clipFile({})});
    EXPECT_EQ(stage.player->rate(), 4.0F);
}

TEST(PlayerFiles, PicturesFollowWhatIsHeard)
{
    for (const auto& [latency, speed] : {std::pair(0, 1.0), std::pair(300'000, 1.0), std::pair(60'000, 0.98)}) {
        SCOPED_TRACE(latency);
        PlayerStage stage;
        stage.holdTime();
        stage.sink.hasDevice = true;
        stage.sink.deviceLatency = latency;
        stage.sink.deviceSpeed = speed;
        stage.play({clipFile({.frames = 100})});
        constexpr size_t seen = 90; // one that comes while the player stops finds all sound discarded
        ASSERT_TRUE(stage.sink.waitForPictures(seen));
        stage.player->stop();
        for (size_t i = 50; i < seen; ++i)
            EXPECT_NEAR(static_cast<double>(stage.sink.pictures[i].heard) * 1000 / rate, i * 40.0 - 20, 25) << i;
        // The same by what each says of itself: the tone of a second begins with the picture of that second.
        const auto tone = std::ranges::find(stage.sink.blocks, 2, &PlayerSink::Block::second);
        const auto picture = std::ranges::find_if(stage.sink.pictures, [](const auto& p) { return p.number >= 50; });
        ASSERT_NE(tone, stage.sink.blocks.end());
        const double early = (picture->number - 50) * 40'000.0;
        EXPECT_NEAR(static_cast<double>(picture->date - tone->date) - early, 0, 40'000);
    }
}

/// Each second of sound begins with its picture, to the end of five minutes, on a device whose clock is its own.
TEST(PlayerFiles, FiveMinutesStayTogether)
{
    constexpr int fps = 10, seconds = 300, clipSeconds = 60;
    ClipForm form = codedClip("mkv", "-c:v libx264 -preset ultrafast -c:a pcm_s16le", clipSeconds * fps);
    form.width = 96;
    form.height = 64;
    form.fps = fps;
    PlayerStage stage;
    stage.holdTime();
    stage.sink.hasDevice = true;
    stage.sink.deviceSpeed = 0.9995;
    stage.play({clipFile(form)}, true);
    ASSERT_TRUE(stage.sink.waitForPictures(seconds * fps));
    stage.player->stop();
    const size_t count = stage.sink.pictures.size();
    ASSERT_EQ(stage.sink.numbers(), run(0, count, form.frames));
    size_t second = 0; // that is heard
    double farthest = 0;
    for (const PlayerSink::Block& block : stage.sink.blocks) {
        const size_t next = second + 1;
        if (block.second != static_cast<int>(next % clipSeconds % 8) || next * fps >= count)
            continue;
        second = next;
        const qint64 picture = stage.sink.pictures[second * fps].date;
        farthest = std::max(farthest, std::abs(static_cast<double>(block.date - picture)));
    }
    EXPECT_GE(second, seconds - 1U);
    EXPECT_LE(farthest, 30'000) << "a block, and half of one";
}

TEST(PlayerFiles, KeepsTheRateOfPictures)
{
    for (const int fps : {10, 24, 30, 60}) {
        SCOPED_TRACE(fps);
        PlayerStage stage;
        ASSERT_TRUE(stage.playToEnd({clipFile({.fps = fps, .frames = fps})}, fps, 1.0));
        EXPECT_EQ(stage.sink.numbers(), run(0, static_cast<size_t>(fps), fps));
        EXPECT_EQ(stage.sink.videoInfo.fpsNum, fps * stage.sink.videoInfo.fpsDen);
        expectEvenDates(stage.sink.pictures, 1e6 / fps);
    }
}

TEST(PlayerFiles, PausesAndGoesOn)
{
    PlayerStage stage;
    stage.holdTime();
    stage.play({clipFile({})}, true);
    ASSERT_TRUE(stage.sink.waitForPictures(5));
    stage.player->pause();
    const qint64 stood = stage.place();
    ASSERT_TRUE(stage.sink.waitFor([&] { return stage.sink.pauses == 1; }));
    EXPECT_EQ(stage.place(), stood);
    stage.play(stage.info.pathList, true); // the same again goes on
    EXPECT_EQ(stage.player->state(), playing);
    ASSERT_TRUE(stage.sink.waitForPictures(20));
    stage.player->stop();
    EXPECT_EQ(stage.player->state(), TavloSourcePlayerStateStopped);
    EXPECT_EQ(stage.sink.numbers(), run(0, stage.sink.pictures.size(), 50)) << "nothing is lost in a pause";
    EXPECT_EQ(stage.sink.resumes, 1);

    // A stop in a pause ends it: what the sink plays sound with is the next play's as well.
    stage.play(stage.info.pathList, true);
    ASSERT_TRUE(stage.sink.waitForPictures(stage.sink.pictureCount() + 1));
    stage.player->pause();
    stage.player->stop();
    EXPECT_EQ(stage.sink.pauses, 2);
    EXPECT_EQ(stage.sink.resumes, 2);
}

TEST(PlayerFiles, PlaysWhatIsThere)
{
    ClipForm soundOnly = codedClip("mp3", "-c:a libmp3lame", 10);
    soundOnly.pictures = false;
    ClipForm picturesOnly = codedClip("mp4", "-c:v libx264 -preset ultrafast", 10);
    picturesOnly.sound = false;
    {
        PlayerStage stage;
        ASSERT_TRUE(stage.playToEnd({clipFile(soundOnly), clipFile(picturesOnly)}, 10, 0.4));
        EXPECT_EQ(stage.sink.pictures.size(), 10U);
        EXPECT_NEAR(static_cast<double>(stage.sink.soundFrames), rate * 0.4, rate * 0.06);
    }
    for (const bool pictures : {true, false}) {
        PlayerStage stage;
        stage.wanted.videoInfo.enable = pictures;
        stage.wanted.audioInfo.enable = !pictures;
        stage.info.url = QStringLiteral("dshow://") + clipFile({.frames = 10}); // as songs name their files
        ASSERT_TRUE(stage.playToEnd({}, pictures ? 10 : 0, pictures ? 0 : 0.4));
        EXPECT_EQ(stage.sink.pictures.size(), pictures ? 10U : 0U);
        EXPECT_EQ(stage.sink.soundFrames > 0, !pictures);
    }
}

TEST(PlayerFiles, KeepsUnevenTimes)
{
    const QString uneven = clipFolderFile(QStringLiteral("uneven.mkv"));
    ASSERT_TRUE(runFfmpeg({"-i", clipFile(codedClip("mp4", "-c:v libx264 -preset ultrafast -an", 20)), "-vf",
                           "select='not(mod(n,3))+eq(n,1)',setpts=PTS", "-vsync", "vfr", "-c:v", "libx264", uneven}));
    PlayerStage stage;
    ASSERT_TRUE(stage.playToEnd({uneven}, 8, 0));
    EXPECT_EQ(stage.sink.numbers(), (std::vector{0, 1, 3, 6, 9, 12, 15, 18}));
    for (const PlayerSink::Picture& picture : stage.sink.pictures)
        EXPECT_NEAR(static_cast<double>(picture.date - stage.sink.pictures.front().date), picture.number * 40'000.0,
                    1000);
}

TEST(PlayerFiles, SkipsWhatItCannotPlayAndTellsSo)
{
    const LogCapture log;
    PlayerStage stage;
    ASSERT_TRUE(stage.playToEnd({"/nowhere.mp4", clipFile({.frames = 5}), "gopher://x/", "/"}, 5, 0.2));
    EXPECT_EQ(log.count("/nowhere.mp4"), 1);
    EXPECT_EQ(log.count("gopher://x/"), 1);
    EXPECT_EQ(stage.sink.numbers(), run(0, 5, 5));
    const std::vector<PlayerSink::State> expected{
        {TavloSourcePlayerStateOpening, 0}, {ended, 0}, {playing, 1}, {ended, 1}, {ended, 2}, {ended, 3},
        {TavloSourcePlayerStateStopped, 3}};
    EXPECT_EQ(stage.sink.states, expected);
    PlayerStage empty;
    empty.play({});
    EXPECT_EQ(log.count("neither a path nor an address"), 1);
    EXPECT_EQ(empty.player->state(), TavloSourcePlayerStateStopped);
}

/// Late pictures are left out, each is counted, and some are shown all the same; sound has pictures wait for it.
TEST(PlayerFiles, WhatIsLateIsLeftOutAndCounted)
{
    ClipForm form = codedClip("mp4", "-c:v libx264 -preset ultrafast");
    form.sound = false;
    for (const bool sound : {false, true}) {
        const LogCapture log;
        PlayerStage stage;
        stage.sink.onPicture = [&](int number) {
            if (number == 5 && !sound)
                stage.time.jump(210'000); // number 8, due at 320, is the first that is late by no more than 100
            else if (number == 10)
                stage.time.jump(1'000'000); // 11 comes after a quarter of a second without one, 33 is due at 1320
        };
        std::vector<int> expected = run(0, 50, 50);
        if (!sound)
            std::erase_if(expected, [](int n) { return n == 6 || n == 7 || (n >= 12 && n <= 32); });
        const QString clip = clipFile(sound ? ClipForm() : form);
        ASSERT_TRUE(stage.playToEnd({clip}, static_cast<int>(expected.size()), sound ? 2.0 : 0));
        EXPECT_EQ(stage.sink.numbers(), expected);
        EXPECT_EQ(log.count("left out: too late 23, all pictures held 0"), sound ? 0 : 1)
            << log.lines().join(u'\n').toStdString();
        EXPECT_NEAR(static_cast<double>(stage.sink.soundFrames), sound ? rate * 2.0 : 0, rate * 0.06);
    }
}

} // namespace
} // namespace tavlo::test
