#pragma once

#include "TavloCommonModule/player/Decoder.h"
#include "TavloCommonModule/player/PlayContext.h"

#include <thread>

namespace tavlo {

/// The thread of one stream: decodes its packets and has what comes out shown or heard in time.
class StreamLine
{
public:
    StreamLine(PlayContext& context, PacketQueue& queue, StartGate::Line line)
        : _context(context), _queue(queue), _line(line)
    {}
    virtual ~StreamLine() = default;
    StreamLine(const StreamLine&) = delete;
    StreamLine& operator=(const StreamLine&) = delete;

    /// Owner's thread.
    void start(const char* threadName);

    /// Owner's thread, after the play was aborted and the queue closed.
    void join();

protected:
    // Line's thread.

    /// The stream of a segment that is this line's; may be null.
    virtual const std::shared_ptr<const StreamInfo>& streamOf(const Segment& segment) const = 0;

    /// A segment begins. \param anew  nothing of what was played before goes on
    virtual void begin(bool anew) = 0;

    /// \param stamp  microseconds of the input. \return false when the segment is void
    virtual bool take(AVFrame& frame, qint64 stamp) = 0;

    /// Whether a frame that lies in graphics memory may stay there.
    virtual bool mayStay(const AVFrame&) { return false; }

    /// The segment's last frame was taken.
    virtual void endSegment() = 0;

    /// No segment follows: what was kept for it comes out.
    virtual void endAll() {}

    /// The play is over.
    virtual void finish() = 0;

    /// Waits for the other line, the first time in an epoch. False when the segment is void.
    bool passGate();

    bool isOver() const { return _context.isOver(_segment->epoch); }

    PlayContext& _context;
    SegmentPtr _segment; ///< null before the first

private:
    void run();
    void handle(QueueEntry& entry);
    void beginSegment(SegmentPtr segment);
    bool takeFrame(AVFrame& frame);
    void decode(const AVPacket* packet);
    void drain();

    PacketQueue& _queue;
    const StartGate::Line _line;
    std::thread _thread;
    Decoder _decoder;
    bool _gatePassed = false;
    bool _decodes = false;
    qint64 _nextStamp = AV_NOPTS_VALUE; ///< where a frame without a time stamp stands
};

} // namespace tavlo
