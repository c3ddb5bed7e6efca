#pragma once

#include <QtGlobal>

#include <condition_variable>
#include <functional>
#include <mutex>

namespace tavlo {

/// Where on the time line a player is.
///
/// The clock runs on the monotonic clock, at the player's rate, and paces the hand-over of sound. Pictures follow what
/// is heard: `noteHeard` tells where the sound really is, and the picture's clock goes with it, smoothed. A sink whose
/// own clock drifts without end takes the whole clock along, so that what waits to be heard neither runs dry nor piles
/// up. Without sound both are one. Any thread.
class PlayClock
{
public:
    using Cancelled = std::function<bool()>;

    /// Stands at that place until `start`.
    void reset(qint64 position);

    /// Runs, unless it is paused.
    void start();
    bool isStarted() const;

    void setPaused(bool paused);
    void setRate(double rate);
    double rate() const;

    /// Moves the clock: forward leaves something out, backward waits.
    void shift(qint64 microseconds);

    /// Where sound that is handed over at its time would be, microseconds of the time line.
    qint64 position() const;

    /// Where the picture is.
    qint64 pictureTime() const;

    /// The monotonic time at which that place is seen and heard.
    qint64 dateOf(qint64 timeline) const;

    /// What can be heard at this moment.
    void noteHeard(qint64 timeline);

    /// Waits until the sound's or the picture's clock is there. False when `cancelled`, which is looked at after each
    /// `wake` and each change of the clock.
    bool waitForSound(qint64 timeline, const Cancelled& cancelled) { return wait(timeline, false, cancelled); }
    bool waitForPicture(qint64 timeline, const Cancelled& cancelled) { return wait(timeline, true, cancelled); }

    /// Whoever waits looks at its `cancelled`.
    void wake();

private:
    bool wait(qint64 timeline, bool picture, const Cancelled& cancelled);
    bool runs() const { return _started && !_paused; }
    qint64 positionAt(qint64 now) const;
    void anchor(qint64 now);

    mutable std::mutex _lock;
    std::condition_variable _changed;

    // guarded by _lock
    qint64 _anchorPosition = 0; ///< of the time line, at `_anchorTime`
    qint64 _anchorTime = 0;     ///< monotonic
    bool _started = false;
    bool _paused = false;
    double _rate = 1.0;
    double _offset = 0.0;        ///< of what is heard from `position`, smoothed, microseconds
    double _settledOffset = 0.0; ///< what it was soon after the start
    int _measures = 0;           ///< since the start
    int _strayed = 0;            ///< measures in a row that are far off
};

} // namespace tavlo
