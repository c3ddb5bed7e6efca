#include "sources/PlayerSources.h"

#include <QFileInfo>

namespace {

/// What every kind hands on.
void takeCommon(tagTavloSourcePlayerInfo& player, const tagTavloPresentSourceInfo& info)
{
    player.enabled = 1;
    player.hwDecode = info.HWDecode;
    player.deinterlaceMode = static_cast<qint32>(info.deinterlaceMode);
}

/// Pictures of whatever size and layout the input has.
void takeAsItComes(tagTavloMediaFormatInfo& wanted)
{
    wanted.videoInfo.sourceWidth = 0;
    wanted.videoInfo.chroma = 0xffffffff;
}

/// A location as people paste it: blanks around it are none of its own.
QString cleanComputerName(const QString& name) { return name.trimmed(); }

} // namespace

bool TavloPresentSourceMediaVLCMovieList::openSource(const tagTavloPresentSourceInfo& info)
{
    if (!TavloPresentSourceMediaVLC::openSource(info))
        return false;
    takeCommon(_playerInfo, info);
    _playerInfo.kind = TavloSourcePlayerKindMedia;
    _playerInfo.pathList = info.moviePathList;
    _playerInfo.playbackLoop = info.playbackMode == 1 ? 1 : 0;
    takeAsItComes(_outputFormat);
    return true;
}

void TavloPresentSourceMediaVLCMovieList::OnMediaSourcePlayerState(qint32 state, qint32 index, qint32 count)
{
    const auto item = static_cast<qsizetype>(getItemIndex());
    if (state < TavloSourcePlayerStateStopped && item < _playerInfo.pathList.size()) {
        const QWriteLocker locker(&_infoLock);
        _statistics.name = QFileInfo(_playerInfo.pathList[item]).fileName();
    }
    TavloPresentSourceMediaVLC::OnMediaSourcePlayerState(state, index, count);
}

bool TavloPresentSourceMediaVLCURL::openSource(const tagTavloPresentSourceInfo& info)
{
    if (!TavloPresentSourceMediaVLC::openSource(info))
        return false;
    takeCommon(_playerInfo, info);
    _playerInfo.kind = TavloSourcePlayerKindMedia;
    _playerInfo.url = cleanComputerName(info.url);
    _playerInfo.caching = static_cast<qint32>(info.urlCaching);
    _playerInfo.playbackLoop = info.playbackMode == 1 ? 1 : 0;
    if (info.url.startsWith(QLatin1String("ndi:"))) {
        _playerInfo.kind = TavloSourcePlayerKindNDI;
        if (const qsizetype at = info.url.lastIndexOf(QLatin1Char('@')); at >= 1)
            _playerInfo.pathList = {cleanComputerName(info.url.left(at)), cleanComputerName(info.url.mid(at + 1))};
    } else if (info.url.startsWith(QLatin1String("tvmp"))) {
        _playerInfo.kind = TavloSourcePlayerKindTvmp;
    } else if (info.url.startsWith(QLatin1String("tvtp"))) {
        _playerInfo.kind = TavloSourcePlayerKindTvtp;
    } else if (info.url.startsWith(QLatin1String("irtmp:"))) {
        _playerInfo.kind = TavloSourcePlayerKindFastRtmp;
        _playerInfo.pathList = {QString::number(info.irtmpParam)};
    }
    _statistics.name = info.url;
    takeAsItComes(_outputFormat);
    return true;
}

bool TavloPresentSourceMediaVLCDev::openSource(const tagTavloPresentSourceInfo& info)
{
    if (!TavloPresentSourceMediaVLC::openSource(info))
        return false;
    takeCommon(_playerInfo, info);
    _playerInfo.kind = TavloSourcePlayerKindCapture;
    _playerInfo.deviceName = info.videoDeviceName;
    _playerInfo.deviceDisplayName = info.videoDeviceDisplayName;
    _playerInfo.inputNode = info.videoDeviceInputNode;
    _playerInfo.progressive = static_cast<quint8>(info.deinterlaceMode);
    _playerInfo.standard = info.videoStandard;
    _playerInfo.audioDeviceName = info.audioDeviceName;
    _playerInfo.audioDeviceDisplayName = info.audioDeviceDisplayName;
    _statistics.name = info.videoDeviceName + QStringLiteral(" && ") + info.audioDeviceName;
    return true;
}

bool TavloPresentSourceMediaVLCDecklink::openSource(const tagTavloPresentSourceInfo& info)
{
    if (!TavloPresentSourceMediaVLC::openSource(info))
        return false;
    takeCommon(_playerInfo, info);
    _playerInfo.kind = TavloSourcePlayerKindDecklink;
    _playerInfo.deviceName = QString::number(info.decklinkDevId);
    _playerInfo.deviceDisplayName = info.decklinkDisplayModeName;
    _playerInfo.inputNode = info.decklinkVideoInputSignal;
    _playerInfo.audioInputSignal = info.decklinkAudioInputSignal;
    _playerInfo.channelNumber = 1;
    _statistics.name = info.decklinkDevName;
    takeAsItComes(_outputFormat);
    return true;
}

bool TavloPresentSourceMediaVLCHikvision::openSource(const tagTavloPresentSourceInfo& info)
{
    if (!TavloPresentSourceMediaVLC::openSource(info))
        return false;
    takeCommon(_playerInfo, info);
    _playerInfo.kind = TavloSourcePlayerKindHikvision;
    _playerInfo.deviceName = info.hkDevAddr;
    _playerInfo.deviceDisplayName = QString::number(info.hkDevPort);
    _playerInfo.audioDeviceName = info.hkDevUser;
    _playerInfo.audioDeviceDisplayName = info.hkDevPasswd;
    _playerInfo.channelNumber = static_cast<quint8>(info.hkDevChannel);
    _statistics.name = QStringLiteral("HK - ") + info.hkDevAddr + QStringLiteral(" - %1").arg(info.hkDevChannel);
    takeAsItComes(_outputFormat);
    return true;
}

bool TavloPresentSourceMediaVLCMW::openSource(const tagTavloPresentSourceInfo& info)
{
    if (!TavloPresentSourceMediaVLC::openSource(info))
        return false;
    takeCommon(_playerInfo, info);
    _playerInfo.kind = TavloSourcePlayerKindMW;
    _playerInfo.deviceName = info.mwDevName;
    _playerInfo.audioDeviceName = info.mwAudioDevName;
    _statistics.name = QStringLiteral("MW - ") + info.mwDevName;
    takeAsItComes(_outputFormat);
    return true;
}
