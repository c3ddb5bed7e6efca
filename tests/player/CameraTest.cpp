#include "support/LogCapture.h"
#include "support/LoopbackSocket.h"
#include "support/PlayerSink.h"

#include <tavlo/ICloudTourControl.h>

#include <gmock/gmock.h>

#include <QCryptographicHash>
#include <QRegularExpression>
#include <QThread>

#include <sys/socket.h>
#include <unistd.h>

#include <condition_variable>
#include <mutex>
#include <thread>

namespace tavlo::test {
namespace {

const QString user = QStringLiteral("ad min");
const QString password = QStringLiteral("p@ss:w/rd");

QByteArray md5(const QString& text) { return QCryptographicHash::hash(text.toUtf8(), QCryptographicHash::Md5).toHex(); }

/// A camera that can be moved: takes requests with the right digest and notes them, one connection after the other.
class Camera
{
public:
    Camera() : _socket(listenOnLoopback(port))
    {
        _thread = std::thread([this] { serve(); });
    }

    ~Camera()
    {
        shutdown(_socket, SHUT_RDWR); // accept returns
        _thread.join();
        close(_socket);
    }

    /// Waits until so many orders came, and gives them: path and body.
    std::vector<std::string> orders(size_t count)
    {
        std::unique_lock lock(_lock);
        _changed.wait_for(lock, std::chrono::seconds(60), [&] { return _orders.size() >= count; });
        return _orders;
    }

    /// Holds back the answers until it is called with false.
    void hold(bool held)
    {
        {
            const std::scoped_lock lock(_lock);
            _held = held;
        }
        _changed.notify_all();
    }

    int port = 0;

private:
    void serve()
    {
        for (int guest = accept(_socket, nullptr, nullptr); guest >= 0; guest = accept(_socket, nullptr, nullptr)) {
            const QByteArray answer = answerTo(request(guest));
            EXPECT_EQ(write(guest, answer.constData(), static_cast<size_t>(answer.size())), answer.size());
            close(guest);
        }
    }

    static QByteArray request(int guest)
    {
        QByteArray text;
        std::array<char, 4096> part{};
        for (;;) {
            const qsizetype head = text.indexOf("\r\n\r\n");
            static const QRegularExpression length(QStringLiteral("Content-Length: (\\d+)"));
            const auto match = length.match(QString::fromUtf8(text));
            if (head >= 0 && text.size() - head - 4 >= match.captured(1).toInt())
                return text;
            const ssize_t size = read(guest, part.data(), part.size());
            if (size <= 0)
                return text;
            text.append(part.data(), size);
        }
    }

    QByteArray answerTo(const QByteArray& text)
    {
        const QString head = QString::fromUtf8(text);
        const auto field = [&](const char* name) {
            const QRegularExpression form(QStringLiteral("\\b%1=\"?([^\",\\r]*)").arg(QLatin1String(name)));
            return form.match(head).captured(1);
        };
        const QString method = head.section(u' ', 0, 0), path = head.section(u' ', 1, 1);
        const QString secret = QString::fromLatin1(md5(user + QStringLiteral(":cam:") + password));
        const QString what = QString::fromLatin1(md5(method + u':' + path));
        const QString expected = QString::fromLatin1(md5(
            QStringList{secret, QStringLiteral("n1"), field("nc"), field("cnonce"), field("qop"), what}.join(u':')));
        if (field("response") != expected)
            return "HTTP/1.1 401 Unauthorized\r\nWWW-Authenticate: Digest realm=\"cam\", nonce=\"n1\", qop=\"auth\"\r\n"
                   "Content-Length: 0\r\nConnection: close\r\n\r\n";
        std::unique_lock lock(_lock);
        _orders.push_back(
            (method + u' ' + path + u' ' + head.section(QStringLiteral("\r\n\r\n"), 1)).trimmed().toStdString());
        _changed.notify_all();
        _changed.wait(lock, [this] { return !_held; });
        return "HTTP/1.1 200 OK\r\nContent-Length: 0\r\nConnection: close\r\n\r\n";
    }

