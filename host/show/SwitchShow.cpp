#include "show/SwitchShow.h"

#include <QDir>
#include <QFileInfo>
#include <QUrl>

#include <algorithm>

namespace tavlo::host {
namespace {

/// The output of that type, made when there is none.
tagTavloPresentOutputParam& paramOf(Show& show, TavloPresentOutputType type)
{
    const auto found = std::ranges::find(show.outputs, type, &ShowOutput::type);
    if (found != show.outputs.end())
        return found->param;
    ShowOutput& output = show.outputs.emplace_back();
    output.type = type;
    return output.param;
}

} // namespace

tagTavloPresentSourceInfo sourceNamed(const QString& name, QString& error)
{
    tagTavloPresentSourceInfo info;
    if (name.contains(QLatin1String("://"))) {
        info.type = TavloPresentSourceTypeURL;
        info.url = name;
    } else if (name.startsWith(QLatin1String("/dev/video"))) {
        info.type = TavloPresentSourceTypeDevice;
        info.videoDeviceName = name;
        info.audioDeviceName = QStringLiteral("None");
    } else {
        info.type = TavloPresentSourceTypeMovieList;
        info.moviePathList = {QFileInfo(name).absoluteFilePath()};
        if (!QFileInfo(name).isFile())
            error = QStringLiteral("%1: there is no such file").arg(name);
        else if (!QFileInfo(name).isReadable())
            error = QStringLiteral("%1: may not be read").arg(name);
    }
    return info;
}

bool recordTo(const QString& file, Show& show, QString& error)
{
    static const QStringList kinds{QStringLiteral("ts"), QStringLiteral("mkv"), QStringLiteral("mp4")};
    const QFileInfo info(file);
    const auto mode = kinds.indexOf(info.suffix().toLower());
    if (mode < 0) {
        error = QStringLiteral("%1: recordings are .mp4, .mkv or .ts").arg(file);
        return false;
    }
    tagTavloPresentOutputParam& param = paramOf(show, TavloPresentOutputTypeRecord);
    param.recordEnabled = 1;
    param.recordDir = info.absolutePath();
    param.recordName = info.completeBaseName();
    param.recordMode = static_cast<quint32>(mode);
    param.recordPeriod = 0;
    return true;
}

bool streamTo(const QString& address, Show& show, QString& error)
{
    const QUrl url(address);
    const QString scheme = url.scheme();
    tagTavloPresentOutputParam& param = paramOf(show, TavloPresentOutputTypeNet);
    if (scheme == QLatin1String("rtmp") || scheme == QLatin1String("rtmps")) {
        param.rtmp1Enabled = 1;
        param.rtmp1Url = address;
    } else if (scheme == QLatin1String("srt")) {
        param.peerEnabled = 1;
        param.peerMode = 1;
        param.peerAddress = url.host();
        param.peerPort = static_cast<quint16>(url.port(9000));
    } else if (scheme == QLatin1String("tcp")) {
        param.push2Enabled = 1;
        param.push2Paths[0] = address;
    } else if (scheme == QLatin1String("udp")) {
        param.multicastEnabled = 1;
        param.multicastAddress = url.host();
        param.multicastPort = static_cast<quint16>(url.port(8000));
    } else if (scheme == QLatin1String("http") || scheme == QLatin1String("https")) {
        param.pushEnabled = 1;
        param.pushPath = address;
    } else {
        error = QStringLiteral("%1: streams go to rtmp, srt, tcp, udp, http or https addresses").arg(address);
        return false;
    }
    return true;
}

} // namespace tavlo::host
