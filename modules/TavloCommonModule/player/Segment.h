#pragma once

#include "TavloCommonModule/player/FfmpegTypes.h"

#include <QtGlobal>

#include <memory>

namespace tavlo {

/// One stream of an input, as its decoder has to know it. Outlives the input.
struct StreamInfo
{
    StreamInfo(const AVStream& stream, AVRational guessedFrameRate);

    /// A stream whose packets carry frames, with nothing left to decode; stamped in microseconds.
    StreamInfo(AVMediaType type, AVRational rate);

    ~StreamInfo() { avcodec_parameters_free(&parameters); }
    StreamInfo(const StreamInfo&) = delete;
    StreamInfo& operator=(const StreamInfo&) = delete;

    AVCodecParameters* parameters = nullptr;
    AVRational timeBase{1, 1'000'000};
    AVRational frameRate{0, 1};
    int quarterTurns = 0;   ///< to be turned clockwise before it is shown, 0 to 3
    bool mirrored = false;  ///< left and right exchanged, after it was turned
    bool isPicture = false; ///< a cover: one picture without a place in time
};

/// A stretch of the play's time line that is filled from one place of one input without a break.
///
/// The time line counts microseconds of what was played since `play`. It has no holes: an entry begins where the one
/// before it ends, and so does what follows a seek.
struct Segment
{
    unsigned epoch = 0;       ///< what belongs to an earlier one is void
    int item = 0;             ///< in the list
    qint64 itemLength = 0;    ///< microseconds, 0 when unknown
    qint64 stampOfItem = 0;   ///< time stamp at which the entry begins, microseconds
    qint64 from = 0;          ///< microseconds of the entry that are left out
    qint64 timelineStart = 0; ///< microseconds
    bool beginsItem = false;  ///< the entry begins here, nothing of it came before
    bool live = false;
    std::shared_ptr<const StreamInfo> video; ///< null when there is none
    std::shared_ptr<const StreamInfo> audio;

    /// \param stamp  time stamp in microseconds
    qint64 timelineOf(qint64 stamp) const { return timelineStart + stamp - stampOfItem - from; }

    /// Whether a time stamp lies far behind the end, which only a broken input has.
    bool isBeyondEnd(qint64 stamp) const
    {
        return !live && itemLength > 0 && stamp - stampOfItem > itemLength + 3'000'000;
    }

    /// Microseconds since the entry's beginning.
    qint64 itemTimeOf(qint64 timeline) const { return timeline - timelineStart + from; }
};

using SegmentPtr = std::shared_ptr<const Segment>;

} // namespace tavlo
