#include "support/LogCapture.h"
#include "support/PlayerSink.h"
#include "support/TestClips.h"

#include <gmock/gmock.h>

#include <QDir>
#include <QFile>
#include <QThread>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <memory>

namespace tavlo::test {
namespace {

/// A socket that listens on the loopback and is never looked at: whoever connects hears nothing.
class SilentServer
{
public:
    SilentServer() : _socket(socket(AF_INET, SOCK_STREAM, 0))
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof(address);
        auto* const generic = reinterpret_cast<sockaddr*>(&address);
        EXPECT_EQ(bind(_socket, generic, size), 0);
        EXPECT_EQ(listen(_socket, 16), 0);
        EXPECT_EQ(getsockname(_socket, generic, &size), 0);
        _port = ntohs(address.sin_port);
    }
    ~SilentServer() { close(); }

    int port() const { return _port; }

    /// Waits until somebody connects; false after ten seconds.
    bool hasGuest() const
    {
        pollfd waiting{_socket, POLLIN, 0};
        return poll(&waiting, 1, 10'000) == 1 && (_guests.push_back(accept(_socket, nullptr, nullptr)), true);
    }

    void close()
    {
        if (_socket >= 0)
            ::close(std::exchange(_socket, -1));
        for (const int guest : std::exchange(_guests, {}))
            ::close(guest);
    }

private:
    int _socket;
    mutable std::vector<int> _guests;
    int _port = 0;
};

/// A port that nobody has just now.
int freePort()
{
    SilentServer server;
    return server.port();
}

/// An `ffmpeg` that sends a clip without an end.
class Sender
{
public:
    void start(const QStringList& target)
    {
        ClipForm form;
        form.firstNumber = _sent++ * 1000; // another clip each time
        form.options = QString("-c:v libx264 -preset ultrafast -tune zerolatency -g 10 -c:a aac").split(u' ');
        _command.reset();
        _command =
            std::make_unique<Command>(QStringLiteral("ffmpeg"), quietFfmpeg(clipArguments(form, true, true) + target));
        EXPECT_TRUE(_command->isRunning());
    }

