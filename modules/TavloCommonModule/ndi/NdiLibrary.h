#pragma once

#include <QtGlobal>

// The part of NDI's C interface that sending takes, as its run-time library exports it. The library itself is the user's
// to install, and is opened when first needed.

namespace tavlo::ndi {

using Sender = void*;

struct SenderSettings
{
    const char* name;
    const char* groups; ///< null: the default ones
    bool clockVideo;    ///< a call waits until its picture is due
    bool clockAudio;
};

struct VideoFrame
{
    int width, height;
    quint32 chroma; ///< a four-character code
    int fpsNum, fpsDen;
    float aspectRatio; ///< 0: square pixels
    int frameFormat;   ///< 1: progressive
    qint64 timecode;   ///< steps of 100 ns
    const quint8* data;
    int stride; ///< bytes from row to row
    const char* metadata;
    qint64 timestamp; ///< the library's
};

/// Interleaved samples of 16 bits.
struct AudioFrame
{
    int sampleRate, channels, samples; ///< samples of one channel
    qint64 timecode;                   ///< steps of 100 ns
    int referenceLevel;                ///< decibels above +4 dBu at full scale
    const qint16* data;
};

/// The library's functions; all null where it is missing.
struct Library
{
    bool (*initialize)() = nullptr;
    Sender (*createSender)(const SenderSettings*) = nullptr;
    void (*destroySender)(Sender) = nullptr;
    void (*sendVideo)(Sender, const VideoFrame*) = nullptr;
    void (*sendAudio)(Sender, const AudioFrame*) = nullptr;

    /// Of this process, opened and initialised by the first call and kept to the end. Null, the reason in the log at the
    /// first call, when it is missing or refuses this processor. Any thread.
    static const Library* get();

private:
    bool open();
};

} // namespace tavlo::ndi
