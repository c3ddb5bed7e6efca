#include "TavloOutputModule/TargetList.h"

#include "TavloOutputModule/HlsFolder.h"
#include "TavloOutputModule/LiveTarget.h"
#include "TavloOutputModule/NetAddress.h"
#include "TavloOutputModule/PlaylistTarget.h"
#include "TavloOutputModule/RecordPath.h"
#include "TavloOutputModule/RecordTarget.h"
#include "TavloOutputModule/RelayTarget.h"
#include "TavloOutputModule/RtpTarget.h"
#include "TavloOutputModule/RtspTarget.h"
#include "TavloOutputModule/UrlTarget.h"

#include <QDebug>

#include <limits>
#include <utility>

namespace tavlo {

namespace {

using Param = tagTavloPresentOutputParam;

/// The bits of `outputFlag`.
enum Flag : quint8
{
    opensToAll = 1,
    listensOnIpv6 = 2,
    pushesByPost = 4,
};

/// A setting that names a stream target, and how it becomes an address.
struct UrlRow
{
    const char* name;
    quint8 Param::*enabled;
    Muxer::Target (*target)(const Param& param);
};

Muxer::Target flv(const QString& url) { return {"flv", url.toStdString(), {{"flvflags", "no_duration_filesize"}}}; }

QString inUrl(const QString& host) { return QString::fromStdString(urlHost(host.toStdString())); }

Muxer::Target multicast(const Param& param)
{
    QString url = QStringLiteral("udp://%1:%2?pkt_size=%3&ttl=%4")
                      .arg(inUrl(param.multicastAddress))
                      .arg(param.multicastPort)
                      .arg(param.multicastPacketSize)
                      .arg(param.multicastTtl);
    if (!param.multicastInterface.isEmpty())
        url += QStringLiteral("&localaddr=") + param.multicastInterface;
    return {"mpegts", url.toStdString(), {}};
}

/// SRT. `peerMode` 0 waits for a caller, on the loopback address where none is given; all others call.
Muxer::Target peer(const Param& param)
{
    const bool listens = param.peerMode == 0;
    const QString host = param.peerAddress.isEmpty() && listens ? QStringLiteral("127.0.0.1") : param.peerAddress;
    QString url = QStringLiteral("srt://%1:%2?mode=%3&pkt_size=1316&streamid=%4")
                      .arg(inUrl(host))
                      .arg(param.peerPort)
                      .arg(listens ? QLatin1String("listener") : QLatin1String("caller"), param.peerPath);
    if (!param.peerOption.isEmpty())
        url += QLatin1Char('&') + param.peerOption;
    Muxer::Target target{"mpegts", url.toStdString(), {}};
    target.waitsForPeer = listens;
    return target;
}

Muxer::Target hls(const Param& param)
{
    const QString folder = resolvedFolder(param.hlsDir);
    const bool removes = param.hlsFlag;
    Muxer::Target target{"hls",
                         (folder + QStringLiteral("/index.m3u8")).toStdString(),
                         {{"hls_time", std::to_string(param.hlsSegmentSeconds)},
                          {"hls_list_size", std::to_string(param.hlsSegmentCount)},
                          {"hls_start_number_source", "epoch"}, // a new beginning has other names than the last one
                          {"hls_flags", removes ? "delete_segments+temp_file" : "temp_file"}}};
    target.prepare = [folder, removes] { prepareHlsFolder(folder, removes); };
    return target;
}

Muxer::Target push(const Param& param)
{
    const char* const method = param.outputFlag & pushesByPost ? "POST" : "PUT";
    return {"mpegts", param.pushPath.toStdString(), {{"method", method}, {"chunked_post", "1"}}};
}

constexpr UrlRow urlRows[] = {
    {"rtmp1", &Param::rtmp1Enabled, [](const Param& param) { return flv(param.rtmp1Url); }},
    {"rtmp2", &Param::rtmp2Enabled, [](const Param& param) { return flv(param.rtmp2Url); }},
    {"multicast", &Param::multicastEnabled, multicast},
    {"peer", &Param::peerEnabled, peer},
    {"hls", &Param::hlsEnabled, hls},
    {"push", &Param::pushEnabled, push},
};

/// Servers listen for this machine alone, unless `outputFlag` opens them to all.
std::string serverAddress(const Param& param)
{
    const bool toAll = param.outputFlag & opensToAll;
    if (param.outputFlag & listensOnIpv6)
        return toAll ? "::" : "::1";
    return toAll ? "0.0.0.0" : "127.0.0.1";
}

/// A path as servers know it: with a slash in front and none at its end.
std::string serverPath(const QString& path)
{
    return (QLatin1Char('/') + path.split(QLatin1Char('/'), Qt::SkipEmptyParts).join(QLatin1Char('/'))).toStdString();
}

HttpAddress httpAddress(const Param& param, const QString& path)
{
    return {serverAddress(param), param.httpPort, serverPath(path)};
}

/// At an address and port of its own where the settings give one.
HttpAddress relayAddress(const Param& param)
{
    HttpAddress address =
        httpAddress(param, param.relayOption.isEmpty() ? QStringLiteral("/relay") : param.relayOption);
    const HostPort own = splitHostPort(param.relayAddress);
    if (!own.host.isEmpty())
        address.address = own.host.toStdString();
    if (own.port > 0)
        address.port = own.port;
    return address;
}

std::unique_ptr<Target> makeRelay(const Param& param, const StreamFormat& format)
{
    return std::make_unique<RelayTarget>("relay", format, relayAddress(param), static_cast<int>(param.relayWidth),
                                         param.relayBufferCount);
}

std::unique_ptr<Target> makeRtp(const Param& param, const StreamFormat& format)
{
    const std::string address = param.sdpOption.isEmpty() ? "127.0.0.1" : param.sdpOption.toStdString();
    return std::make_unique<RtpTarget>("sdp", format,
                                       RtpTarget::Destination{address, param.sdpPort, param.multicastTtl},
                                       httpAddress(param, param.sdpPath));
}

void addHttp(TargetList& targets, const Param& param, const StreamFormat& format)
{
    for (const QString& path : param.httpPaths)
        if (!path.isEmpty())
            targets.net.push_back(std::make_unique<LiveTarget>("http", format, httpAddress(param, path)));
}

void addUrl(TargetList& targets, const char* name, const StreamFormat& format, Muxer::Target target)
{
    const bool isFile = target.format == "hls";
    if (!isFile && target.url.find("://") == std::string::npos) {
        qDebug() << "output worker:" << name << "refuses: no address, which begins like tcp://"; // it may be a key
        return;
    }
    targets.net.push_back(std::make_unique<UrlTarget>(name, format, std::move(target)));
}

void addRtsp(TargetList& targets, const Param& param, const StreamFormat& format)
{
    if (param.rtspPort > std::numeric_limits<quint16>::max()) {
        qDebug() << "output worker: rtsp refuses: no port" << param.rtspPort;
        return;
    }
    targets.net.push_back(std::make_unique<RtspTarget>(
        "rtsp", format, serverAddress(param), static_cast<quint16>(param.rtspPort), serverPath(param.rtspPath)));
}

std::unique_ptr<Target> makeRecord(const Param& param, const StreamFormat& format)
{
    return std::make_unique<RecordTarget>("record", format,
                                          RecordSettings{resolvedFolder(param.recordDir), param.recordName,
                                                         param.recordTimeFormat, param.recordPeriod, param.recordMode,
                                                         0});
}

/// MPEG-TS in segments whose names are their times; those older than the time to keep go.
std::unique_ptr<Target> makeTsRecord(const Param& param, const StreamFormat& format)
{
    return std::make_unique<RecordTarget>("tsRecord", format,
                                          RecordSettings{resolvedFolder(param.tsRecordDir), QStringLiteral("${TIME}"),
                                                         QLatin1String(segmentTimeFormat), param.tsRecordSegmentSeconds,
                                                         0, param.tsRecordKeepSeconds});
}

} // namespace

TargetList makeTargets(const Param& param, const StreamFormat& format)
{
    TargetList targets;
    if (param.recordEnabled)
        targets.record = makeRecord(param, format);
    if (param.tsRecordEnabled)
        targets.net.push_back(makeTsRecord(param, format));
    for (const UrlRow& row : urlRows)
        if (param.*row.enabled)
            addUrl(targets, row.name, format, row.target(param));
    if (param.hlsEnabled && !param.hlsPath.isEmpty())
        targets.net.push_back(std::make_unique<PlaylistTarget>("hls", format, httpAddress(param, param.hlsPath),
                                                               resolvedFolder(param.hlsDir).toStdString()));
    if (param.httpEnabled)
        addHttp(targets, param, format);
    if (param.relayEnabled && format.hasVideo())
        targets.net.push_back(makeRelay(param, format));
    if (param.sdpEnabled)
        targets.net.push_back(makeRtp(param, format));
    if (param.rtspEnabled)
        addRtsp(targets, param, format);
    if (param.push2Enabled)
        for (const QString& path : param.push2Paths)
            if (!path.isEmpty())
                addUrl(targets, "push2", format, {"mpegts", path.toStdString(), {}});
    return targets;
}

} // namespace tavlo
