#include "OutputSupport.h"
#include "Viewer.h"
#include "support/LogCapture.h"
#include "support/LoopbackSocket.h"
#include "support/TestClips.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <thread>

namespace {

using namespace tavlo::test;

constexpr int net = TavloPresentOutputTypeNet;

using Param = tagTavloPresentOutputParam;

TEST(StreamNet, WritesAPlaylistAndBeginsAnewInItsFolder)
{
    const QTemporaryDir folder;
    int number = 105;
    Stage stage(Stage::Way::Pictures);
    Param param = Stage::param(QString());
    param.hlsEnabled = 1;
    param.hlsDir = folder.path();
    param.hlsPath.clear();
    param.hlsSegmentSeconds = 1;
    stage.start(net, param);
    stage.commit(0, 60);
    stage.stop(net);
    const QString list = folder.filePath(QStringLiteral("index.m3u8"));
    EXPECT_EQ(decode(list).numbers, numbersFrom(0, 60));

    stage.start(net, param); // what the list named goes
    stage.commit(60, 30);
    stage.stop(net);
    EXPECT_EQ(decode(list).numbers, numbersFrom(60, 30));
    QFile text(list);
    ASSERT_TRUE(text.open(QIODevice::ReadOnly));
    EXPECT_EQ(QDir(folder.path()).entryList({QStringLiteral("*.ts")}).size(), text.readAll().count("#EXTINF"));

    stage.start(net, param);
    stage.commit(90, 15);
    stage.awaitWritten();
    ASSERT_TRUE(QDir(folder.path()).removeRecursively()); // under the segment that is written
    while (stage.statistics().netState != tagTavloOutputStatistics::Waiting)
        stage.commit(number++, 1);
    const int first = number;
    while (stage.statistics().netState != tagTavloOutputStatistics::Running) { // in some seconds
        stage.commit(number++, 1);
        std::this_thread::sleep_for(std::chrono::milliseconds(10)); // 4096 pictures have numbers
    }
    stage.commit(number, 30);
    stage.stop(net);
    const std::vector<int> numbers = decode(list).numbers;
    EXPECT_GE(numbers.size(), 30U);
    EXPECT_GE(numbers.empty() ? -1 : numbers.front(), first);
}

void http(Param& param, quint16 port)
{
    param.httpEnabled = 1;
    param.httpPort = port;
}

void rtsp(Param& param, quint16 port)
{
    param.rtspEnabled = 1;
    param.rtspPort = port;
}

void peer(Param& param, quint16 port)
{
    param.peerEnabled = 1;
    param.peerAddress = QStringLiteral("127.0.0.1");
    param.peerPort = port;
    param.peerOption = QStringLiteral("tlpktdrop=0"); // a slow machine's packets are late
}

void push(Param& param, quint16 port)
{
    param.pushEnabled = 1;
    param.pushPath = QStringLiteral("http://127.0.0.1:%1/output").arg(port);
}

/// A stream that a viewer comes to at any time, or that comes to him.
struct Served
{
    const char* name;
    const char* input; ///< options and address; %1 is a port
    void (*enable)(Param& param, quint16 port);
    int pause = 10; ///< milliseconds between the pictures before he sees
    enum
    {
        WhenServed,
        WhenBound,
        First
    } comes = WhenServed;
};

const std::vector<Served> streams{
    {"HttpMpegTs", "-i http://127.0.0.1:%1/live/0", http},
    {"HttpFlv", "-i http://127.0.0.1:%1/show.flv",
     [](Param& param, quint16 port) {
         http(param, port);
         param.httpPaths[2] = QStringLiteral("show.flv");
     }},
    {"Relay", "-f mpjpeg -i http://127.0.0.1:%1/relay",
     [](Param& param, quint16 port) {
         param.relayEnabled = 1;
         param.relayAddress = QStringLiteral("127.0.0.1:%1").arg(port);
         param.relayWidth = 96;
         param.relayBufferCount = 1000;
     }},
    {"Sdp", "-protocol_whitelist http,tcp,udp,rtp -i http://127.0.0.1:%1/live/0.sdp",
     [](Param& param, quint16 port) {
         param.sdpEnabled = 1;
         param.sdpPort = static_cast<quint16>(freePort());
         param.httpPort = port;
     }},
    {"Rtsp", "-rtsp_transport tcp -i rtsp://127.0.0.1:%1/live/0", rtsp, 40},
    {"RtspUdp", "-rtsp_transport udp -buffer_size 212992 -i rtsp://127.0.0.1:%1/live/0",
     [](Param& param, quint16 port) {
         rtsp(param, port);
         param.videoSettings[2] = 30; // one packet for most pictures: what may wait fits into the kernel's buffer
     },
     40},
    {"RtspHevcIpv6", "-rtsp_transport tcp -i rtsp://[::1]:%1/live/0",
     [](Param& param, quint16 port) {
         rtsp(param, port);
         param.videoCodec = 1;
     },
     40},
    {"HttpIpv6", "-i http://[::1]:%1/live/0", http},
    {"Multicast", "-i udp://234.0.0.1:%1?localaddr=127.0.0.1",
     [](Param& param, quint16 port) {
         param.multicastEnabled = 1;
         param.multicastPort = port;
         param.multicastInterface = QStringLiteral("127.0.0.1");
     }},
    {"PeerWhoCalls", "-i srt://127.0.0.1:%1?mode=caller&tlpktdrop=0",
     [](Param& param, quint16 port) {
         peer(param, port);
         param.peerMode = 0;
         param.peerAddress.clear();
     },
     10, Served::WhenBound},
    {"PeerWhoCallsIpv6", "-i srt://[::1]:%1?mode=caller&tlpktdrop=0",
     [](Param& param, quint16 port) {
         peer(param, port);
         param.peerMode = 0;
         param.peerAddress = QStringLiteral("::1");
     },
     10, Served::WhenBound},
    {"PeerWhoIsCalled", "-i srt://127.0.0.1:%1?mode=listener&tlpktdrop=0", peer, 10, Served::First},
    {"Push", "-listen 1 -method PUT -i http://127.0.0.1:%1/output", push, 10, Served::First},
    {"PushByPost", "-listen 1 -method POST -i http://127.0.0.1:%1/output",
     [](Param& param, quint16 port) {
         push(param, port);
         param.outputFlag = 4;
     },
     10, Served::First},
    {"Push2", "-listen 1 -i tcp://127.0.0.1:%1",
     [](Param& param, quint16 port) {
         param.push2Enabled = 1;
         param.push2Paths[3] = QStringLiteral("tcp://127.0.0.1:%1").arg(port);
     },
     10, Served::First},
    {"Rtmp", "-listen 1 -i rtmp://127.0.0.1:%1/live/key",
     [](Param& param, quint16 port) {
         param.rtmp1Enabled = 1;
         param.rtmp1Url = QStringLiteral("rtmp://127.0.0.1:%1/live/key").arg(port);
     },
     10, Served::First},
};

class ServedNet : public testing::TestWithParam<Served>
{};

TEST_P(ServedNet, AViewerWhoComesFollowsFromThereOn)
{
    const Served& stream = GetParam();
    const int port = freePort();
    const QString input = QString::fromLatin1(stream.input).arg(port);
    const bool isIpv6 = input.contains(QStringLiteral("[::1]"));
    if (isIpv6 && !hasIpv6())
        GTEST_SKIP() << "no IPv6";
    const bool hasSound = !input.contains(QStringLiteral("/relay"));
    std::optional<Viewer> viewer;
    if (stream.comes == Served::First) {
        viewer.emplace(optionsOf(input), hasSound);
        awaitListener(port);
    }
    Stage stage(Stage::Way::Pictures);
    Param param = Stage::param(QString());
    stream.enable(param, static_cast<quint16>(port));
    param.outputFlag = isIpv6 ? 2 : param.outputFlag;
    stage.start(net, param);
    int number = 4;
    stage.commit(0, number); // the first pictures wait for their sound
    if (stream.comes == Served::WhenBound)
        awaitListener(port);
    while (stream.comes == Served::WhenServed && stage.statistics().netState != tagTavloOutputStatistics::Running)
        stage.commit(number++, 1);
    if (!viewer)
        viewer.emplace(optionsOf(input), hasSound);
    ASSERT_NO_FATAL_FAILURE(expectToFollow(stage, *viewer, number, 50, stream.pause));
    if (stream.comes != Served::First || input.contains(QStringLiteral("srt:")))
        return;           // to an end of datagrams nobody hears the last ones
    stage.awaitWritten(); // an end would not wait for a machine that is slow
    stage.stop(net);
    while (viewer->look()) {
    }
    const std::vector<int>& seen = viewer->numbers();
    ASSERT_GE(seen.size(), 50U);
    EXPECT_EQ(std::vector(seen.end() - 50, seen.end()), numbersFrom(number - 50, 50));
}

INSTANTIATE_TEST_SUITE_P(Streams, ServedNet, testing::ValuesIn(streams),
                         [](const auto& served) { return std::string(served.param.name); });

TEST(StreamNet, ServesThePlaylistOfItsFolderAndNothingElse)
{
    const QTemporaryDir folder;
    const int port = freePort();
    Stage stage(Stage::Way::Pictures);
    Param param = Stage::param(QString());
    param.hlsEnabled = 1;
    param.hlsDir = folder.path();
    param.hlsSegmentSeconds = 1;
    param.httpPort = static_cast<quint16>(port);
    stage.start(net, param);
    stage.commit(0, 90);
    stage.awaitWritten();
    Viewer viewer({"-live_start_index", "0", "-i", QStringLiteral("http://127.0.0.1:%1/hls/0/index.m3u8").arg(port)});
    while (viewer.numbers().size() < 60)
        ASSERT_TRUE(viewer.look());
    EXPECT_EQ(std::vector(viewer.numbers().begin(), viewer.numbers().begin() + 60), numbersFrom(0, 60));

    QFile secret(folder.filePath(QStringLiteral("secret.txt")));
    ASSERT_TRUE(secret.open(QIODevice::WriteOnly));
    QFile::link(QStringLiteral("/etc/passwd"), folder.filePath(QStringLiteral("link.ts")));
    const QByteArray list = httpGet(port, "/hls/0/index.m3u8");
    const QByteArray segment = list.mid(list.indexOf("\nindex") + 1).split('\n').front(); // the first one
    EXPECT_TRUE(segment.endsWith(".ts")) << list.constData();
    const QByteArray up = "/hls/0/..%2f..%2f" + QFileInfo(folder.path()).fileName().toUtf8() + "/" + segment;
    for (const QByteArray& path : {QByteArray("/hls/0/secret.txt"), QByteArray("/hls/0/link.ts"), up,
                                   QByteArray("/hls/0/"), QByteArray("/hls/0/index9.ts"), QByteArray("/hls")})
        EXPECT_TRUE(httpGet(port, path).left(20).contains(" 404 ")) << path.constData();
    EXPECT_TRUE(httpGet(port, "/hls/0/" + segment).contains("200 OK"));
}

/// Takes some seconds: the pauses in front of the second attempts are the real ones.
TEST(StreamNet, APortThatAnotherProgramHasIsToldAndTakenWhenItIsFree)
{
    const int port = freePort();
    const QTemporaryDir folder;
    QFile list(folder.filePath(QStringLiteral("one.m3u8")));
    ASSERT_TRUE(list.open(QIODevice::WriteOnly));
    LogCapture log;
    Stage stage(Stage::Way::Pictures);
    Param param = Stage::param(QString());
    http(param, static_cast<quint16>(port));
    param.hlsEnabled = 1;
    param.hlsDir = folder.path();
    int number = 0;
    {
        const Listener other(port);
        stage.start(net, param);
        while (log.count("cannot listen: Address already in use") < 2)
            stage.commit(number++, 1);
        EXPECT_EQ(stage.statistics().netState, tagTavloOutputStatistics::Waiting);
    }
    while (log.count(" serves http://") < 2)
        stage.commit(number++, 1);
    EXPECT_EQ(stage.statistics().netState, tagTavloOutputStatistics::Running);
    EXPECT_TRUE(httpGet(port, "/hls/0/one.m3u8").contains("200 OK"));
    stage.stop(net);
    stage.start(net, param); // at once, though connections of before are not forgotten yet
    EXPECT_TRUE(httpGet(port, "/hls/0/one.m3u8").contains("200 OK"));
}

TEST(StreamNet, TellsWhyThereIsNoStreamAndNoSecret)
{
    LogCapture log;
    const int port = freePort();
    const Listener other(port, SOCK_DGRAM);
    Stage stage(Stage::Way::Pictures);
    Param param = Stage::param(QString());
    param.videoCodec = 1;
    param.httpEnabled = param.rtspEnabled = param.peerEnabled = param.push2Enabled = 1;
    param.httpPaths = {QStringLiteral("/show.flv")};
    param.rtspPort = 65'536 + 8090;
    param.peerMode = 0;
    param.peerAddress.clear();
    param.peerPort = static_cast<quint16>(port);
    param.peerOption = QStringLiteral("passphrase=secretsecret");
    param.push2Paths = {QStringLiteral("127.0.0.1/secret")};
    stage.start(net, param);
    int number = 0;
    while (log.count("http cannot write flv of HEVC") == 0 || log.count("peer cannot open srt://127.0.0.1") == 0)
        stage.commit(number++, 1);
    EXPECT_EQ(log.count("rtsp refuses: no port"), 1);
    EXPECT_EQ(log.count("push2 refuses: no address"), 1);
    EXPECT_EQ(log.count("secret"), 0);
}

TEST(StreamNet, ASlowViewerLosesHisOwnDataAndComesBack)
{
    const int port = freePort();
    Stage stage(Stage::Way::Pictures);
    Param param = Stage::param(QString());
    http(param, static_cast<quint16>(port));
    param.videoSettings[2] = 1;
    param.videoSettings[3] = 1; // large pictures fill the kernel's buffers soon
    stage.start(net, param);
    int number = 0;
    while (stage.statistics().netState != tagTavloOutputStatistics::Running)
        stage.commit(number++, 1);
    const QStringList input{"-i", QStringLiteral("http://127.0.0.1:%1/live/0").arg(port)};
    Viewer slow(QStringList{"-recv_buffer_size", "16384"} + input); // the kernel keeps little for him
    expectToFollow(stage, slow, number, 10);
    slow.halt();
    while (stage.statistics().viewerDropped == 0)
        stage.commit(number++, 1);
    {
        Viewer viewer(input);
        expectToFollow(stage, viewer, number, 50, 10, [&] { // half a minute without a byte would end his connection
            slow.goOn();
            EXPECT_TRUE(slow.look(1));
            slow.halt();
        });
    }
    slow.goOn();
    expectToFollow(stage, slow, number, 50);
    const std::vector<int>& numbers = slow.numbers();
    EXPECT_TRUE(std::ranges::is_sorted(numbers));
    EXPECT_LT(numbers.size(), static_cast<size_t>(numbers.back() - numbers.front()));
}

} // namespace
