#pragma once

#include <QtGlobal>

#include <cstdint>

// The part of NDI's C interface that sending, finding and receiving take, as its run-time library exports it. The library
// itself is the user's to install, and is opened when first needed.

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
    qint64 timestamp; ///< the library's; of a received one as in PlanarAudioFrame
};

/// Interleaved samples of 16 bits.
struct AudioFrame
{
    int sampleRate, channels, samples; ///< samples of one channel
    qint64 timecode;                   ///< steps of 100 ns
    int referenceLevel;                ///< decibels above +4 dBu at full scale
    const qint16* data;
};

using Finder = void*;

struct FinderSettings
{
    bool showLocal;
    const char* groups; ///< null: the default ones
    const char* places; ///< addresses to ask beside those that announce themselves, separated by commas; may be null
};

/// A sender on the network. Texts of a finder are its own, until it is asked again.
struct Source
{
    const char* name; ///< "MACHINE (name)"
    const char* address;
};

using Receiver = void*;

struct ReceiverSettings
{
    Source source;
    int colourFormat; ///< 3: UYVY, and RGBA where there is transparency
    int bandwidth;    ///< 10: sound alone; 100: all
    bool allowFields; ///< else pictures come deinterlaced
    const char* name;
};

/// What a call of `capture` brings.
enum Arrived
{
    ArrivedNothing = 0,
    ArrivedVideo = 1,
    ArrivedAudio = 2,
    ArrivedError = 4, ///< the connection is lost
};

/// Samples of 32-bit floating point, channel behind channel; full scale of the line is 1.
struct PlanarAudioFrame
{
    int sampleRate, channels, samples; ///< samples of one channel
    qint64 timecode;                   ///< steps of 100 ns
    const quint8* data;
    int channelStride; ///< bytes from channel to channel
    const char* metadata;
    qint64 timestamp; ///< when it was handed to the sending library, steps of 100 ns; `noTimestamp` when unknown
};

inline constexpr qint64 noTimestamp = INT64_MAX;

/// The library's functions; all null where it is missing.
struct Library
{
    bool (*initialize)() = nullptr;
    Sender (*createSender)(const SenderSettings*) = nullptr;
    void (*destroySender)(Sender) = nullptr;
    void (*sendVideo)(Sender, const VideoFrame*) = nullptr;
    void (*sendAudio)(Sender, const AudioFrame*) = nullptr;

    Finder (*createFinder)(const FinderSettings*) = nullptr;
    void (*destroyFinder)(Finder) = nullptr;
    bool (*waitForSources)(Finder, quint32 milliseconds) = nullptr; ///< whether others than before are there
    const Source* (*sources)(Finder, quint32* count) = nullptr;

    Receiver (*createReceiver)(const ReceiverSettings*) = nullptr;
    void (*destroyReceiver)(Receiver) = nullptr;
    /// \return an `Arrived`, or another value for what is of no interest
    int (*capture)(Receiver, VideoFrame*, PlanarAudioFrame*, void* metadata, quint32 milliseconds) = nullptr;
    void (*freeVideo)(Receiver, const VideoFrame*) = nullptr;
    void (*freeAudio)(Receiver, const PlanarAudioFrame*) = nullptr;
    int (*connections)(Receiver) = nullptr; ///< how many senders it is connected to

    /// Of this process, opened and initialised by the first call and kept to the end. Null, the reason in the log at the
    /// first call, when it is missing or refuses this processor. Any thread.
    static const Library* get();

private:
    bool open();
};

} // namespace tavlo::ndi
