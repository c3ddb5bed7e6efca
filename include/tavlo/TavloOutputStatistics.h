#pragma once

#include <QtGlobal>

#include <array>
#include <cstddef>

/// What an output has done so far. Each part of it writes its own figures and leaves the others as they are, so the
/// caller begins with zeros. The layout is fixed, since the record crosses the edges of modules.
///
/// "Fps" are pictures (or blocks' bytes) a second, "Kbps" thousands of bits a second. Counts begin with the target and
/// outlive its outputs. Behind an output's end each picture that was committed stands in one account:
///
///     committedPictures = droppedPictures + latePictures + encoderDropped + skippedPictures
///                       + (codedPictures - repeatedPictures)
///
/// and each coded one, where only one target took it, in `recordWritten` or `recordDropped` (`net...` for a stream).
struct tagTavloOutputStatistics
{
    /// How a recording or one of the stream's targets stands.
    enum State : quint32
    {
        Off = 0,
        Opening = 1,
        Running = 2,
        Waiting = 3, ///< it failed and is tried again after a pause
    };

    std::array<std::byte, 8> reserved0{};
    float workerRate1 = 0; ///< coded video, kilobits a second
    quint32 reserved1 = 0;
    float workerRate2 = 0; ///< coded sound, kilobits a second
    std::array<quint32, 3> reserved2{};
    quint64 workerTotal = 0;            ///< coded bytes taken over
    std::array<char, 128> frameTypes{}; ///< 'I', 'P', 'B', 'C' (P or B) of the first coded pictures
    std::array<quint32, 3> reserved3{};
    float recordRatePair1 = 0; ///< video that a recording has written, kilobits a second
    quint32 recordState = 0;   ///< a State
    float recordRatePair2 = 0; ///< sound, kilobits a second
    std::array<quint32, 7> reserved4{};
    float netRatePair1 = 0; ///< video sent, all targets together, kilobits a second
    quint32 netState = 0;   ///< the worst State of the targets that are switched on
    float netRatePair2 = 0; ///< sound, kilobits a second
    std::array<quint32, 2> reserved5{};

    // What was lost, and where. Zero in all of them is a perfect run.
    quint64 droppedPictures = 0;  ///< no free buffer when they were committed
    quint64 droppedBlocks = 0;    ///< the same for sound
    quint64 encoderDropped = 0;   ///< the encoder had no room
    quint64 repeatedPictures = 0; ///< steps without a picture, filled with the one before
    quint64 skippedPictures = 0;  ///< pictures beyond the frame rate
    quint64 silentSamples = 0;    ///< gaps in the sound, filled; in samples of one channel
    quint64 skippedSamples = 0;   ///< sound that came twice
    quint64 recordDropped = 0;    ///< coded pictures that a recording could not take
    quint64 netDropped = 0;       ///< the same, all targets of the stream together
    quint64 recordFiles = 0;      ///< files begun
    quint64 netReconnects = 0;    ///< connections begun after the first
    quint64 codedPictures = 0;    ///< that came out of the encoder

    // Where the pictures went.
    quint64 committedPictures = 0; ///< while an output wanted them
    quint64 latePictures = 0;      ///< of those, the ones that came behind the output's end
    quint64 recordWritten = 0;     ///< coded pictures that a recording has written
    quint64 netWritten = 0;        ///< the same, all targets of the stream together
    quint64 netViewers = 0;        ///< who are being served now
    quint64 viewerDropped = 0;     ///< pictures that slow viewers lost, all viewers together
    std::array<std::byte, 1020> reserved6{};

    float transferRatePair1 = 0; ///< kilobits a second
    quint32 reserved7 = 0;
    float transferRatePair2 = 0; ///< kilobits a second
    std::array<std::byte, 184> reserved8{};
    float decklinkVideoFps = 0, decklinkVideoKbps = 0, decklinkAudioFps = 0, decklinkAudioKbps = 0;
    std::array<std::byte, 28> reserved9{};
    float outputDelay = 0; ///< milliseconds that the last coded picture was in the encoder
    std::array<std::byte, 32> reserved10{};
    float ndiVideoFps = 0, ndiVideoKbps = 0, ndiAudioFps = 0, ndiAudioKbps = 0;
    std::array<std::byte, 24> reserved11{};
    float hdmiVideoFps = 0, hdmiVideoKbps = 0, hdmiAudioFps = 0, hdmiAudioKbps = 0;
    std::array<std::byte, 16> reserved12{};
};

static_assert(sizeof(tagTavloOutputStatistics) == 1752);
static_assert(offsetof(tagTavloOutputStatistics, workerRate2) == 16);
static_assert(offsetof(tagTavloOutputStatistics, workerTotal) == 32);
static_assert(offsetof(tagTavloOutputStatistics, frameTypes) == 40);
static_assert(offsetof(tagTavloOutputStatistics, recordRatePair1) == 180);
static_assert(offsetof(tagTavloOutputStatistics, netRatePair1) == 220);
static_assert(offsetof(tagTavloOutputStatistics, transferRatePair1) == 1404);
static_assert(offsetof(tagTavloOutputStatistics, decklinkVideoFps) == 1600);
static_assert(offsetof(tagTavloOutputStatistics, outputDelay) == 1644);
static_assert(offsetof(tagTavloOutputStatistics, ndiVideoFps) == 1680);
static_assert(offsetof(tagTavloOutputStatistics, hdmiVideoFps) == 1720);
