#include "support/LogCapture.h"
#include "support/LoopbackSocket.h"
#include "support/PlayerSink.h"
#include "support/TestClips.h"

#include <gmock/gmock.h>

#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <malloc.h>
#include <poll.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <optional>

namespace tavlo::test {
namespace {

/// A socket that listens on the loopback and is never looked at: whoever connects hears nothing.
class SilentServer
{
public:
    ~SilentServer()
    {
        for (const int socket : _sockets)
            close(socket);
    }

    int port() const { return _port; }

    /// Waits until somebody connects; false after ten seconds.
    bool hasGuest()
    {
        pollfd waiting{_sockets.front(), POLLIN, 0};
        if (poll(&waiting, 1, 10'000) != 1)
            return false;
        _sockets.push_back(accept(_sockets.front(), nullptr, nullptr));
        return true;
    }

private:
    int _port = 0;
    std::vector<int> _sockets{listenOnLoopback(_port)}; ///< its own, and the guests'
};

/// A port that nobody has just now.
int freePort() { return SilentServer().port(); }

/// As a web server of the clips' folder. What it doesn't have is not found.
void serveClips(int guest)
{
    std::array<char, 4096> request{};
    const ssize_t size = recv(guest, request.data(), request.size(), 0);
    const QString path = QString::fromUtf8(request.data(), std::max<ssize_t>(size, 0)).section(u' ', 1, 1);
    QFile file(clipFolderFile(path.mid(1)));
    const bool found = file.open(QIODevice::ReadOnly);
    const QByteArray body = found ? file.readAll() : QByteArray();
    const QByteArray answer = QByteArray(found ? "HTTP/1.1 200 OK" : "HTTP/1.1 404 Not Found") +
                              "\r\nConnection: close\r\nContent-Length: " + QByteArray::number(body.size()) +
                              "\r\n\r\n" + body;
    send(guest, answer.constData(), static_cast<size_t>(answer.size()), MSG_NOSIGNAL);
}

/// An `ffmpeg` that sends a clip without an end.
class Sender
{
public:
    void start(const QStringList& target)
    {
        ClipForm form{.firstNumber = _sent++ * 1000}; // another clip each time
        form.options = optionsOf("-c:v libx264 -preset ultrafast -tune zerolatency -g 10 -c:a aac");
        _command.emplace(QStringLiteral("ffmpeg"), quietFfmpeg(clipArguments(form, true, true) + target));
        EXPECT_TRUE(_command->isRunning());
    }

    void kill() { _command.reset(); }

private:
    std::optional<Command> _command;
    int _sent = 0;
};

void expectItPlays(PlayerStage& stage, const LogCapture& log)
{
    stage.info.caching = 200;
    stage.player->setRate(2); // there is nothing to be quick with
    stage.play({});
    ASSERT_TRUE(stage.sink.waitForPictures(15)) << log.lines().join(u'\n').toStdString();
    ASSERT_TRUE(stage.sink.waitFor([&] { return stage.sink.blocks.size() > 20; }));
    EXPECT_EQ(stage.player->state(), TavloSourcePlayerStatePlaying);
    EXPECT_EQ(stage.length(), 0);
    EXPECT_EQ(stage.player->rate(), 1);
}

/// A server comes, goes, and comes again: its pictures are there each time, the last one stands meanwhile.
void expectItComesBack(PlayerStage& stage, const std::function<void()>& restart)
{
    const LogCapture log;
    ASSERT_NO_FATAL_FAILURE(expectItPlays(stage, log));
    restart();
    const bool back = stage.sink.waitFor([&] { return stage.sink.pictures.back().number >= 1010; });
    EXPECT_TRUE(back) << log.lines().join(u'\n').toStdString();
    stage.player->stop();
}

/// The numbers only grow, but for where the sender is another one.
void expectInOrder(const PlayerSink& sink)
{
    const auto numbers = sink.numbers();
    const auto second = std::ranges::find_if(numbers, [](int n) { return n >= 1000; });
    EXPECT_TRUE(std::is_sorted(numbers.begin(), second)) << testing::PrintToString(numbers);
    EXPECT_TRUE(std::is_sorted(second, numbers.end())) << testing::PrintToString(numbers);
}

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

TEST_P(PlayerNet, ComesBackWithItsServer)
{
    const Peer& peer = GetParam();
    if (std::strstr(peer.address, "[::1]") && !hasIpv6())
        GTEST_SKIP() << "this machine's loopback has no address of IPv6";
    const QString port = QString::number(freePort());
    const QStringList target = QStringList{QStringLiteral("-f"), QLatin1String(peer.format)} +
                               optionsOf(QString::fromLatin1(peer.target).arg(port));
    Sender sender;
    PlayerStage stage;
    stage.info.kind = peer.kind;
    stage.info.url = QString::fromLatin1(peer.address).arg(port);
    sender.start(target);
    expectItComesBack(stage, [&] { sender.start(target); });
    expectInOrder(stage.sink);
}

INSTANTIATE_TEST_SUITE_P(
    Protocols, PlayerNet,
    testing::Values(Peer{"Udp", "mpegts", "udp://127.0.0.1:%1?pkt_size=1316", "udp://127.0.0.1:%1", 1},
                    Peer{"UdpOfIpv6", "mpegts", "udp://[::1]:%1?pkt_size=1316", "udp://[::1]:%1", 1},
                    Peer{"Tcp", "mpegts", "tcp://127.0.0.1:%1?listen=1", "tvtp://127.0.0.1:%1", 13},
                    Peer{"Srt", "mpegts", "srt://127.0.0.1:%1?mode=listener", "tvmp://127.0.0.1:%1", 9},
                    Peer{"SrtCalled", "mpegts", "srt://127.0.0.1:%1?mode=caller&connect_timeout=60000",
                         "tvmp://127.0.0.1:%1?mode=listener", 10},
                    Peer{"Rtmp", "flv", "-listen 1 rtmp://127.0.0.1:%1/live/a", "irtmp://127.0.0.1:%1/live/a", 8},
                    Peer{"RtmpAddress", "flv", "-listen 1 rtmp://127.0.0.1:%1/live/a", "rtmp://127.0.0.1:%1/live/a",
                         1}),
    [](const auto& peer) { return std::string(peer.param.name); });

/// A server of RTSP: what it gets as RTP on its own port goes on over the guest's connection or, where that is not
/// offered, in datagrams.
class RtspServer
{
public:
    explicit RtspServer(bool datagrams, int port = 0)
        : _datagrams(datagrams), _server(
                                     std::in_place, [this](int guest) { serve(guest); }, port)
    {
        sockaddr_in address = loopback(0);
        socklen_t size = sizeof(address);
        auto* const generic = reinterpret_cast<sockaddr*>(&address);
        EXPECT_EQ(bind(_incoming, generic, size), 0);
        EXPECT_EQ(getsockname(_incoming, generic, &size), 0);
        _rtpPort = ntohs(address.sin_port);
    }

    ~RtspServer()
    {
        _ends = true;
        _server.reset();
        close(_incoming);
    }

    int port() const { return _server->port(); }

    /// Where RTP is taken.
    int rtpPort() const { return _rtpPort; }

private:
    void serve(int guest)
    {
        bool plays = false;
        std::array<char, 4 + 65'536> packet{};
        while (!_ends) {
            std::array<pollfd, 2> waiting{pollfd{guest, POLLIN, 0}, pollfd{_incoming, POLLIN, 0}};
            poll(waiting.data(), waiting.size(), 50);
            if (waiting[0].revents != 0 && !answer(guest, plays))
                return;
            if (!(waiting[1].revents & POLLIN))
                continue;
            const ssize_t size = recv(_incoming, packet.data() + 4, packet.size() - 4, 0);
            if (!plays || size <= 0)
                continue;
            if (_datagrams) {
                const sockaddr_in guestsPort = loopback(_guestsPort);
                sendto(_incoming, packet.data() + 4, static_cast<size_t>(size), 0,
                       reinterpret_cast<const sockaddr*>(&guestsPort), sizeof(guestsPort));
                continue;
            }
            packet[0] = '$';
            packet[1] = 0;
            packet[2] = static_cast<char>(size >> 8);
            packet[3] = static_cast<char>(size);
            if (send(guest, packet.data(), static_cast<size_t>(size) + 4, MSG_NOSIGNAL) < 0)
                return;
        }
    }

    bool answer(int guest, bool& plays)
    {
        std::array<char, 4096> text{};
        const ssize_t size = recv(guest, text.data(), text.size(), 0);
        if (size <= 0)
            return false;
        const QString request = QString::fromUtf8(text.data(), size);
        if (request.startsWith(u'$')) // a report of the receiver's
            return true;
        static const QRegularExpression number(QStringLiteral("CSeq: *(\\d+)"));
        QString head =
            QStringLiteral("RTSP/1.0 200 OK\r\nCSeq: %1\r\nSession: 1\r\n").arg(number.match(request).captured(1));
        const char* body = "";
        if (request.startsWith(u"OPTIONS")) {
            head += QStringLiteral("Public: DESCRIBE, SETUP, PLAY, TEARDOWN\r\n");
        } else if (request.startsWith(u"DESCRIBE")) {
            body = "v=0\r\no=- 0 0 IN IP4 127.0.0.1\r\ns=a\r\nt=0 0\r\nm=video 0 RTP/AVP 33\r\na=control:a\r\n";
            head += QStringLiteral("Content-Type: application/sdp\r\n");
        } else if (request.startsWith(u"SETUP")) {
            const bool overTcp = request.contains(u"RTP/AVP/TCP");
            _wasAskedForTcp = _wasAskedForTcp || overTcp;
            EXPECT_TRUE(_wasAskedForTcp) << "datagrams are what networks lose";
            if (_datagrams && overTcp) {
                head.replace(QStringLiteral("200 OK"), QStringLiteral("461 Unsupported Transport"));
            } else if (_datagrams) {
                const QString ports = request.section(QStringLiteral("client_port="), 1).section(u'\r', 0, 0);
                _guestsPort = ports.section(u'-', 0, 0).toInt();
                head += QStringLiteral("Transport: RTP/AVP;unicast;client_port=%1;server_port=%2-%3\r\n")
                            .arg(ports)
                            .arg(_rtpPort)
                            .arg(_rtpPort + 1);
            } else {
                head += QStringLiteral("Transport: RTP/AVP/TCP;unicast;interleaved=0-1\r\n");
            }
        }
        plays = plays || request.startsWith(u"PLAY");
        head += QStringLiteral("Content-Length: %1\r\n\r\n").arg(qstrlen(body));
        const QByteArray all = head.toUtf8() + body;
        return send(guest, all.constData(), static_cast<size_t>(all.size()), MSG_NOSIGNAL) == all.size();
    }

    const bool _datagrams;
    const int _incoming = socket(AF_INET, SOCK_DGRAM, 0);
    std::atomic<int> _rtpPort{0};
    std::atomic<bool> _ends{false};

    // the server's thread
    bool _wasAskedForTcp = false;
    int _guestsPort = 0;

    std::optional<LoopbackServer> _server;
};

class PlayerRtsp : public testing::TestWithParam<bool>
{};

TEST_P(PlayerRtsp, PlaysOverItsOwnConnectionAndComesBackOrElsePlaysInDatagrams)
{
    const bool datagrams = GetParam();
    std::optional<RtspServer> server(std::in_place, datagrams);
    Sender sender;
    const auto start = [&] {
        sender.start({"-f", "rtp_mpegts", QStringLiteral("rtp://127.0.0.1:%1").arg(server->rtpPort())});
    };
    start();
    PlayerStage stage;
    stage.info.url = QStringLiteral("rtsp://127.0.0.1:%1/a").arg(server->port());
    if (datagrams)
        expectItPlays(stage, LogCapture());
    else
        expectItComesBack(stage, [&] {
            const int port = server->port();
            server.reset();
            server.emplace(datagrams, port);
            start();
        });
    stage.player->stop();
    expectInOrder(stage.sink);
}

INSTANTIATE_TEST_SUITE_P(Ways, PlayerRtsp, testing::Bool());

/// A live list of pieces, over a server that goes and comes again, with a stream that does.
TEST(PlayerNetwork, HlsComesBackWithItsServer)
{
    std::optional<LoopbackServer> server(std::in_place, &serveClips);
    const QStringList target =
        optionsOf("-f hls -hls_time 0.4 -hls_start_number_source epoch_us -hls_flags delete_segments") +
        QStringList{clipFolderFile(QStringLiteral("live.m3u8"))};
    Sender sender;
    sender.start(target);
    EXPECT_TRUE(waitUntil([&] { return QFile::exists(target.back()); }));
    PlayerStage stage;
    stage.info.url = QStringLiteral("http://127.0.0.1:%1/live.m3u8").arg(server->port());
    expectItComesBack(stage, [&] {
        const int port = server->port();
        server.reset();
        sender.kill();
        server.emplace(&serveClips, port);
        sender.start(target);
    });
}

/// What the process holds.
struct Holding
{
    qsizetype threads = entries("/proc/self/task");
    qsizetype files = entries("/proc/self/fd");
    size_t bytes = mallinfo2().uordblks;

    static qsizetype entries(const char* folder) { return QDir(QLatin1String(folder)).entryList().size(); }
};

class PlayerRepeated : public testing::TestWithParam<bool>
{};

TEST_P(PlayerRepeated, NothingGrowsFromPlayToPlay)
{
    ClipForm form = codedClip("ts", "-c:v mpeg2video -c:a mp2", 5);
    form.width = form.height = 64;
    const QFileInfo file(clipFile(form));
    const LoopbackServer server(&serveClips);
    const QString web = QStringLiteral("http://127.0.0.1:%1/").arg(server.port());
    const QString path = GetParam() ? web + file.fileName() : file.filePath();
    const auto playAll = [&path](int players) {
        for (int play = 0; play < players; ++play) {
            PlayerStage stage;
            stage.info.caching = 0;
            stage.holdTime(5, 0.2);
            stage.play({path});
            ASSERT_TRUE(stage.sink.waitForPictures(static_cast<size_t>(play % 6)));
        }
        PlayerStage again; // and one player many times
        again.info.caching = 0;
        for (int play = 0; play < 20; ++play) {
            const size_t before = again.sink.pictureCount();
            again.play({path, QString::number(play)});
            ASSERT_TRUE(again.sink.waitForPictures(before + 1));
            if (play % 2)
                again.player->stop();
        }
        EXPECT_EQ(again.sink.videoStarts, again.sink.videoStops);
        EXPECT_EQ(again.sink.audioStarts, again.sink.audioStops);
    };
    playAll(20);
    const Holding before;
    playAll(200);
    Holding after; // threads that end by themselves may take a while
    EXPECT_TRUE(waitUntil([&] { return (after = {}).threads <= before.threads && after.files <= before.files; }));
    EXPECT_LE(after.bytes, before.bytes + 100'000);
}

INSTANTIATE_TEST_SUITE_P(FileAndStream, PlayerRepeated, testing::Bool());

/// Whatever the network does, `stop` returns; and reading ends.
TEST(PlayerNetwork, StopsWhileNobodyAnswers)
{
    SilentServer silent;
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

/// Neither what is refused nor what isn't there is told with what is secret in its address.
TEST(PlayerNetwork, SecretsAreNotTold)
{
    const QString nobody = QStringLiteral("127.0.0.1:%1").arg(freePort());
    for (const auto& [kind, form] :
         {std::pair(1, "gopher://x/?passphrase=hidden"), std::pair(1, "srt:x?mode=caller&passphrase=hidden"),
          std::pair(13, "tvtp:x?key=hidden"), std::pair(1, "tcp://%1?a=b&access_token=hidden&c=d"),
          std::pair(1, "http://me:hidden@%1/a?X-Signature=hidden#c")}) {
        SCOPED_TRACE(form);
        const LogCapture log;
        PlayerStage stage;
        stage.info.kind = kind;
        stage.info.url = QString::fromLatin1(form).replace(QLatin1String("%1"), nobody);
        stage.play({});
        EXPECT_TRUE(waitUntil([&] { return !log.lines().isEmpty(); }));
        stage.player->stop();
        EXPECT_GE(log.count("=..."), 1) << log.lines().join(u'\n').toStdString();
        EXPECT_EQ(log.count("hidden"), 0) << log.lines().join(u'\n').toStdString();
    }
}

TEST(PlayerNetwork, ListsOpenOnlyWhatTheirKindNeeds)
{
    const SilentServer trap;
    const auto listOf = [&](const QString& name, const QString& target) {
        QFile file(clipFolderFile(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QStringLiteral("#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:0.4,\n%1\n#EXT-X-ENDLIST\n")
                       .arg(target)
                       .toUtf8());
        return file.fileName();
    };
    PlayerStage own;
    const QString clip = clipFile({.frames = 10, .suffix = QStringLiteral("ts")});
    ASSERT_TRUE(own.playToEnd({listOf(QStringLiteral("own.m3u8"), clip)}, 10, 0.4));
    EXPECT_EQ(own.sink.pictures.size(), 10U);
    PlayerStage other;
    other.play({listOf(QStringLiteral("other.m3u8"), QStringLiteral("http://127.0.0.1:%1/x.ts").arg(trap.port()))});
    ASSERT_TRUE(other.sink.waitForState({TavloSourcePlayerStateEnded, 0})) << "it would wait for the server";
    EXPECT_TRUE(other.sink.pictures.empty());
}

} // namespace
} // namespace tavlo::test
