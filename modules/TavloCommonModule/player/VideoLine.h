#pragma once

#include "TavloCommonModule/player/PictureFilter.h"
#include "TavloCommonModule/player/PictureOutput.h"
#include "TavloCommonModule/player/StreamLine.h"

namespace tavlo {

/// The thread of the pictures: each is shown when its time has come. One that is late is left out, but for one now and
/// then: a machine that is too slow shows some rather than none.
class VideoLine final : public StreamLine
{
public:
    explicit VideoLine(PlayContext& context);

private:
    static constexpr qint64 lateLimit = 100'000;  ///< microseconds
    static constexpr qint64 longestGap = 250'000; ///< microseconds without a picture while all are late
    static constexpr qint64 seekSlack = 999;      ///< microseconds: places are told in whole milliseconds

    const std::shared_ptr<const StreamInfo>& streamOf(const Segment& segment) const override { return segment.video; }
    void begin(bool anew) override;
    bool take(AVFrame& frame, qint64 stamp) override;
    bool mayStay(const AVFrame& frame) override;
    void endSegment() override;
    void finish() override;

    bool schedule(AVFrame& frame, qint64 stamp);
    bool present(AVFrame& frame, qint64 timeline);
    bool isLate(qint64 timeline);
    bool flushHeld();

    PictureFilter _filter;
    PictureOutput _output;
    const qint64 _ahead; ///< microseconds by which a picture comes before its time
    FramePtr _held;      ///< the picture at a seek's place, until the next tells that it is
    bool _holds = false;
    qint64 _heldTimeline = 0;
    bool _firstOfEpoch = false;
    qint64 _lastShown = 0; ///< of the clock's time
};

} // namespace tavlo
