#include <tavlo/records/OutputRecords.h>

tagTavloPresentOutputParam::tagTavloPresentOutputParam() { reset(0, false); }

void tagTavloPresentOutputParam::reset(quint32 index, bool shifted)
{
    const quint32 shift = shifted ? 200 : 0;
    const auto port = [shift](quint32 number) { return static_cast<quint16>(number + shift); };
    const auto numbered = [index](const char* text) { return QString::fromLatin1(text).arg(index); };
    const auto fromOne = [index](const char* text) { return QString::fromLatin1(text).arg(index + 1); };

    outputFlag = 0;

    recordEnabled = 0;
    recordDir = numbered("d:\\records\\vod\\%1\\");
    recordName = QStringLiteral("${PROGRAMNAME}_${TIME}");
    recordTimeFormat = QStringLiteral("yy-MM-dd/hh_mm_ss");
    recordPeriod = 3600;
    recordMode = 2;
    recordFlag = 0;

    httpEnabled = 0;
    httpPort = port((4040 + index) * 2);
    httpPaths = {numbered("/live/%1"), {}, {}, {}};
    httpOption = 0;

    multicastEnabled = 0;
    multicastAddress = fromOne("234.0.0.%1");
    multicastPort = port((4000 + index) * 2);
    multicastTtl = 1;
    multicastInterface.clear();
    multicastPacketSize = 1316;

    hlsEnabled = 0;
    hlsSegmentSeconds = 10;
    hlsSegmentCount = 6;
    hlsFlag = 1;
    hlsDir = numbered("d:\\records\\hls\\%1\\");
    hlsPath = numbered("/hls/%1");
    hlsOption.clear();
    hlsFlag2 = 0;
    hlsOption2.clear();
    hlsOption3 = 8;

    rtmp1Enabled = 0;
    rtmp1Url = numbered("rtmp://192.168.0.201/live/stream_%1");
    rtmp1Option1.clear();
    rtmp1Option2.clear();
    rtmp1Mode = 2;

    rtmp2Enabled = 0;
    rtmp2Url = numbered("rtmp://192.168.0.202/live/stream_%1");
    rtmp2Option1.clear();
    rtmp2Option2.clear();
    rtmp2Mode = 2;

    pushEnabled = 0;
    pushPath = numbered("/output_%1");

    push2Enabled = 0;
    push2Option = 0;
    push2Paths = {QString(), {}, {}, numbered("/live_%1")};

    rtspEnabled = 0;
    rtspPort = port(8090 + 2 * index);
    rtspPath = numbered("/live/%1");

    decklinkEnabled = 0;
    decklinkFlag = 0;
    decklinkDevice = 0;
    decklinkMode = QStringLiteral("1080p25");
    decklinkConnection = QStringLiteral("SDI");

    tsRecordEnabled = 0;
    tsRecordSegmentSeconds = 60;
    tsRecordKeepSeconds = 259200;
    tsRecordFlag = 1;
    tsRecordDir = numbered("d:\\records\\ts\\%1\\");
    tsRecordOption.clear();

    peerEnabled = 0;
    peerAddress = fromOne("192.168.0.%1");
    peerPath = numbered("/live/%1");
    peerPort = port((9000 + index) * 2);
    peerMode = 1;
    peerOption.clear();

    relayEnabled = 0;
    relayAddress.clear();
    relayBufferCount = 8;
    relayWidth = 640;
    relayOption.clear();
    relayFlag = 0;
    relayFlag2 = 0;
    relayOption2.clear();

    ndiEnabled = 0;
    ndiName = numbered("TavloNDIOutput-%1");
    ndiOption.clear();

    extEnabled = 0;
    extOption1.clear();
    extOption2.clear();
    extRange = {0, -1};
    extOption3.clear();

    sdpEnabled = 0;
    sdpPort = port((5277 + index) * 2);
    sdpPath = numbered("/live/%1.sdp");
    sdpOption.clear();
}
