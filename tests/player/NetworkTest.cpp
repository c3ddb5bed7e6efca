#include "support/LogCapture.h"
#include "support/LoopbackSocket.h"
#include "support/PlayerSink.h"
#include "support/TestClips.h"

#include <gmock/gmock.h>

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QThread>

#include <malloc.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <memory>
#include <thread>

namespace tavlo::test {
namespace {

/// A socket that listens on the loopback and is never looked at: whoever connects hears nothing.
class SilentServer
{
public:
    explicit SilentServer(int port = 0) : _port(port), _socket(listenOnLoopback(_port)) {}
    ~SilentServer() { close(); }

    int port() const { return _port; }

    /// Waits until somebody connects; false after ten seconds.
    bool hasGuest() const
    {
        pollfd waiting{_socket, POLLIN, 0};
        return poll(&waiting, 1, 10'000) == 1 && (_guests.push_back(accept(_socket, nullptr, nullptr)), true);
    }

    /// The first guest; -1 when none came before the flag was set.
    int acceptGuest(const std::atomic<bool>& ends) const
    {
        pollfd waiting{_socket, POLLIN, 0};
        while (!ends && poll(&waiting, 1, 50) != 1) {
        }
        if (!ends)
            _guests.push_back(accept(_socket, nullptr, nullptr));
        return ends ? -1 : _guests.back();
    }

    void close()
    {
        if (_socket >= 0)
            ::close(std::exchange(_socket, -1));
        closeGuests();
    }

    void closeGuests() const
    {
        for (const int guest : std::exchange(_guests, {}))
            ::close(guest);
    }

private:
    int _port;
    int _socket; ///< behind the port, which it sets
    mutable std::vector<int> _guests;
};

/// A port that nobody has just now.
int freePort()
{
    SilentServer server;
    return server.port();
}

/// A web server of the clips' folder, one guest after the other. What it doesn't have is not found.
class FileServer
{
public:
    explicit FileServer(int port = 0) : _server(port), _thread([this] { serve(); }) {}
    ~FileServer()
    {
        _ends = true;
        _thread.join();
    }

    int port() const { return _server.port(); }

private:
    void serve()
    {
        for (int guest = _server.acceptGuest(_ends); guest >= 0; guest = _server.acceptGuest(_ends)) {
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
            _server.closeGuests();
        }
    }

    SilentServer _server;
    std::atomic<bool> _ends{false};
    std::thread _thread;
};

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

bool hasIpv6()
{
    QFile addresses(QStringLiteral("/proc/net/if_inet6"));
    return addresses.open(QIODevice::ReadOnly) && addresses.readAll().contains("00000000000000000000000000000001 ");
}

/// A server comes, goes, and comes again: its pictures are there each time, the last one stands meanwhile.
TEST_P(PlayerNet, ComesBackWithItsServer)
{
    const Peer& peer = GetParam();
    if (std::strstr(peer.address, "[::1]") && !hasIpv6())
        GTEST_SKIP() << "this machine's loopback has no address of IPv6";
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
    stage.player->setRate(2); // there is nothing to be quick with
    stage.play({});
    ASSERT_TRUE(stage.sink.waitForPictures(15)) << log.lines().join(u'\n').toStdString();
    ASSERT_TRUE(stage.sink.waitFor([&] { return stage.sink.blocks.size() > 20; }));
    EXPECT_EQ(stage.player->state(), TavloSourcePlayerStatePlaying);
    EXPECT_EQ(stage.length(), 0);
    EXPECT_EQ(stage.player->rate(), 1);
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
                    Peer{"UdpOfIpv6", "mpegts", "udp://[::1]:%1?pkt_size=1316", "udp://[::1]:%1", 1},
                    Peer{"Tcp", "mpegts", "tcp://127.0.0.1:%1?listen=1", "tvtp://127.0.0.1:%1", 13},
                    Peer{"Srt", "mpegts", "srt://127.0.0.1:%1?mode=listener", "tvmp://127.0.0.1:%1", 9},
                    Peer{"SrtCalled", "mpegts", "srt://127.0.0.1:%1?mode=caller&connect_timeout=60000",
                         "tvmp://127.0.0.1:%1?mode=listener", 10},
                    Peer{"Rtmp", "flv", "-listen 1 rtmp://127.0.0.1:%1/live/a", "irtmp://127.0.0.1:%1/live/a", 8},
                    Peer{"RtmpAddress", "flv", "-listen 1 rtmp://127.0.0.1:%1/live/a", "rtmp://127.0.0.1:%1/live/a",
                         1}),
    [](const auto& peer) { return std::string(peer.param.name); });

/// A server of RTSP for one guest after the other: what it gets as RTP on its own port goes on over the guest's connection or, where
/// that is not offered, in datagrams.
class RtspServer
{
public:
    explicit RtspServer(bool datagrams, int port = 0)
        : _server(port), _datagrams(datagrams), _incoming(socket(AF_INET, SOCK_DGRAM, 0)), _thread([this] { serve(); })
    {}

