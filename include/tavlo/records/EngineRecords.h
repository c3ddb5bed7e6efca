#pragma once

#include <tavlo/TavloPresentViewLayout.h>
#include <tavlo/records/MediaFormat.h>

#include <QRect>
#include <QString>

/// What an engine is created with.
struct tagTavloPresentEngineInfo
{
    tagTavloVideoInfo videoInfo;  ///< frame format of the engine
    tagTavloAudioInfo audioInfo;  ///< sample format of the engine
    qint32 graphicsDeviceId = -1; ///< wanted graphics device; -1 lets the engine choose
    quint32 channelCount = 8;     ///< source channels to create
    quint32 pgmCount = 1;         ///< PGM channels of a Matrix engine, at most 4; others have one
    quint32 pgmPreviewEach = 0;   ///< Matrix: 0 gives only the first PGM a mix of its own; set by the host, not saved
    QString pgmAudioDevName;      ///< audio device of the PGM monitor
    QString pvmAudioDevName;      ///< audio device of the PVM monitor
    bool doubleAudioSampleRateRender = true;
    QString resourcePath;  ///< root of the resource tree
    QString dataCachePath; ///< root of the caches
};

/// Where the multi-view stands. It has no XML form.
struct tagTavloWindowInfo
{
    TavloPresentViewLayoutType layoutType = TavloPresentViewLayoutTypeGrid;
    QRect rect;          ///< placement in the host's window, pixels
    quintptr window = 0; ///< the host's native window, lent; 0 draws off screen

    friend bool operator==(const tagTavloWindowInfo&, const tagTavloWindowInfo&) = default;
};
