#pragma once

#include <tavlo/records/RecordTypes.h>

#include <QtGlobal>

/// A four-character code as VLC and DirectShow write it: the first character in the lowest byte.
constexpr quint32 tavloFourcc(const char (&code)[5])
{
    const auto byte = [&code](int i) { return quint32{static_cast<quint8>(code[i])} << (8 * i); };
    return byte(0) | byte(1) | byte(2) | byte(3);
}

struct tagTavloVideoInfo
{
    quint8 enable = 1;
    qint32 sourceWidth = 1920; ///< pixels, as decoded or captured; 0 asks for the stream's own size
    qint32 sourceHeight = 1080;
    quint8 progressive = 1; ///< 0 for an interlaced signal
    qint32 width = 1920;    ///< pixels, the visible frame
    qint32 height = 1080;
    qint32 fpsNum = 25;
    qint32 fpsDen = 1;
    quint32 chroma = 0;     ///< a four-character code; 0xFFFFFFFF asks for whatever the stream carries
    qint32 moduleValue = 1; ///< carried for the modules
    quint16 moduleWord = 0; ///< carried for the modules
};

struct tagTavloAudioInfo
{
    quint8 enable = 1;
    qint32 channels = 2;
    qint32 sampleRate = 48000; ///< Hz
    qint32 bitsPerSample = 16;
    quint32 audioFourcc = tavloFourcc("s16l"); ///< 0 while there is no sound
    quint16 moduleWord = 0;                    ///< carried for the modules
};

struct tagTavloMediaFormatInfo
{
    tagTavloVideoInfo videoInfo;
    tagTavloAudioInfo audioInfo;
};
