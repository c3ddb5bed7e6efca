#include "support/LogCapture.h"
#include "support/PlayerSink.h"
#include "support/TestClips.h"

#include <gtest/gtest.h>

#include <QFile>

#include <algorithm>

#include <unistd.h>

namespace tavlo::test {
namespace {

/// A display server whose screen is white.
class WhiteScreen
{
public:
    static constexpr int width = 320, height = 240;

    WhiteScreen()
        : _number(QString::number(100 + getpid() % 30'000)),
          _server(QStringLiteral("Xvfb"), {u':' + _number, "-screen", "0", "320x240x24", "-wr", "-nolisten", "tcp"})
    {
        waitUntil([&] { return !_server.isRunning() || isUp(); });
        _before = qgetenv("DISPLAY");
        qputenv("DISPLAY", (u':' + _number).toUtf8());
    }
    ~WhiteScreen()
    {
        _server.kill(SIGTERM); // takes its files along
        _before.isNull() ? qunsetenv("DISPLAY") : qputenv("DISPLAY", _before);
    }

    bool isUp() const { return QFile::exists(QStringLiteral("/tmp/.X11-unix/X") + _number); }

private:
    const QString _number;
    Command _server;
    QByteArray _before;
};

TEST(PlayerDevice, TheDesktopAndAPartOfIt)
{
    const WhiteScreen screen;
    if (!screen.isUp())
        GTEST_SKIP() << "no display server can be started";
    for (const bool part : {false, true}) {
        PlayerStage stage;
        stage.info.kind = TavloSourcePlayerKindCapture;
        stage.info.deviceName = part ? QStringLiteral("desktop:31,17,65x48") : QStringLiteral("desktop");
        stage.info.audioDeviceName = QStringLiteral("None");
        stage.sink.layouts = {tavloFourcc("NV12")};
        stage.play({});
        ASSERT_TRUE(stage.sink.waitForPictures(10));
        EXPECT_EQ(stage.player->state(), TavloSourcePlayerStatePlaying);
        EXPECT_EQ(stage.length(), 0);
        stage.player->stop();
        EXPECT_EQ(stage.sink.videoInfo.sourceWidth, part ? 65 : WhiteScreen::width);
        EXPECT_EQ(stage.sink.videoInfo.sourceHeight, part ? 48 : WhiteScreen::height);
        const auto luma = static_cast<std::ptrdiff_t>(stage.sink.videoInfo.sourceWidth) * 40;
        EXPECT_GE(*std::min_element(stage.sink.lastPicture.begin(), stage.sink.lastPicture.begin() + luma), 230);
        for (size_t i = 1; i < stage.sink.pictures.size(); ++i)
            EXPECT_GT(stage.sink.pictures[i].date, stage.sink.pictures[i - 1].date);
    }
}

/// What isn't there is told by its name and looked for again: a device may be plugged in later, NDI's library is the
/// user's to install.
TEST(PlayerDevice, AMissingOneIsToldAndAwaited)
{
    struct Case
    {
        const char* picture; ///< "" for one of NDI
        const char* sound;
        const char* told;
        const char* url = "";
    };
    const auto play = [](PlayerStage& stage, const Case& c) {
        stage.info.kind = *c.picture ? TavloSourcePlayerKindCapture : TavloSourcePlayerKindNDI;
        stage.info.deviceName = QString::fromLatin1(c.picture);
        stage.info.audioDeviceName = QString::fromLatin1(c.sound);
        stage.info.url = QString::fromLatin1(c.url);
        stage.play({});
    };
    for (const Case& c :
         {Case{"/dev/video-none", "None", "/dev/video-none"}, Case{"No Such Camera", "None", "No Such Camera"},
          Case{"None", "hw:NoSuchCard", "hw:NoSuchCard"}, Case{"../../etc/passwd", "None", "../../etc/passwd"},
          Case{"", "", "failed to open ndi:nobody", "ndi:nobody"}}) {
        SCOPED_TRACE(c.told);
        const LogCapture log;
        PlayerStage stage;
        play(stage, c);
        EXPECT_TRUE(waitUntil([&] { return log.count("trying again") > 0 && log.count(c.told) > 1; }))
            << log.lines().join(u'\n').toStdString();
        EXPECT_GE(log.count("failed to open"), 1);
        EXPECT_LE(log.count("no libndi"), 1);
        EXPECT_EQ(stage.player->state(), TavloSourcePlayerStateOpening);
        stage.player->stop();
        EXPECT_TRUE(stage.sink.pictures.empty());
    }
    for (const Case& nothing : {Case{"None", "None", ""}, Case{"", "", "", "ndi://"}}) {
        PlayerStage stage;
        play(stage, nothing);
        EXPECT_EQ(stage.player->state(), TavloSourcePlayerStateStopped);
    }
}

} // namespace
} // namespace tavlo::test
