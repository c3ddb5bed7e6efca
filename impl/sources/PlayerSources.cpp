#include "sources/PlayerSources.h"

#include <QFileInfo>

namespace {

/// Pictures of whatever size and layout the input has.
void takeAsItComes(tagTavloMediaFormatInfo& wanted)
{
    wanted.videoInfo.sourceWidth = 0;
    wanted.videoInfo.chroma = 0xffffffff;
}

/// A location as people paste it: blanks around it are none of its own.
QString cleanComputerName(const QString& name) { return name.trimmed(); }

} // namespace

QString tavlo::describeMovieList(const tagTavloPresentSourceInfo& info, tagTavloSourcePlayerInfo& player,
                                 tagTavloMediaFormatInfo& wanted)
{
    player.kind = TavloSourcePlayerKindMedia;
    player.pathList = info.moviePathList;
    player.playbackLoop = info.playbackMode == 1 ? 1 : 0;
    takeAsItComes(wanted);
    return QString();
}

QString tavlo::describeUrl(const tagTavloPresentSourceInfo& info, tagTavloSourcePlayerInfo& player,
                           tagTavloMediaFormatInfo& wanted)
{
    player.kind = TavloSourcePlayerKindMedia;
    player.url = cleanComputerName(info.url);
    player.caching = static_cast<qint32>(info.urlCaching);
    player.playbackLoop = info.playbackMode == 1 ? 1 : 0;
    if (info.url.startsWith(QLatin1String("ndi:"))) {
        player.kind = TavloSourcePlayerKindNDI;
        if (const qsizetype at = info.url.lastIndexOf(QLatin1Char('@')); at >= 1)
            player.pathList = {cleanComputerName(info.url.left(at)), cleanComputerName(info.url.mid(at + 1))};
    } else if (info.url.startsWith(QLatin1String("tvmp"))) {
        player.kind = TavloSourcePlayerKindTvmp;
    } else if (info.url.startsWith(QLatin1String("tvtp"))) {
        player.kind = TavloSourcePlayerKindTvtp;
    } else if (info.url.startsWith(QLatin1String("irtmp:"))) {
        player.kind = TavloSourcePlayerKindFastRtmp;
        player.pathList = {QString::number(info.irtmpParam)};
    }
    takeAsItComes(wanted);
    return info.url;
}

QString tavlo::describeDevice(const tagTavloPresentSourceInfo& info, tagTavloSourcePlayerInfo& player,
                              tagTavloMediaFormatInfo&)
{
    player.kind = TavloSourcePlayerKindCapture;
    player.deviceName = info.videoDeviceName;
    player.deviceDisplayName = info.videoDeviceDisplayName;
    player.inputNode = info.videoDeviceInputNode;
    player.progressive = static_cast<quint8>(info.deinterlaceMode);
    player.standard = info.videoStandard;
    player.audioDeviceName = info.audioDeviceName;
    player.audioDeviceDisplayName = info.audioDeviceDisplayName;
    return info.videoDeviceName + QStringLiteral(" && ") + info.audioDeviceName;
}

QString tavlo::describeDecklink(const tagTavloPresentSourceInfo& info, tagTavloSourcePlayerInfo& player,
                                tagTavloMediaFormatInfo& wanted)
{
    player.kind = TavloSourcePlayerKindDecklink;
    player.deviceName = QString::number(info.decklinkDevId);
    player.deviceDisplayName = info.decklinkDisplayModeName;
    player.inputNode = info.decklinkVideoInputSignal;
    player.audioInputSignal = info.decklinkAudioInputSignal;
    player.channelNumber = 1;
    takeAsItComes(wanted);
    return info.decklinkDevName;
}

QString tavlo::describeCamera(const tagTavloPresentSourceInfo& info, tagTavloSourcePlayerInfo& player,
                              tagTavloMediaFormatInfo& wanted)
{
    player.kind = TavloSourcePlayerKindHikvision;
    player.deviceName = info.hkDevAddr;
    player.deviceDisplayName = QString::number(info.hkDevPort);
    player.audioDeviceName = info.hkDevUser;
    player.audioDeviceDisplayName = info.hkDevPasswd;
    player.channelNumber = static_cast<quint8>(info.hkDevChannel);
    takeAsItComes(wanted);
    return QStringLiteral("HK - ") + info.hkDevAddr + QStringLiteral(" - %1").arg(info.hkDevChannel);
}

QString tavlo::describeCard(const tagTavloPresentSourceInfo& info, tagTavloSourcePlayerInfo& player,
                            tagTavloMediaFormatInfo& wanted)
{
    player.kind = TavloSourcePlayerKindMW;
    player.deviceName = info.mwDevName;
    player.audioDeviceName = info.mwAudioDevName;
    takeAsItComes(wanted);
    return QStringLiteral("MW - ") + info.mwDevName;
}

void TavloPresentSourceMediaVLCMovieList::OnMediaSourcePlayerState(qint32 state, qint32 index, qint32 count)
{
    const auto item = static_cast<qsizetype>(getItemIndex());
    if (state < TavloSourcePlayerStateStopped && item < _playerInfo.pathList.size())
        setName(QFileInfo(_playerInfo.pathList[item]).fileName());
    TavloPresentSourceMediaVLC::OnMediaSourcePlayerState(state, index, count);
}
