#include "OutputSupport.h"

#include <QFile>

#include <gtest/gtest.h>

#include <sys/socket.h>

#include <netinet/in.h>
#include <unistd.h>

#include <algorithm>
#include <thread>

namespace {

using namespace tavlo::test;

constexpr int net = TavloPresentOutputTypeNet;

/// A port of the loopback address that nobody uses.
int freePort()
{
    const int handle = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof(address);
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    const bool bound = bind(handle, generic, size) == 0 && getsockname(handle, generic, &size) == 0;
    close(handle);
    return bound ? ntohs(address.sin_port) : 0;
}

/// Returns when somebody listens on the port.
void awaitListener(int port)
{
    const QByteArray wanted = QByteArray(":") + QByteArray::number(port, 16).rightJustified(4, '0').toUpper();
    for (;;) {
        QFile table(QStringLiteral("/proc/net/tcp"));
        ASSERT_TRUE(table.open(QIODevice::ReadOnly));
        for (const QByteArray& line : table.readAll().split('\n'))
            if (const QByteArrayList words = line.simplified().split(' ');
                words.size() > 3 && words[1].endsWith(wanted) && words[3] == "0A")
                return;
        std::this_thread::yield();
    }
}

struct Peer
{
    const char* name;
    const char* url;
    std::vector<std::pair<QByteArray, QByteArray>> options;
    void (*enable)(tagTavloPresentOutputParam& param, const QString& url);
};

/// What a viewer sees who was there first.
TEST(StreamNet, APeerSeesEveryPictureOnceItIsConnected)
{
    const std::vector<Peer> peers{
        {"push2",
         "tcp://127.0.0.1:%1",
         {{"listen", "1"}},
         [](tagTavloPresentOutputParam& param, const QString& address) {
             param.push2Enabled = 1;
             param.push2Paths[3] = address;
         }},
        {"rtmp1",
         "rtmp://127.0.0.1:%1/live/key",
         {{"listen", "1"}},
         [](tagTavloPresentOutputParam& param, const QString& address) {
             param.rtmp1Enabled = 1;
             param.rtmp1Url = address;
         }},
        {"push",
         "http://127.0.0.1:%1/output",
         {{"listen", "1"}, {"method", "PUT"}},
         [](tagTavloPresentOutputParam& param, const QString& address) {
             param.pushEnabled = 1;
             param.pushPath = address;
         }},
    };
    for (const Peer& peer : peers) {
        Decoded decoded;
        const int port = freePort();
        const QString url = QString::fromLatin1(peer.url).arg(port);
        std::thread viewer([&] { decoded = decode(url, peer.options); });
        {
            awaitListener(port);
            Stage stage(Stage::Way::Pictures);
            tagTavloPresentOutputParam param = Stage::param(QString());
            peer.enable(param, url);
            stage.start(net, param);
            int number = 0;
            while (stage.statistics().netState != tagTavloOutputStatistics::Running)
                stage.commit(number++, 1);
            stage.commit(number, 40);
            stage.awaitWritten(); // an end would not wait for a machine that is slow
            stage.stop(net);
            viewer.join();
            ASSERT_GE(decoded.numbers.size(), 40U) << peer.name;
            // What was committed while the connection was being made may have been left out, nothing since then.
            EXPECT_TRUE(std::ranges::is_sorted(decoded.numbers)) << peer.name;
            EXPECT_EQ(std::vector(decoded.numbers.end() - 40, decoded.numbers.end()), numbersFrom(number, 40))
                << peer.name;
        }
    }
}

TEST(StreamNet, WritesAPlaylistAndKeepsItsSegments)
{
    const QTemporaryDir folder;
    Stage stage(Stage::Way::Pictures);
    tagTavloPresentOutputParam param = Stage::param(QString());
    param.hlsEnabled = 1;
    param.hlsDir = folder.path();
    param.hlsSegmentSeconds = 1;
    stage.start(net, param);
    stage.commit(0, 60);
    stage.stop(net);
    EXPECT_EQ(decode(folder.filePath(QStringLiteral("index.m3u8"))).numbers, numbersFrom(0, 60));
}

} // namespace
