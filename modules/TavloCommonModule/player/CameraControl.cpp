#include "TavloCommonModule/player/CameraControl.h"

#include "TavloCommonModule/player/FfmpegTypes.h"
#include "TavloCommonModule/player/LooseThreads.h"
#include "TavloCommonModule/player/MonotonicClock.h"

#include <QDebug>
#include <QUrl>

#include <algorithm>
#include <array>

namespace tavlo {
namespace {

constexpr qint64 patience = 10'000'000; ///< microseconds for one request
constexpr size_t mostWaiting = 32;
constexpr int usualSpeed = 50;
constexpr int driverPort = 8000; ///< that the records name, of a protocol that this is not

/// Which way an operation goes, each -1, 0 or 1.
struct Direction
{
    qint32 operation;
    int pan;
    int tilt;
    int zoom;
};

constexpr std::array directions{
    Direction{TavloCloudTourLeft, -1, 0, 0},      Direction{TavloCloudTourRight, 1, 0, 0},
    Direction{TavloCloudTourUp, 0, 1, 0},         Direction{TavloCloudTourDown, 0, -1, 0},
    Direction{TavloCloudTourZoomIn, 0, 0, 1},     Direction{TavloCloudTourZoomOut, 0, 0, -1},
    Direction{TavloCloudTourLeftUp, -1, 1, 0},    Direction{TavloCloudTourRightUp, 1, 1, 0},
    Direction{TavloCloudTourLeftDown, -1, -1, 0}, Direction{TavloCloudTourRightDown, 1, -1, 0},
    Direction{TavloCloudTourStop, 0, 0, 0},
};

QByteArray serverOf(const tagTavloSourcePlayerInfo& info)
{
    bool isNumber = false;
    const int port = info.deviceDisplayName.toInt(&isNumber);
    QUrl url;
    url.setScheme(QStringLiteral("http"));
    url.setHost(info.deviceName);
    url.setPort(isNumber && port > 0 && port != driverPort ? port : 80);
    url.setUserName(info.audioDeviceName);
    url.setPassword(info.audioDeviceDisplayName);
    return url.toEncoded();
}

} // namespace

CameraControl::CameraControl(const tagTavloSourcePlayerInfo& info)
    : _channel(std::max(info.channelNumber, 1)), _asker(std::make_shared<Asker>())
{
    _asker->server = serverOf(info);
    _asker->name = info.deviceName.toUtf8();
    LooseThreads::instance().start("tavlo-camera", {}, {_asker, &_asker->ends}, [asker = _asker] { asker->run(); });
}

void CameraControl::end()
{
    {
        const std::scoped_lock lock(_asker->lock);
        if (_asker->ends.exchange(true))
            return;
    }
    _asker->changed.notify_all();
}

qint32 CameraControl::control(qint32 operation, const qint32* value)
{
    const int given = value && *value > 0 ? *value : 0;
    const int speed = given > 0 ? std::min(given, 100) : usualSpeed;
    if (operation == TavloCloudTourFocusNear || operation == TavloCloudTourFocusFar) {
        _focuses = true;
        return post(focus(operation == TavloCloudTourFocusNear ? -speed : speed)) ? 0 : -1;
    }
    if (operation == TavloCloudTourSetPreset || operation == TavloCloudTourGotoPreset)
        return given > 0 && post(preset(given, operation == TavloCloudTourSetPreset)) ? 0 : -1;
    const auto* const way = std::ranges::find(directions, operation, &Direction::operation);
    if (way == directions.end())
        return -1;
    if (operation == TavloCloudTourStop && _focuses.exchange(false))
        post(focus(0));
    return post(movement(way->pan * speed, way->tilt * speed, way->zoom * speed)) ? 0 : -1;
}

bool CameraControl::post(Request request)
{
    {
        const std::scoped_lock lock(_asker->lock);
        auto& waiting = _asker->waiting;
        if (request.isMovement)
            std::erase_if(waiting, [&](const Request& r) { return r.isMovement && r.path == request.path; });
        if (_asker->ends || waiting.size() >= mostWaiting)
            return false;
        waiting.push_back(std::move(request));
    }
    _asker->changed.notify_all();
    return true;
}

CameraControl::Request CameraControl::movement(int pan, int tilt, int zoom) const
{
    return {QStringLiteral("/ISAPI/PTZCtrl/channels/%1/continuous").arg(_channel).toUtf8(),
            QStringLiteral("<PTZData><pan>%1</pan><tilt>%2</tilt><zoom>%3</zoom></PTZData>")
                .arg(pan)
                .arg(tilt)
                .arg(zoom)
                .toUtf8(),
            true};
}

CameraControl::Request CameraControl::focus(int speed) const
{
    return {QStringLiteral("/ISAPI/System/Video/inputs/channels/%1/focus").arg(_channel).toUtf8(),
            QStringLiteral("<FocusData><focus>%1</focus></FocusData>").arg(speed).toUtf8(), true};
}

CameraControl::Request CameraControl::preset(int number, bool set) const
{
    const QString path = QStringLiteral("/ISAPI/PTZCtrl/channels/%1/presets/%2").arg(_channel).arg(number);
    if (!set)
        return {(path + QStringLiteral("/goto")).toUtf8(), {}};
    return {path.toUtf8(),
            QStringLiteral("<PTZPreset><id>%1</id><presetName>%1</presetName></PTZPreset>").arg(number).toUtf8()};
}

void CameraControl::Asker::run()
{
    prepareFfmpeg();
    bool obeys = true;
    std::unique_lock guard(lock);
    for (;;) {
        changed.wait(guard, [this] { return ends || !waiting.empty(); });
        if (ends)
            return;
        const Request request = std::move(waiting.front());
        waiting.pop_front();
        guard.unlock();
        const bool obeyed = send(request);
        if (!obeyed && std::exchange(obeys, obeyed) && !ends)
            qDebug().noquote() << "player: the camera doesn't do what it is told:" << name;
        obeys = obeyed;
        guard.lock();
    }
}

bool CameraControl::Asker::send(const Request& request)
{
    struct Limit
    {
        const std::atomic<bool>& ends;
        qint64 until;
    } limit{ends, monotonicNow() + patience};
    const AVIOInterruptCB interrupt{[](void* opaque) {
                                        const auto& l = *static_cast<const Limit*>(opaque);
                                        return static_cast<int>(l.ends || monotonicNow() > l.until);
                                    },
                                    &limit};
    AVDictionary* options = nullptr;
    av_dict_set(&options, "protocol_whitelist", "http,tcp", 0);
    av_dict_set(&options, "method", "PUT", 0);
    av_dict_set(&options, "content_type", "application/xml", 0);
    const QByteArray body = request.body.isEmpty() ? QByteArray(" ") : request.body; // none at all would be no PUT
    av_dict_set(&options, "post_data", body.toHex().constData(), 0);
    AVIOContext* connection = nullptr;
    const int result =
        avio_open2(&connection, (server + request.path).constData(), AVIO_FLAG_READ, &interrupt, &options);
    av_dict_free(&options);
    avio_closep(&connection);
    return result >= 0;
}

} // namespace tavlo
