// Names of capture devices and cards: what a record calls "the camera on the left" and FFmpeg "/dev/video2".

#include "TavloCommonModule/player/ITavloSourcePlayer.h"
#include "TavloCommonModule/player/InputLocation.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <algorithm>

namespace tavlo {
namespace {

bool isNone(const QString& name) { return name.isEmpty() || name == QLatin1String("None"); }

QString sizeText(int width, int height) { return QStringLiteral("%1x%2").arg(width).arg(height); }

QString rateText(const tagTavloVideoInfo& video)
{
    return video.fpsNum > 0 && video.fpsDen > 0 ? QStringLiteral("%1/%2").arg(video.fpsNum).arg(video.fpsDen)
                                                : QStringLiteral("25");
}

/// "desktop", or "desktop:X,Y,WxH" for a part of it.
std::optional<InputLocation> desktop(const QString& name, const tagTavloMediaFormatInfo& wanted)
{
    static const QRegularExpression form(QStringLiteral("^desktop(?::(\\d+),(\\d+),(\\d+)x(\\d+))?$"));
    const auto match = form.match(name);
    if (!match.hasMatch())
        return std::nullopt;
    InputLocation location;
    location.format = QStringLiteral("x11grab");
    location.url = qEnvironmentVariable("DISPLAY", QStringLiteral(":0"));
    if (!match.captured(1).isEmpty()) {
        location.url += QStringLiteral("+%1,%2").arg(match.captured(1), match.captured(2));
        location.options[QStringLiteral("video_size")] = sizeText(match.captured(3).toInt(), match.captured(4).toInt());
    }
    location.options[QStringLiteral("framerate")] = rateText(wanted.videoInfo);
    return location;
}

/// The file of a camera by its file, its stable id below /dev/v4l, or the name that its driver gives it. A name that
/// is not found is kept: the device may be plugged in later.
QString cameraFile(const QString& name)
{
    if (name.startsWith(u'/'))
        return name;
    const QString stable = QStringLiteral("/dev/v4l/by-id/") + name;
    if (!name.contains(u'/') && QFile::exists(stable))
        return stable;
    const QDir classes(QStringLiteral("/sys/class/video4linux"));
    for (const QString& entry : classes.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
        QFile file(classes.filePath(entry + QStringLiteral("/name")));
        if (file.open(QIODevice::ReadOnly) && QString::fromUtf8(file.readAll()).trimmed() == name)
            return QStringLiteral("/dev/") + entry;
    }
    return QStringLiteral("/dev/") + name;
}

InputLocation camera(const tagTavloSourcePlayerInfo& info, const tagTavloMediaFormatInfo& wanted)
{
    InputLocation location;
    location.format = QStringLiteral("video4linux2");
    location.url = cameraFile(info.deviceName);
    auto& options = location.options;
    options[QStringLiteral("timestamps")] = QStringLiteral("abs");
    if (wanted.videoInfo.sourceWidth > 0 && wanted.videoInfo.sourceHeight > 0)
        options[QStringLiteral("video_size")] = sizeText(wanted.videoInfo.sourceWidth, wanted.videoInfo.sourceHeight);
    options[QStringLiteral("framerate")] = rateText(wanted.videoInfo);
    if (!info.standard.isEmpty())
        options[QStringLiteral("standard")] = info.standard;
    bool isNumber = false;
    if (info.inputNode.toInt(&isNumber); isNumber)
        options[QStringLiteral("channel")] = info.inputNode;
    return location;
}

/// "pulse" and "pulse:NAME" are sources of the sound server, all else names of ALSA; "Auto" is ALSA's default.
InputLocation microphone(const QString& name, const tagTavloMediaFormatInfo& wanted)
{
    InputLocation location;
    if (name == QLatin1String("pulse") || name.startsWith(QLatin1String("pulse:"))) {
        location.format = QStringLiteral("pulse");
        location.url = name.size() > 6 ? name.mid(6) : QStringLiteral("default");
    } else {
        location.format = QStringLiteral("alsa");
        location.url = name == QLatin1String("Auto") ? QStringLiteral("default") : name;
    }
    location.options[QStringLiteral("sample_rate")] = QString::number(wanted.audioInfo.sampleRate);
    location.options[QStringLiteral("channels")] = QString::number(wanted.audioInfo.channels);
    return location;
}

InputLocation finished(InputLocation location, const QString& name)
{
    location.name = name;
    location.pace = InputLocation::Pace::Device;
    location.protocols = QStringLiteral("file");
    location.options[QStringLiteral("fpsprobesize")] =
        QStringLiteral("0");           // what is measured comes too late to be shown
    location.cachingMilliseconds = 60; // one picture and the unevenness of a device's reports
    return location;
}

/// A name of a mode or a connection as GStreamer's elements have it: "Optical SDI" is "optical-sdi". Nothing for what
/// can be none.
std::optional<QString> elementWord(const QString& name)
{
    QString word = name.trimmed().toLower();
    word.replace(u' ', u'-').remove(u'.');
    const bool isWord = std::all_of(word.begin(), word.end(), [](QChar c) {
        return (c >= u'a' && c <= u'z') || (c >= u'0' && c <= u'9') || c == u'-';
    });
    if (word.isEmpty())
        word = QStringLiteral("auto");
    return isWord ? std::optional(word) : std::nullopt;
}

} // namespace

InputPlan decklinkInput(const tagTavloSourcePlayerInfo& info)
{
    InputPlan plan;
    bool isNumber = false;
    const unsigned number = info.deviceName.toUInt(&isNumber);
    const auto mode = elementWord(info.deviceDisplayName), connection = elementWord(info.inputNode),
               soundConnection = elementWord(info.audioInputSignal);
    if (!isNumber || !mode || !connection || !soundConnection) {
        plan.refusal = QStringLiteral("no Decklink card, mode or connection is of this name: ") +
                       QStringList{info.deviceName, info.deviceDisplayName, info.inputNode, info.audioInputSignal}.join(
                           QStringLiteral(", "));
        return plan;
    }
    InputLocation location;
    location.reader = InputLocation::Reader::Gstreamer;
    location.url = QStringLiteral("decklinkvideosrc device-number=%1 mode=%2 connection=%3 drop-no-signal-frames=true")
                       .arg(number)
                       .arg(*mode, *connection);
    if (*mode != QLatin1String("auto")) // which finds the layout out as well
        location.url += QStringLiteral(" video-format=8bit-yuv");
    location.sound =
        QStringLiteral("decklinkaudiosrc device-number=%1 connection=%2").arg(number).arg(*soundConnection);
    plan.entries.append(finished(location, QStringLiteral("Decklink %1 (%2)").arg(number).arg(*mode)));
    return plan;
}

InputPlan captureInput(const tagTavloSourcePlayerInfo& info, const tagTavloMediaFormatInfo& wanted)
{
    InputPlan plan;
    if (!isNone(info.deviceName) && wanted.videoInfo.enable) {
        const auto screen = desktop(info.deviceName, wanted);
        plan.entries.append(finished(screen ? *screen : camera(info, wanted), info.deviceName));
    }
    if (!isNone(info.audioDeviceName) && wanted.audioInfo.enable) {
        InputLocation sound = finished(microphone(info.audioDeviceName, wanted), info.audioDeviceName);
        if (plan.entries.isEmpty()) {
            plan.entries.append(sound);
        } else {
            plan.entries.front().picturesOnly = true;
            sound.soundOnly = true;
            plan.second = sound;
        }
    }
    if (plan.entries.isEmpty())
        plan.refusal = QStringLiteral("no capture device is named");
    return plan;
}

} // namespace tavlo
