#pragma once

#include <tavlo/records/RecordTypes.h>

#include <QRect>
#include <QString>

#include <array>

/// A projection: a channel's picture on a display of its own.
struct tagTavloPresentHDMIOutputInfo
{
    quint32 enable = 0;
    QString videoDevName;
    QRect videoRegion;    ///< pixels of the desktop
    QString audioDevName; ///< "Disable" and "None": no sound; "Auto": the default device
    quint32 pictureChannel = 0;
};

/// Every setting of one output. Flags are 0 or 1. The fields named "setting" are the encoder's own.
struct TAVLO_EXPORT tagTavloPresentOutputParam
{
    /// The defaults of output 0.
    tagTavloPresentOutputParam();

    /// Sets everything that belongs to the worker, from `outputFlag` to `sdpOption`, to the defaults of an output.
    /// \param index    0 to 3: makes paths, addresses and ports differ
    /// \param shifted  moves all ports up by 200, for a second program on the same machine
    void reset(quint32 index, bool shifted);

    QString programName; ///< replaces "${PROGRAMNAME}" in recordName

    // the encoders
    quint32 videoCodec = 0;
    quint32 videoOption = 0;
    quint32 encodeImpl = 2; ///< chooses the encoder
    std::array<quint32, 5> videoSettings{0, 0, 20, 25, 23};
    quint32 videoBitrate = 4096; ///< kilobits a second
    std::array<quint32, 2> rateSettings{10, 1};
    float rateFactor = 1.2F;
    quint32 bufferSetting = 8;
    quint32 videoOption2 = 16;
    quint32 videoOption3 = 0;
    std::array<quint32, 9> encoderSettings{0, 1, 0, 0, 4, 0, 0, 0, 0};
    quint32 audioBitrate = 128; ///< kilobits a second
    std::array<quint32, 3> audioSettings{0, 2, 0};

    // the worker: what `reset` writes
    quint8 outputFlag;

    quint8 recordEnabled;
    QString recordDir;
    QString recordName;
    QString recordTimeFormat;
    quint32 recordPeriod; ///< seconds a file
    quint32 recordMode;
    quint8 recordFlag;

    quint8 httpEnabled;
    quint16 httpPort;
    std::array<QString, 4> httpPaths;
    quint32 httpOption;

    quint8 multicastEnabled;
    QString multicastAddress;
    quint16 multicastPort;
    quint16 multicastTtl;
    QString multicastInterface;
    quint16 multicastPacketSize; ///< bytes

    quint8 hlsEnabled;
    quint16 hlsSegmentSeconds;
    quint16 hlsSegmentCount;
    quint8 hlsFlag;
    QString hlsDir;
    QString hlsPath;
    QString hlsOption;
    quint8 hlsFlag2;
    QString hlsOption2;
    quint32 hlsOption3;

    quint8 rtmp1Enabled;
    QString rtmp1Url;
    QString rtmp1Option1;
    QString rtmp1Option2;
    quint32 rtmp1Mode;

    quint8 rtmp2Enabled;
    QString rtmp2Url;
    QString rtmp2Option1;
    QString rtmp2Option2;
    quint32 rtmp2Mode;

    quint8 pushEnabled;
    QString pushPath;

    quint8 push2Enabled;
    quint32 push2Option;
    std::array<QString, 4> push2Paths;

    quint8 rtspEnabled;
    quint32 rtspPort;
    QString rtspPath;

    quint8 decklinkEnabled;
    quint8 decklinkFlag;
    quint32 decklinkDevice;
    QString decklinkMode;
    QString decklinkConnection;

    quint8 tsRecordEnabled;
    quint32 tsRecordSegmentSeconds;
    quint32 tsRecordKeepSeconds;
    quint8 tsRecordFlag;
    QString tsRecordDir;
    QString tsRecordOption;

    quint8 peerEnabled;
    QString peerAddress;
    QString peerPath;
    quint16 peerPort;
    quint16 peerMode;
    QString peerOption;

    quint8 relayEnabled;
    QString relayAddress;
    quint32 relayBufferCount;
    quint32 relayWidth; ///< pixels
    QString relayOption;
    quint8 relayFlag;
    quint8 relayFlag2;
    QString relayOption2;

    quint8 ndiEnabled;
    QString ndiName;
    QString ndiOption;

    quint8 extEnabled;
    QString extOption1;
    QString extOption2;
    std::array<qint64, 2> extRange;
    QString extOption3;

    quint8 sdpEnabled;
    quint16 sdpPort;
    QString sdpPath;
    QString sdpOption;

    // the projections
    std::array<tagTavloPresentHDMIOutputInfo, 4> hdmi;
};
