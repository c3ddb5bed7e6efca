#pragma once

#include <tavlo/records/LyricRecords.h>
#include <tavlo/records/MediaFormat.h>
#include <tavlo/records/ShowRecords.h>

#include <QString>
#include <QStringList>

/// Which kind of source a record opens. 10 is free: it opens nothing.
enum TavloPresentSourceType : quint32
{
    TavloPresentSourceTypeNone = 0,
    TavloPresentSourceTypeMovieList = 1,
    TavloPresentSourceTypeImageList = 2,
    TavloPresentSourceTypeDevice = 3,
    TavloPresentSourceTypeDecklink = 4,
    TavloPresentSourceTypeHikvision = 5,
    TavloPresentSourceTypeMW = 6,
    TavloPresentSourceTypeURL = 7,
    TavloPresentSourceTypeWeb = 8,
    TavloPresentSourceTypeSong = 9,
    TavloPresentSourceTypeStage = 11,
    TavloPresentSourceTypeLayout = 12,
};

/// Everything that opens a source; each kind reads its own fields.
struct tagTavloPresentSourceInfo
{
    TavloPresentSourceType type = TavloPresentSourceTypeNone;
    QStringList moviePathList;
    QStringList imagePathList;
    QString videoDeviceName;        ///< capture device id
    QString videoDeviceDisplayName; ///< its name for people
    QString videoDeviceInputNode;
    quint32 videoDeviceProgressive = 0; ///< 1 for a progressive signal
    QString videoStandard;
    QString audioDeviceName;
    QString audioDeviceDisplayName;
    quint32 decklinkDevId = 0;
    QString decklinkDevName;
    QString decklinkDisplayModeName = QStringLiteral("1080p25");
    QString decklinkVideoInputSignal = QStringLiteral("SDI");
    QString decklinkAudioInputSignal = QStringLiteral("embedded");
    QString hkDevAddr = QStringLiteral("192.168.0.152");
    quint32 hkDevPort = 8000;
    QString hkDevUser = QStringLiteral("admin");
    QString hkDevPasswd = QStringLiteral("wxyz9876");
    quint32 hkDevChannel = 1;
    QString mwDevName;
    QString mwAudioDevName;
    QString url;
    quint32 urlCaching = 1000; ///< milliseconds of network buffer
    QString webUrl;
    QString songPath;
    tagTavloRCFileInfo songGrcInfo;
    QString songOutputDev = QStringLiteral("None"); ///< audio device on which a song sounds by itself
    quint32 timeShiftID = 0;
    QString timeShiftCachePath;
    quint32 timeShiftCacheSec = 60;
    quint32 timeShiftVideoEncodeImpl = 0;
    tagTavloShowComponentInfo stageInfo; ///< scene of a stage source
    tagTavloShowLayoutInfo layoutInfo;   ///< layout of a layout source
    quint32 playbackMode = 1;            ///< 1 plays a list again and again
    quint32 playbackEndShowChannel = 0;
    quint32 PGMInOutAction = 0;
    quint8 HWDecode = 1;
    quint8 autoDetectDeviceSignal = 0;
    quint32 deinterlaceMode = 0;         ///< 0 off, 1 when flagged, 2 always
    quint32 audioChannelProcessType = 0; ///< 0 none, 1 left to both, 2 right to both, 3 swapped
    quint8 enableCUDAAccelerate = 0;
    tagTavloMediaFormatInfo formatInfo; ///< the format asked of the source
    qint64 irtmpParam = 0;              ///< given to the player with an "irtmp:" address; not saved
    void* stageSerialize = nullptr;     ///< scene of a stage source, which takes it over; not saved
};
