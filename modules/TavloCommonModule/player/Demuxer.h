#pragma once

#include "TavloCommonModule/player/Input.h"
#include "TavloCommonModule/player/PlayContext.h"

#include <array>
#include <random>

namespace tavlo {

/// The reading thread: opens the entries one after the other, some time ahead of what is seen, hands their packets to
/// the streams' threads, and goes back, on, or tries again.
class Demuxer
{
public:
    /// \param second  reads the device for sound beside the main one
    Demuxer(std::shared_ptr<PlayContext> context, bool second);

    /// Until the play is aborted.
    void run();

private:
    enum class Outcome
    {
        Ended,
        Failed,
        Broken,
        Seek,
        Aborted
    };

    /// How a segment stands to the one before it.
    enum class Begin
    {
        Continued, ///< without a seam
        Anew,      ///< what is not played yet is void, and the clock waits for the first picture
        Sought,    ///< the same, after a seek
    };

    /// One stream of the input that is being read.
    struct Reading
    {
        PacketQueue* queue = nullptr;
        std::shared_ptr<const StreamInfo> stream;
        qint64 lastStamp = AV_NOPTS_VALUE; ///< microseconds, of decoding
        qint64 end = AV_NOPTS_VALUE;       ///< of the time line
    };

    // What comes next.
    Outcome play(bool newEpoch);
    bool openEntry();
    bool follow(Outcome outcome, bool& newEpoch);
    bool goOnAfterEnd(bool& newEpoch);
    bool goOnAfterFailure(Outcome outcome, bool& newEpoch);
    bool idle();
    bool takeSeek();
    bool waitToRetry();
    const InputLocation& entry() const;
    bool triesForEver() const;

    // One segment.
    void beginSegment(Begin how, qint64 stampOfItem, qint64 from, bool beginsItem);
    void beginDeviceSegment(qint64 firstStamp);
    void armStart();
    Outcome readSegment();
    Outcome endSegment(int result);
    void hand(PacketPtr packet);
    bool jumps(const Reading& reading, const AVPacket& packet) const;
    void continueAfterJump(const AVPacket& packet);
    void keepLatency(qint64 newest);
    qint64 pieceLength(qint64 now);
    bool waitForRoom();
    bool waitForEnd();
    qint64 segmentEnd() const;

    Reading& readingOf(const AVPacket& packet) { return _readings[_input->isVideo(packet) ? 0 : 1]; }

    const std::shared_ptr<PlayContext> _context;
    const bool _second;
    int _item = 0;
    const std::unique_ptr<Input> _input; ///< for entries like the first
    int _openEntry = -1;
    qint64 _from = 0; ///< microseconds of the entry at which to begin
    bool _fromSeek = false;
    int _failures = 0; ///< in a row
    std::mt19937 _random{std::random_device{}()};

    SegmentPtr _segment;
    std::array<Reading, 2> _readings; ///< pictures, sound
    qint64 _timelineEnd = 0;
    qint64 _deviceBase = 0;   ///< wall clock at which the time line of devices is at 0, microseconds
    qint64 _leastLatency = 0; ///< microseconds, in the current window
    qint64 _latencySince = 0; ///< of the clock's time
    qint64 _newestAt = 0;     ///< the same: when a packet came last
    qint64 _longestGap = 0;   ///< microseconds between packets of the current window
    qint64 _lastGap = 0;      ///< the same of the window before
    qint64 _packetsOfSegment = 0;
    bool _hasBegun = false; ///< some segment: its lines start the clock, even when nothing comes out of it
};

} // namespace tavlo
