#pragma once

#include <tavlo/records/RecordTypes.h>

#include <QString>

/// Look of the lyric lines. Colours are 0xAARRGGBB; each line is filled with a vertical run of three of them.
struct tagTavloMusicLRCStyle
{
    quint32 preset = 0;
    QString fontName;
    quint32 fontSize = 0;      ///< pixels
    quint32 noPlayUpColor = 0; ///< before a syllable is sung
    quint32 noPlayMidColor = 0;
    quint32 noPlayDownColor = 0;
    quint32 playedUpColor = 0; ///< after
    quint32 playedMidColor = 0;
    quint32 playedDownColor = 0;
    quint32 shadowColor = 0;
};

/// A lyric file.
struct tagTavloRCFileInfo
{
    QString title;
};