    const int _socket;
    std::thread _thread;
    std::mutex _lock;
    std::condition_variable _changed;
    std::vector<std::string> _orders; ///< guarded by _lock
    bool _held = false;               ///< the same
};

/// A player of a camera whose pictures nobody sends.
void playCamera(PlayerStage& stage, int port, const QString& secret = password)
{
    stage.info.kind = TavloSourcePlayerKindHikvision;
    stage.info.deviceName = QStringLiteral("127.0.0.1");
    stage.info.deviceDisplayName = QString::number(port);
    stage.info.audioDeviceName = user;
    stage.info.audioDeviceDisplayName = secret;
    stage.info.channelNumber = 2;
    stage.play({});
}

TEST(PlayerCamera, IsMovedWithItsLogin)
{
    Camera camera;
    PlayerStage stage;
    EXPECT_EQ(stage.player->cloudTourControl(), nullptr);
    playCamera(stage, camera.port);
    ICloudTourControl* const control = stage.player->cloudTourControl();
    ASSERT_NE(control, nullptr);
    EXPECT_EQ(control->start(), 0);
    const qint32 slow = 20, fast = 1000, place = 7;
    struct Order
    {
        qint32 operation;
        const qint32* value;
        std::vector<std::string> requests;
    };
    const std::string move = "PUT /ISAPI/PTZCtrl/channels/2/continuous ",
                      still = "<pan>0</pan><tilt>0</tilt><zoom>0</zoom>";
    const std::string focus = "PUT /ISAPI/System/Video/inputs/channels/2/focus <FocusData><focus>";
    const std::vector<Order> orders{
        {TavloCloudTourLeft, &slow, {move + "<PTZData><pan>-20</pan><tilt>0</tilt><zoom>0</zoom></PTZData>"}},
        {TavloCloudTourRightUp, nullptr, {move + "<PTZData><pan>50</pan><tilt>50</tilt><zoom>0</zoom></PTZData>"}},
        {TavloCloudTourZoomOut, &fast, {move + "<PTZData><pan>0</pan><tilt>0</tilt><zoom>-100</zoom></PTZData>"}},
        {TavloCloudTourStop, nullptr, {move + "<PTZData>" + still + "</PTZData>"}},
        {TavloCloudTourFocusNear, &slow, {focus + "-20</focus></FocusData>"}},
        {TavloCloudTourStop, nullptr, {focus + "0</focus></FocusData>", move + "<PTZData>" + still + "</PTZData>"}},
        {TavloCloudTourSetPreset,
         &place,
         {"PUT /ISAPI/PTZCtrl/channels/2/presets/7 <PTZPreset><id>7</id><presetName>7</presetName></PTZPreset>"}},
        {TavloCloudTourGotoPreset, &place, {"PUT /ISAPI/PTZCtrl/channels/2/presets/7/goto"}},
    };
    std::vector<std::string> expected;
    for (const Order& order : orders) {
        EXPECT_EQ(control->control(order.operation, order.value), 0) << order.operation;
        expected.insert(expected.end(), order.requests.begin(), order.requests.end());
        EXPECT_EQ(camera.orders(expected.size()), expected);
    }
    EXPECT_EQ(control->control(TavloCloudTourGotoPreset, nullptr), -1);
    EXPECT_EQ(control->control(99, nullptr), -1);
    stage.player->stop();
    EXPECT_EQ(stage.player->cloudTourControl(), nullptr);
}

/// The address is made of the record's fields, the password is not told.
TEST(PlayerCamera, IsAskedForTheStreamOfItsChannel)
{
    Camera camera;
    const LogCapture log;
    PlayerStage stage;
    playCamera(stage, camera.port);
    for (int i = 0; i < 6000 && log.count("trying again") == 0; ++i)
        QThread::msleep(10);
    stage.player->stop();
    EXPECT_GE(log.count("failed to open rtsp://ad min@127.0.0.1:554/Streaming/Channels/201 - "), 1)
        << log.lines().join(u'\n').toStdString();
    EXPECT_EQ(log.count("w/rd") + log.count("w%2Frd"), 0);
}

/// Only the newest movement waits for a camera that is slow, and one that refuses is told of once.
TEST(PlayerCamera, SlowAndStrangeOnes)
{
    const LogCapture log;
    Camera camera;
    PlayerStage stage;
    playCamera(stage, camera.port);
    ICloudTourControl* const control = stage.player->cloudTourControl();
    ASSERT_NE(control, nullptr);
    camera.hold(true);
    control->control(TavloCloudTourLeft, nullptr);
    EXPECT_EQ(camera.orders(1).size(), 1U);
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(control->control(TavloCloudTourRight, nullptr), 0);
    EXPECT_EQ(control->control(TavloCloudTourStop, nullptr), 0);
    camera.hold(false);
    const auto orders = camera.orders(2);
    ASSERT_EQ(orders.size(), 2U);
    EXPECT_THAT(orders.back(), testing::HasSubstr("<pan>0</pan>"));
    EXPECT_EQ(log.count("doesn't do what it is told"), 0);
    stage.player->stop();

    PlayerStage stranger;
    playCamera(stranger, camera.port, QStringLiteral("guessed"));
    for (int i = 0; i < 6000 && log.count("doesn't do what it is told") == 0; ++i) {
        stranger.player->cloudTourControl()->control(TavloCloudTourLeft, nullptr);
        QThread::msleep(10);
    }
    stranger.player->stop();
    EXPECT_EQ(log.count("doesn't do what it is told"), 1);
    EXPECT_EQ(camera.orders(2).size(), 2U);
}

} // namespace
} // namespace tavlo::test
