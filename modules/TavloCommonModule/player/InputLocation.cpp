#include "TavloCommonModule/player/InputLocation.h"

#include "TavloCommonModule/player/ITavloSourcePlayer.h"

#include <QRegularExpression>
#include <QUrl>

#include <algorithm>
#include <array>

namespace tavlo {
namespace {

using Pace = InputLocation::Pace;

struct Protocol
{
    QLatin1String scheme;
    Pace pace;
    QLatin1String allowed; ///< what this and all that it refers to may open
};

constexpr QLatin1String webProtocols("http,https,httpproxy,tcp,tls,crypto,data");
constexpr QLatin1String rtmpProtocols("rtmp,rtmps,rtmpt,rtmpts,ffrtmphttp,http,https,tcp,tls");
constexpr QLatin1String rtspProtocols("rtsp,rtp,udp,tcp,tls,http,https");

constexpr std::array protocols{
    Protocol{QLatin1String("http"), Pace::Remote, webProtocols},
    Protocol{QLatin1String("https"), Pace::Remote, webProtocols},
    Protocol{QLatin1String("ftp"), Pace::Remote, QLatin1String("ftp,tcp")},
    Protocol{QLatin1String("rtmp"), Pace::RealTime, rtmpProtocols},
    Protocol{QLatin1String("rtmps"), Pace::RealTime, rtmpProtocols},
    Protocol{QLatin1String("rtmpt"), Pace::RealTime, rtmpProtocols},
    Protocol{QLatin1String("rtmpts"), Pace::RealTime, rtmpProtocols},
    Protocol{QLatin1String("rtsp"), Pace::RealTime, rtspProtocols},
    Protocol{QLatin1String("rtsps"), Pace::RealTime, rtspProtocols},
    Protocol{QLatin1String("rtp"), Pace::RealTime, QLatin1String("rtp,udp")},
    Protocol{QLatin1String("udp"), Pace::RealTime, QLatin1String("udp")},
    Protocol{QLatin1String("srt"), Pace::RealTime, QLatin1String("srt")},
    Protocol{QLatin1String("tcp"), Pace::RealTime, QLatin1String("tcp")},
    Protocol{QLatin1String("mmsh"), Pace::RealTime, QLatin1String("mmsh,http,tcp")},
    Protocol{QLatin1String("mmst"), Pace::RealTime, QLatin1String("mmst,tcp")},
};

/// The letters before "://", in lower case; empty for a path.
QString schemeOf(const QString& text)
{
    const qsizetype end = text.indexOf(QLatin1String("://"));
    const auto isLetter = [](QChar c) { return c.isLetterOrNumber() || c == u'+' || c == u'-' || c == u'.'; };
    return end > 1 && std::all_of(text.begin(), text.begin() + end, isLetter) ? text.left(end).toLower() : QString();
}

/// An address as it may be told: neither the password before the machine's name nor what is secret in the query.
QString withoutSecrets(const QString& text)
{
    static const QRegularExpression secret(
        QStringLiteral("([?&][^=&#]*(?:pass|pwd|key|token|secret|auth|sig)[^=&#]*=)[^&#]*"),
        QRegularExpression::CaseInsensitiveOption);
    const QUrl url(text);
    QString told = text;
    if (url.isValid() && !url.password().isEmpty())
        told = url.toDisplayString(QUrl::RemovePassword);
    else if (const qsizetype name = text.indexOf(QLatin1String("://")) + 3, end = text.lastIndexOf(u'@');
             !url.isValid() && name > 2 && end > name)
        told.remove(name, end + 1 - name); // nobody knows where in there the password is
    return told.replace(secret, QStringLiteral("\\1..."));
}

InputLocation fileLocation(const QString& path)
{
    InputLocation location;
    location.name = withoutSecrets(path); // it may be an address that was written wrong
    location.url = QStringLiteral("file:") + path;
    location.protocols = QStringLiteral("file,crypto,data");
    return location;
}

/// How much has to be read before the streams are known, and what each protocol needs to be quick and to stay alive.
void tuneNetwork(InputLocation& location, const QString& scheme)
{
    const QString caching = QString::number(location.cachingMilliseconds * 1000);
    auto& options = location.options;
    options[QStringLiteral("max_delay")] = caching;
    if (scheme.startsWith(QLatin1String("rtsp"))) {
        options[QStringLiteral("rtsp_flags")] = QStringLiteral("prefer_tcp");
    } else if (scheme == QLatin1String("udp") || scheme == QLatin1String("rtp")) {
        options[QStringLiteral("buffer_size")] = QStringLiteral("4194304");
        options[QStringLiteral("overrun_nonfatal")] = QStringLiteral("1");
    }
    if (location.pace == Pace::RealTime) {
        options[QStringLiteral("analyzeduration")] = QStringLiteral("2000000");
        options[QStringLiteral("fflags")] = QStringLiteral("nobuffer");
    }
    if (location.cachingMilliseconds < 200) {
        options[QStringLiteral("probesize")] = QStringLiteral("500000");
        options[QStringLiteral("analyzeduration")] = QStringLiteral("500000");
    }
}

/// The address of a protocol of our own, as the protocol below it has it.
std::optional<InputLocation> carried(const QString& url, const char* scheme, const char* format, int caching)
{
    const qsizetype end = url.indexOf(QLatin1String("://"));
    if (end < 0)
        return std::nullopt;
    auto location = mediaLocation(QLatin1String(scheme) + url.mid(end), caching);
    location->name = location->place = withoutSecrets(url);
    location->format = QLatin1String(format);
    return location;
}

InputPlan single(std::optional<InputLocation> location, const QString& refusal)
{
    InputPlan plan;
    if (location)
        plan.entries.append(*location);
    else
        plan.refusal = refusal;
    return plan;
}

InputPlan mediaInput(const tagTavloSourcePlayerInfo& info)
{
    InputPlan plan;
    if (info.pathList.isEmpty() && (info.url.isEmpty() || info.url == tagTavloSourcePlayerInfo().url)) {
        plan.refusal = QStringLiteral("neither a path nor an address");
        return plan;
    }
    const QStringList paths = info.pathList.isEmpty() ? QStringList{info.url} : info.pathList;
    for (const QString& path : paths) {
        // An entry that is refused stays in the list, so that the entries keep their numbers.
        auto location = mediaLocation(path, info.caching);
        if (!location)
            location.emplace().name = withoutSecrets(path);
        plan.entries.append(*location);
    }
    return plan;
}

InputPlan cameraInput(const tagTavloSourcePlayerInfo& info)
{
    QUrl url;
    url.setScheme(QStringLiteral("rtsp"));
    url.setHost(info.deviceName);
    url.setPort(554);
    url.setUserName(info.audioDeviceName);
    url.setPassword(info.audioDeviceDisplayName);
    url.setPath(QStringLiteral("/Streaming/Channels/%1").arg(info.channelNumber * 100 + 1));
    return single(url.isValid() && !info.deviceName.isEmpty()
                      ? mediaLocation(url.toString(QUrl::FullyEncoded), std::min(info.caching, 300))
                      : std::nullopt,
                  QStringLiteral("no address of a camera: ") + info.deviceName);
}

/// "ndi:" and the sender's name, or that and where it is.
InputPlan ndiInput(const tagTavloSourcePlayerInfo& info)
{
    const bool isSplit = info.pathList.size() == 2;
    QString name = isSplit ? info.pathList[0] : info.url;
    if (name.startsWith(QLatin1String("ndi:")))
        name.remove(0, 4);
    while (name.startsWith(u'/'))
        name.remove(0, 1);
    InputLocation location;
    location.name = info.url;
    location.url = name.trimmed();
    location.host = isSplit ? info.pathList[1] : QString();
    location.pace = Pace::Device;
    location.reader = InputLocation::Reader::Ndi;
    location.cachingMilliseconds = 60; // one picture and the network's unevenness
    const bool isNamed = !location.url.isEmpty() || !location.host.isEmpty();
    return single(isNamed ? std::optional(location) : std::nullopt, QStringLiteral("no name of an NDI source"));
}

} // namespace

std::optional<InputLocation> mediaLocation(const QString& pathOrUrl, int cachingMilliseconds)
{
    const QString scheme = schemeOf(pathOrUrl);
    if (scheme.isEmpty())
        return fileLocation(pathOrUrl.startsWith(QLatin1String("file:")) ? pathOrUrl.mid(5) : pathOrUrl);
    if (scheme == QLatin1String("file"))
        return fileLocation(QUrl(pathOrUrl).toLocalFile());
    if (scheme == QLatin1String("dshow")) // how songs name their files
        return fileLocation(pathOrUrl.mid(8));
    const auto found =
        std::find_if(protocols.begin(), protocols.end(), [&](const Protocol& p) { return p.scheme == scheme; });
    if (found == protocols.end())
        return std::nullopt;
    InputLocation location;
    location.name = withoutSecrets(pathOrUrl);
    location.url = scheme + pathOrUrl.mid(scheme.size());
    location.pace = found->pace;
    if (location.pace == Pace::RealTime)
        location.place = location.name; // it may be a port to listen on
    location.protocols = found->allowed;
    location.cachingMilliseconds = std::clamp(cachingMilliseconds, 0, 60'000);
    tuneNetwork(location, scheme);
    return location;
}

InputPlan planInput(const tagTavloSourcePlayerInfo& info, const tagTavloMediaFormatInfo& wanted)
{
    switch (info.kind) {
    case TavloSourcePlayerKindMedia:
        return mediaInput(info);
    case TavloSourcePlayerKindCapture:
    case TavloSourcePlayerKindMW:
        return captureInput(info, wanted);
    case TavloSourcePlayerKindDecklink:
        return decklinkInput(info);
    case TavloSourcePlayerKindHikvision:
        return cameraInput(info);
    case TavloSourcePlayerKindNDI:
        return ndiInput(info);
    case TavloSourcePlayerKindFastRtmp:
        return single(carried(info.url, "rtmp", "flv", 50), withoutSecrets(info.url));
    case TavloSourcePlayerKindTvmp:
    case TavloSourcePlayerKindTvmpCuda:
        return single(carried(info.url, "srt", "mpegts", info.caching), withoutSecrets(info.url));
    case TavloSourcePlayerKindTvtp:
        return single(carried(info.url, "tcp", "mpegts", info.caching), withoutSecrets(info.url));
    default:
        break;
    }
    InputPlan plan;
    plan.refusal = QStringLiteral("this player has no input of kind %1").arg(info.kind);
    return plan;
}

} // namespace tavlo
