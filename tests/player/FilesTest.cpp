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

/// Each number from the first on is there once and in order, but for those that the player says it left out.
void expectEachOnce(const std::vector<int>& numbers, int first, int count, int missing)
{
    EXPECT_TRUE(std::is_sorted(numbers.begin(), numbers.end(), std::less_equal<>())) << testing::PrintToString(numbers);
    EXPECT_EQ(static_cast<int>(numbers.size()) + missing, count) << testing::PrintToString(numbers);
    ASSERT_FALSE(numbers.empty());
    EXPECT_GE(numbers.front(), first);
    EXPECT_LT(numbers.back(), first + count);
    EXPECT_LT(missing, count / 2);
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
        expectEachOnce(stage.sink.numbers(), 0, 50, leftOut(log));
        EXPECT_NEAR(static_cast<double>(stage.sink.soundFrames), rate * 2.0 / 2, rate * 0.15);
        EXPECT_EQ(stage.sink.videoStarts, 1);
        EXPECT_EQ(stage.sink.videoStops, 1);
        EXPECT_EQ(stage.sink.audioStarts, 1);
        EXPECT_EQ(stage.sink.audioStops, 1);
    }
}

} // namespace
} // namespace tavlo::test
