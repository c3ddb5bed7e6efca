// Names of capture devices and cards: what a record calls "the camera on the left" and FFmpeg "/dev/video2".

#include "TavloCommonModule/player/ITavloSourcePlayer.h"
#include "TavloCommonModule/player/InputLocation.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <algorithm>
#include <array>

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

/// What V4L2's reader calls a layout.
struct DeviceLayout
{
    quint32 chroma;
    QLatin1String name;
};

constexpr std::array deviceLayouts{
    DeviceLayout{tavloFourcc("I420"), QLatin1String("yuv420p")},
    DeviceLayout{tavloFourcc("YV12"), QLatin1String("yuv420p")},
    DeviceLayout{tavloFourcc("NV12"), QLatin1String("nv12")},
    DeviceLayout{tavloFourcc("YUY2"), QLatin1String("yuyv422")},
    DeviceLayout{tavloFourcc("YVYU"), QLatin1String("yvyu422")},
    DeviceLayout{tavloFourcc("UYVY"), QLatin1String("uyvy422")},
    DeviceLayout{tavloFourcc("BGRA"), QLatin1String("bgr0")},
    DeviceLayout{tavloFourcc("RV32"), QLatin1String("bgr0")},
};

/// What a device has not, it replaces by what is nearest.
void askFor(const tagTavloVideoInfo& video, std::map<QString, QString>& options)
{
    if (video.sourceWidth > 0 && video.sourceHeight > 0)
        options[QStringLiteral("video_size")] = sizeText(video.sourceWidth, video.sourceHeight);
    options[QStringLiteral("framerate")] = rateText(video);
    const auto* const layout = std::ranges::find(deviceLayouts, video.chroma, &DeviceLayout::chroma);
    if (layout != deviceLayouts.end())
        options[QStringLiteral("pixel_format")] = layout->name;
}

InputLocation camera(const tagTavloSourcePlayerInfo& info, const tagTavloMediaFormatInfo& wanted)
{
    InputLocation location;
    location.format = QStringLiteral("video4linux2");
    location.url = info.deviceName;
    location.isCamera = true;
    auto& options = location.options;
    options[QStringLiteral("timestamps")] = QStringLiteral("abs");
    if (info.kind == TavloSourcePlayerKindCapture) // the other kind of card is taken as it comes
        askFor(wanted.videoInfo, options);
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
    location.name = location.place = name;
    location.pace = InputLocation::Pace::Device;
    location.protocols = QStringLiteral("file");
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

QString cameraFile(const QString& name)
{
    if (name.startsWith(u'/'))
        return name;
    const QString stable = QStringLiteral("/dev/v4l/by-id/") + name;
    if (!name.contains(u'/') && QFile::exists(stable))
        return stable;
    const QDir classes(QStringLiteral("/sys/class/video4linux"));
    const auto told = [&](const QString& entry, QLatin1String what) {
        QFile file(classes.filePath(entry + u'/' + what));
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).trimmed() : QString();
    };
    for (const QString& entry : classes.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
        // Behind the first of a device's files are others, which have its name but no pictures.
        if (told(entry, QLatin1String("name")) == name && told(entry, QLatin1String("index")) == QLatin1String("0"))
            return QStringLiteral("/dev/") + entry;
    }
    return QStringLiteral("/dev/") + name;
}

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
    plan.entries.front().place = QStringLiteral("Decklink %1").arg(number); // in whatever mode
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