    ~RtspServer()
    {
        _ends = true;
        _thread.join();
        ::close(_incoming);
    }

    int port() const { return _server.port(); }

    /// Where RTP is taken.
    int rtpPort()
    {
        sockaddr_in address = loopback(0);
        socklen_t size = sizeof(address);
        auto* const generic = reinterpret_cast<sockaddr*>(&address);
        EXPECT_EQ(bind(_incoming, generic, size), 0);
        EXPECT_EQ(getsockname(_incoming, generic, &size), 0);
        return _rtpPort = ntohs(address.sin_port);
    }

private:
    static sockaddr_in loopback(int port)
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<uint16_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        return address;
    }

    void serve()
    {
        for (int guest = _server.acceptGuest(_ends); guest >= 0; guest = _server.acceptGuest(_ends)) {
            serve(guest);
            _server.closeGuests();
        }
    }

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
        QString body;
        if (request.startsWith(QLatin1String("OPTIONS"))) {
            head += QStringLiteral("Public: DESCRIBE, SETUP, PLAY, TEARDOWN\r\n");
        } else if (request.startsWith(QLatin1String("DESCRIBE"))) {
            body = QStringLiteral(
                "v=0\r\no=- 0 0 IN IP4 127.0.0.1\r\ns=a\r\nt=0 0\r\nm=video 0 RTP/AVP 33\r\na=control:a\r\n");
            head += QStringLiteral("Content-Type: application/sdp\r\n");
        } else if (request.startsWith(QLatin1String("SETUP"))) {
            const bool overTcp = request.contains(QLatin1String("RTP/AVP/TCP"));
            _wasAskedForTcp = _wasAskedForTcp || overTcp;
            EXPECT_TRUE(_wasAskedForTcp) << "datagrams are what networks lose";
            static const QRegularExpression ports(QStringLiteral("client_port=(\\d+)"));
            if (_datagrams && overTcp) {
                head.replace(QLatin1String("200 OK"), QLatin1String("461 Unsupported Transport"));
            } else if (_datagrams) {
                _guestsPort = ports.match(request).captured(1).toInt();
                head += QStringLiteral("Transport: RTP/AVP;unicast;client_port=%1-%2;server_port=%3-%4\r\n")
                            .arg(_guestsPort)
                            .arg(_guestsPort + 1)
                            .arg(_rtpPort)
                            .arg(_rtpPort + 1);
            } else {
                head += QStringLiteral("Transport: RTP/AVP/TCP;unicast;interleaved=0-1\r\n");
            }
        }
        plays = plays || request.startsWith(QLatin1String("PLAY"));
        const QByteArray all = (head + QStringLiteral("Content-Length: %1\r\n\r\n").arg(body.size()) + body).toUtf8();
        return send(guest, all.constData(), static_cast<size_t>(all.size()), MSG_NOSIGNAL) == all.size();
    }

    SilentServer _server;
    const bool _datagrams;
    const int _incoming;
    std::atomic<int> _rtpPort{0};

    // its thread
    bool _wasAskedForTcp = false;
    int _guestsPort = 0;

    std::atomic<bool> _ends{false};
    std::thread _thread;
};

class PlayerRtsp : public testing::TestWithParam<bool>
{};

TEST_P(PlayerRtsp, PlaysOverItsOwnConnectionOrElseInDatagrams)
{
    RtspServer server(GetParam());
    Sender sender;
    sender.start({"-f", "rtp_mpegts", QStringLiteral("rtp://127.0.0.1:%1").arg(server.rtpPort())});
    const LogCapture log;
    PlayerStage stage;
    stage.info.url = QStringLiteral("rtsp://127.0.0.1:%1/a").arg(server.port());
    stage.info.caching = 200;
    stage.play({});
    EXPECT_TRUE(stage.sink.waitForPictures(15)) << log.lines().join(u'\n').toStdString();
    EXPECT_TRUE(stage.sink.waitFor([&] { return stage.sink.blocks.size() > 20; }));
    stage.player->stop();
    EXPECT_TRUE(std::ranges::is_sorted(stage.sink.numbers())) << testing::PrintToString(stage.sink.numbers());
}

