#include "show/SwitchShow.h"

#include "live/LiveFigures.h"

#include <QDir>
#include <QFileInfo>
#include <QUrl>
#include <QUrlQuery>

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

bool isAddress(const QString& name)
{
    static constexpr const char* prefixes[]{"ndi:", "irtmp:", "tvmp:", "tvtp:"};
    return name.contains(QLatin1String("://")) || std::ranges::any_of(prefixes, [&name](const char* prefix) {
               return name.startsWith(QLatin1String(prefix));
           });
}

bool isDevice(const QString& name)
{
    return name.startsWith(QLatin1String("/dev/")) || name == QLatin1String("desktop") ||
           name.startsWith(QLatin1String("desktop:"));
}

/// SRT: what the settings have fields for goes there, the rest is handed on as it is written.
bool streamBySrt(const QUrl& url, tagTavloPresentOutputParam& param, QString& error)
{
    param.peerEnabled = 1;
    param.peerMode = 1;
    param.peerAddress = url.host();
    param.peerPort = static_cast<quint16>(url.port(9000));
    param.peerPath.clear();
    param.peerOption.clear();
    QStringList rest;
    const auto items = QUrlQuery(url).queryItems(QUrl::FullyEncoded);
    for (const auto& [key, value] : items) {
        if (key == QLatin1String("streamid"))
            param.peerPath = value;
        else if (key != QLatin1String("mode"))
            rest.append(key + u'=' + value);
        else if (value == QLatin1String("listener"))
            param.peerMode = 0;
        else if (value != QLatin1String("caller"))
            error = QStringLiteral("mode=%1: wants caller or listener").arg(value);
    }
    param.peerOption = rest.join(u'&');
    return error.isEmpty();
}

bool streamByUdp(const QUrl& url, tagTavloPresentOutputParam& param, QString& error)
{
    param.multicastEnabled = 1;
    param.multicastAddress = url.host();
    param.multicastPort = static_cast<quint16>(url.port(8000));
    const auto items = QUrlQuery(url).queryItems(QUrl::FullyDecoded);
    for (const auto& [key, value] : items) {
        bool good = true;
        if (key == QLatin1String("ttl"))
            param.multicastTtl = std::min<quint16>(value.toUShort(&good), 255);
        else if (key == QLatin1String("pkt_size"))
            param.multicastPacketSize = value.toUShort(&good);
        else if (key == QLatin1String("localaddr"))
            param.multicastInterface = value;
        else
            error = QStringLiteral("%1: udp takes ttl, localaddr and pkt_size").arg(key);
        if (!good)
            error = QStringLiteral("%1=%2: wants a number").arg(key, value);
    }
    return error.isEmpty();
}

} // namespace

tagTavloPresentSourceInfo sourceNamed(const QString& name, QString& error)
{
    tagTavloPresentSourceInfo info;
    if (isAddress(name)) {
        info.type = TavloPresentSourceTypeURL;
        info.url = name;
    } else if (isDevice(name)) {
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

QString labelOf(const QString& name)
{
    if (const QString host = QUrl(name).host(); !host.isEmpty())
        return host;
    if (isAddress(name))
        return name.contains(QLatin1String("://")) ? name.section(u':', 0, 0) : name.section(u':', 1);
    return isDevice(name) ? QFileInfo(name).fileName() : QFileInfo(name).completeBaseName();
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
    const bool mayListen = scheme == QLatin1String("srt");
    if (!url.isValid() || (url.host().isEmpty() && !mayListen)) {
        error = QStringLiteral("%1: no address to stream to").arg(withoutSecrets(address));
        return false;
    }
    tagTavloPresentOutputParam& param = paramOf(show, TavloPresentOutputTypeNet);
    if (scheme == QLatin1String("rtmp") || scheme == QLatin1String("rtmps")) {
        param.rtmp1Enabled = 1;
        param.rtmp1Url = address;
    } else if (scheme == QLatin1String("srt")) {
        return streamBySrt(url, param, error);
    } else if (scheme == QLatin1String("udp")) {
        return streamByUdp(url, param, error);
    } else if (scheme == QLatin1String("tcp")) {
        param.push2Enabled = 1;
        param.push2Paths[0] = address;
    } else if (scheme == QLatin1String("http") || scheme == QLatin1String("https")) {
        param.pushEnabled = 1;
        param.pushPath = address;
    } else {
        error = QStringLiteral("%1: streams go to rtmp, srt, tcp, udp, http or https addresses")
                    .arg(withoutSecrets(address));
        return false;
    }
    return true;
}

} // namespace tavlo::host