    void kill() { _command.reset(); }

private:
    std::unique_ptr<Command> _command;
    int _sent = 0;
};

struct Peer
{
    const char* name;
    const char* format;
    const char* target; ///< of the sender; %1 is a port
    const char* address;
    int kind;
};

void PrintTo(const Peer& peer, std::ostream* out) { *out << peer.name; }

class PlayerNet : public testing::TestWithParam<Peer>
{};

/// A server comes, goes, and comes again: its pictures are there each time, the last one stands meanwhile.
TEST_P(PlayerNet, ComesBackWithItsServer)
{
    const Peer& peer = GetParam();
    const QString port = QString::number(freePort());
    const QStringList target = QStringList{QStringLiteral("-f"), QLatin1String(peer.format)} +
                               QString::fromLatin1(peer.target).arg(port).split(u' ');
    const LogCapture log;
    Sender sender;
    PlayerStage stage;
    stage.info.kind = peer.kind;
    stage.info.url = QString::fromLatin1(peer.address).arg(port);
    stage.info.caching = 200;
    sender.start(target);
    stage.play({});
    ASSERT_TRUE(stage.sink.waitForPictures(15)) << log.lines().join(u'\n').toStdString();
    ASSERT_TRUE(stage.sink.waitFor([&] { return stage.sink.blocks.size() > 20; }));
    EXPECT_EQ(stage.player->state(), TavloSourcePlayerStatePlaying);
    EXPECT_EQ(stage.length(), 0);
    sender.kill();
    sender.start(target);
    const bool back = stage.sink.waitFor([&] { return stage.sink.pictures.back().number >= 1010; });
    EXPECT_TRUE(back) << log.lines().join(u'\n').toStdString();
    stage.player->stop();
    const auto numbers = stage.sink.numbers();
    const auto second = std::find_if(numbers.begin(), numbers.end(), [](int n) { return n >= 1000; });
    EXPECT_TRUE(std::is_sorted(numbers.begin(), second)) << testing::PrintToString(numbers);
    EXPECT_TRUE(std::is_sorted(second, numbers.end())) << testing::PrintToString(numbers);
}

INSTANTIATE_TEST_SUITE_P(
    Protocols, PlayerNet,
    testing::Values(Peer{"Udp", "mpegts", "udp://127.0.0.1:%1?pkt_size=1316", "udp://127.0.0.1:%1", 1},
                    Peer{"Tcp", "mpegts", "tcp://127.0.0.1:%1?listen=1", "tvtp://127.0.0.1:%1", 13},
                    Peer{"Srt", "mpegts", "srt://127.0.0.1:%1?mode=listener", "tvmp://127.0.0.1:%1", 9},
                    Peer{"Rtmp", "flv", "-listen 1 rtmp://127.0.0.1:%1/live/a", "irtmp://127.0.0.1:%1/live/a", 8}),
    [](const auto& peer) { return std::string(peer.param.name); });

/// Whether no thread reads any more, soon or a little later.
bool readersEnd()
{
    const auto reads = [](const QFileInfo& thread) {
        QFile name(thread.filePath() + QStringLiteral("/comm"));
        return name.open(QIODevice::ReadOnly) && name.readAll().startsWith("tavlo-reader");
    };
    for (int i = 0; i < 1000; ++i) {
        const auto threads = QDir(QStringLiteral("/proc/self/task")).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot);
        if (std::ranges::none_of(threads, reads))
            return true;
        QThread::msleep(10);
    }
    return false;
}

/// Whatever the network does, `stop` returns; and reading ends.
TEST(PlayerNetwork, StopsWhileNobodyAnswers)
{
    const SilentServer silent;
    const int nobody = freePort();
    for (const char* form : {"http://127.0.0.1:%1/a.mp4", "rtmp://127.0.0.1:%1/live/a", "rtsp://127.0.0.1:%1/a",
                             "tcp://127.0.0.1:%1", "srt://127.0.0.1:%1", "udp://127.0.0.1:%1"}) {
        for (const int port : {silent.port(), nobody}) {
            PlayerStage stage;
            stage.info.url = QString::fromLatin1(form).arg(port);
            stage.play({});
            ASSERT_TRUE(stage.sink.waitForState({TavloSourcePlayerStateOpening, 0}));
            const bool connects = port == silent.port() && !std::strstr(form, "srt:") && !std::strstr(form, "udp:");
            EXPECT_TRUE(!connects || silent.hasGuest()) << form;
            stage.player->stop();
            EXPECT_EQ(stage.player->state(), TavloSourcePlayerStateStopped);
            EXPECT_TRUE(readersEnd()) << form;
        }
    }
}

TEST(PlayerNetwork, ListsOpenOnlyWhatTheirKindNeeds)
{
    ClipForm form;
    form.frames = 10;
    form.suffix = QStringLiteral("ts");
    const QString clip = clipFile(form);
    SilentServer trap;
    const auto listOf = [&](const QString& name, const QString& target) {
        QFile file(clipFolderFile(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QStringLiteral("#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:0.4,\n%1\n#EXT-X-ENDLIST\n")
                       .arg(target)
                       .toUtf8());
        return file.fileName();
    };
    PlayerStage own;
    own.holdTime(10, 0.4);
    own.play({listOf(QStringLiteral("own.m3u8"), clip)});
    ASSERT_TRUE(own.sink.waitForState({TavloSourcePlayerStateEnded, 0}));
    EXPECT_EQ(own.sink.pictures.size(), 10U);
    PlayerStage other;
    other.play({listOf(QStringLiteral("other.m3u8"), QStringLiteral("http://127.0.0.1:%1/x.ts").arg(trap.port()))});
    ASSERT_TRUE(other.sink.waitForState({TavloSourcePlayerStateEnded, 0})) << "it would wait for the server";
    EXPECT_TRUE(other.sink.pictures.empty());
}

} // namespace
} // namespace tavlo::test