INSTANTIATE_TEST_SUITE_P(Ways, PlayerRtsp, testing::Bool());

/// Servers that go and come again at the same address, the stream with them.
void expectItComesBack(PlayerStage& stage, const std::function<void()>& restart)
{
    const LogCapture log;
    stage.play({});
    ASSERT_TRUE(stage.sink.waitForPictures(5)) << log.lines().join(u'\n').toStdString();
    restart();
    const bool back = stage.sink.waitFor([&] { return stage.sink.pictures.back().number >= 1000; });
    EXPECT_TRUE(back) << log.lines().join(u'\n').toStdString();
    stage.player->stop();
}

TEST(PlayerNetwork, RtspComesBackWithItsServer)
{
    auto server = std::make_unique<RtspServer>(false);
    const auto start = [&](Sender& sender) {
        sender.start({"-f", "rtp_mpegts", QStringLiteral("rtp://127.0.0.1:%1").arg(server->rtpPort())});
    };
    Sender sender;
    start(sender);
    PlayerStage stage;
    stage.info.url = QStringLiteral("rtsp://127.0.0.1:%1/a").arg(server->port());
    stage.info.caching = 200;
    expectItComesBack(stage, [&] {
        const int port = server->port();
        server.reset();
        sender.kill();
        server = std::make_unique<RtspServer>(false, port);
        start(sender);
    });
}

/// A live list of pieces, over a server that goes and comes again, with a stream that does.
TEST(PlayerNetwork, HlsComesBackWithItsServer)
{
    auto server = std::make_unique<FileServer>();
    const QStringList target = QStringList{"-f",
                                           "hls",
                                           "-hls_time",
                                           "0.4",
                                           "-hls_start_number_source",
                                           "epoch_us",
                                           "-hls_flags",
                                           "delete_segments",
                                           clipFolderFile(QStringLiteral("live.m3u8"))};
    Sender sender;
    sender.start(target);
    for (int i = 0; i < 6000 && !QFile::exists(target.back()); ++i)
        QThread::msleep(10);
    PlayerStage stage;
    stage.info.url = QStringLiteral("http://127.0.0.1:%1/live.m3u8").arg(server->port());
    stage.info.caching = 200;
    stage.player->setRate(2);
    expectItComesBack(stage, [&] {
        EXPECT_EQ(stage.player->rate(), 1);
        EXPECT_EQ(stage.length(), 0);
        const int port = server->port();
        server.reset();
        sender.kill();
        server = std::make_unique<FileServer>(port);
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

void playOnce(const QString& path, size_t pictures)
{
    PlayerStage stage;
    stage.info.caching = 0;
    stage.holdTime(5, 0.2);
    stage.play({path});
    ASSERT_TRUE(stage.sink.waitForPictures(pictures));
    stage.player->stop();
}

class PlayerRepeated : public testing::TestWithParam<bool>
{};

TEST_P(PlayerRepeated, NothingGrowsFromPlayToPlay)
{
    ClipForm form = codedClip("ts", "-c:v mpeg2video -c:a mp2", 5);
    form.width = form.height = 64;
    const QFileInfo file(clipFile(form));
    const FileServer server;
    const QString web = QStringLiteral("http://127.0.0.1:%1/").arg(server.port());
    const QString path = GetParam() ? web + file.fileName() : file.filePath();
    for (int play = 0; play < 20; ++play)
        playOnce(path, 1);
    const Holding before;
    for (size_t play = 0; play < 200; ++play)
        playOnce(path, 1 + play % 5);
    const Holding after;
    EXPECT_LE(after.threads, before.threads);
    EXPECT_LE(after.files, before.files);
    EXPECT_LE(after.bytes, before.bytes + 100'000);
}

INSTANTIATE_TEST_SUITE_P(FileAndStream, PlayerRepeated, testing::Bool());

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
        for (int i = 0; i < 6000 && log.lines().isEmpty(); ++i)
            QThread::msleep(10);
        stage.player->stop();
        EXPECT_GE(log.count("=..."), 1) << log.lines().join(u'\n').toStdString();
        EXPECT_EQ(log.count("hidden"), 0) << log.lines().join(u'\n').toStdString();
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
