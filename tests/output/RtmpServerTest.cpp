#include "Viewer.h"
#include "support/TestClips.h"

#include <QFile>

#include <gtest/gtest.h>

namespace {

using namespace tavlo::test;

constexpr int net = TavloPresentOutputTypeNet;

/// A file of nginx: unpacked by scripts/setup, or else the machine's.
QString fileOfNginx(const QString& path)
{
    const QString unpacked = QStringLiteral(TAVLO_PEERS) + path;
    return QFile::exists(unpacked) ? unpacked : path;
}

const QString nginx = fileOfNginx(QStringLiteral("/usr/sbin/nginx"));
const QString rtmpModule = fileOfNginx(QStringLiteral("/usr/lib/nginx/modules/ngx_rtmp_module.so"));

/// nginx as a server of RTMP alone, with a configuration and a folder of its own, for this user.
class RtmpServer
{
public:
    explicit RtmpServer(int port)
    {
        QFile file(_folder.filePath(QStringLiteral("nginx.conf")));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QStringLiteral("load_module %1;\n"
                                  "daemon off;\n"
                                  "master_process off;\n"
                                  "pid nginx.pid;\n"
                                  "error_log error.log;\n"
                                  "events { worker_connections 64; }\n"
                                  "rtmp { server {\n"
                                  "    listen 127.0.0.1:%2;\n"
                                  "    access_log off;\n"
                                  "    out_queue 4096;\n" // no viewer is too slow for it
                                  "    application live { live on; wait_key on; }\n"
                                  "} }\n")
                       .arg(rtmpModule)
                       .arg(port)
                       .toUtf8());
    }

    void start()
    {
        const QString folder = _folder.path() + QLatin1Char('/');
        _process.emplace(nginx, QStringList{"-p", folder, "-e", folder + "error.log", "-c", folder + "nginx.conf"});
        EXPECT_TRUE(_process->isRunning());
    }

    void kill() { _process.reset(); }

private:
    const QTemporaryDir _folder;
    std::optional<Command> _process;
};

class RtmpNet : public testing::TestWithParam<bool>
{};

/// Takes some seconds: the pause in front of the second attempt is the real one.
TEST_P(RtmpNet, AServerThatWasKilledAndIsBackHandsOnEveryPicture)
{
    const bool isViewer = GetParam(); // rather than nginx
    if (!isViewer && (!QFile::exists(nginx) || !QFile::exists(rtmpModule)))
        GTEST_SKIP() << "nginx and its RTMP module are not there";
    const int port = freePort();
    RtmpServer server(port);
    Stage stage(Stage::Way::Pictures);
    tagTavloPresentOutputParam param = Stage::param(QString());
    param.rtmp2Enabled = 1;
    param.rtmp2Url = QStringLiteral("rtmp://127.0.0.1:%1/live/key").arg(port);
    const QStringList input =
        (isViewer ? QStringList{"-listen", "1"} : QStringList()) + QStringList{"-i", param.rtmp2Url};
    int number = 0;
    for (int life = 0; life < 2; ++life) {
        std::optional<Viewer> viewer;
        if (isViewer)
            viewer.emplace(input);
        else
            server.start();
        awaitListener(port);
        if (life == 0)
            stage.start(net, param);
        if (!viewer)
            viewer.emplace(input);
        ASSERT_NO_FATAL_FAILURE(expectToFollow(stage, *viewer, number, 30));
        server.kill();
    }
    EXPECT_EQ(stage.statistics().netReconnects, 1U);
    const quint64 lost = stage.statistics().netDropped;
    EXPECT_GT(lost, 0U);
    while (stage.statistics().netState != tagTavloOutputStatistics::Waiting)
        stage.commit(number++, 1);
    EXPECT_GT(stage.statistics().netDropped, lost);
}

INSTANTIATE_TEST_SUITE_P(Servers, RtmpNet, testing::Bool());

} // namespace
