#include "support/LogCapture.h"
#include "support/LoopbackSocket.h"
#include "support/PlayerSink.h"

#include <tavlo/ICloudTourControl.h>

#include <gmock/gmock.h>

#include <QCryptographicHash>
#include <QRegularExpression>

#include <condition_variable>
#include <mutex>

namespace tavlo::test {
namespace {

const QString user = QStringLiteral("ad min");
const QString password = QStringLiteral("p@ss:w/rd");

QByteArray md5(const QString& text) { return QCryptographicHash::hash(text.toUtf8(), QCryptographicHash::Md5).toHex(); }

/// A camera that can be moved: takes requests with the right digest and notes them, one connection after the other.
class Camera
{
public:
    int port() const { return _server.port(); }

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

private:
    void serve(int guest)
    {
        const QByteArray answer = answerTo(request(guest));
        EXPECT_EQ(write(guest, answer.constData(), static_cast<size_t>(answer.size())), answer.size());
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

    std::mutex _lock;
    std::condition_variable _changed;
    std::vector<std::string> _orders; ///< guarded by _lock
    bool _held = false;               ///< the same
    LoopbackServer _server{[this](int guest) { serve(guest); }};
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
    playCamera(stage, camera.port());
    ICloudTourControl* const control = stage.player->cloudTourControl();
    ASSERT_NE(control, nullptr);
    EXPECT_EQ(control->start(), 0);
    const qint32 slow = 20, fast = 1000, place = 7;
    const auto move = [](const char* pan, const char* tilt, const char* zoom) {
        return std::string("PUT /ISAPI/PTZCtrl/channels/2/continuous <PTZData><pan>") + pan + "</pan><tilt>" + tilt +
               "</tilt><zoom>" + zoom + "</zoom></PTZData>";
    };
    const auto focus = [](const char* value) {
        return std::string("PUT /ISAPI/System/Video/inputs/channels/2/focus <FocusData><focus>") + value +
               "</focus></FocusData>";
    };
    const std::string preset = "PUT /ISAPI/PTZCtrl/channels/2/presets/7";
    struct Order
    {
        qint32 operation;
        const qint32* value;
        std::vector<std::string> requests;
    };
    const std::vector<Order> orders{
        {TavloCloudTourLeft, &slow, {move("-20", "0", "0")}},
        {TavloCloudTourRightUp, nullptr, {move("50", "50", "0")}},
        {TavloCloudTourZoomOut, &fast, {move("0", "0", "-100")}},
        {TavloCloudTourStop, nullptr, {move("0", "0", "0")}},
        {TavloCloudTourFocusNear, &slow, {focus("-20")}},
        {TavloCloudTourStop, nullptr, {focus("0"), move("0", "0", "0")}},
        {TavloCloudTourSetPreset, &place, {preset + " <PTZPreset><id>7</id><presetName>7</presetName></PTZPreset>"}},
        {TavloCloudTourGotoPreset, &place, {preset + "/goto"}},
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
    playCamera(stage, camera.port());
    EXPECT_TRUE(waitUntil([&] { return log.count("trying again") > 0; }));
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
    playCamera(stage, camera.port());
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
    playCamera(stranger, camera.port(), QStringLiteral("guessed"));
    waitUntil([&] {
        stranger.player->cloudTourControl()->control(TavloCloudTourLeft, nullptr);
        return log.count("doesn't do what it is told") > 0;
    });
    stranger.player->stop();
    EXPECT_EQ(log.count("doesn't do what it is told"), 1);
    EXPECT_EQ(camera.orders(2).size(), 2U);
}

} // namespace
} // namespace tavlo::test
