#pragma once

#include "TavloCommonModule/player/MonotonicClock.h"

#include <condition_variable>
#include <functional>
#include <mutex>

namespace tavlo {

/// Where on the time line a player is.
///
/// The clock runs on the system's monotonic clock, or on the sink's time, at the player's rate, and paces the hand-over of sound. Pictures follow what
/// is heard: `noteHeard` tells where the sound really is, and the picture's clock goes with it, smoothed. A sink whose
/// own clock drifts without end takes the whole clock along, so that what waits to be heard neither runs dry nor piles
/// up. Without sound both are one. Any thread.
class PlayClock
{
public:
    using Cancelled = std::function<bool()>;

    explicit PlayClock(ITavloSourcePlayerTime& time) : _time(&time) {}

    /// Microseconds of the time that it runs on.
    qint64 now() const;

    /// The sink goes: the clock stands, whoever still asks gets the system's time, and nobody waits on the other when it
    /// returns.
    void useSystemTime();

    /// Stands at that place until `start`.
    void reset(qint64 position);

    /// Runs, unless it is paused.
    void start();
    bool isStarted() const;

    void setPaused(bool paused);

    /// The rate of what can be had faster or slower: what is live keeps 1.
    void setRate(double rate);
    void setLive(bool live);
    double rate() const;

    /// Moves the clock: forward leaves something out, backward waits.
    void shift(qint64 microseconds);

    /// Where sound that is handed over at its time would be, microseconds of the time line.
    qint64 position() const;

    /// Where the picture is.
    qint64 pictureTime() const;

    /// The time at which that place is seen and heard.
    qint64 dateOf(qint64 timeline) const;

    /// How far sound has been handed over; `noSound` where there is none to come just now.
    void noteHandedOver(qint64 timeline);
    static constexpr qint64 noSound = INT64_MAX;

    /// By how much a picture is late, microseconds at rate 1. Where sound is behind as well, all that is late waits for
    /// it, so only what sound has passed counts.
    qint64 lateness(qint64 timeline) const;

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
    void applyRate();

    mutable std::mutex _lock;
    std::condition_variable _changed;
    std::condition_variable _left; ///< nobody waits on `_time`

    // guarded by _lock
    ITavloSourcePlayerTime* _time;
    int _waiting = 0;           ///< threads inside `_time`
    qint64 _anchorPosition = 0; ///< of the time line, at `_anchorTime`
    qint64 _anchorTime = 0;     ///< of `_time`
    bool _started = false;
    bool _paused = false;
    bool _live = false;
    double _wantedRate = 1.0;
    double _rate = 1.0;          ///< 1 while it is live, else as wanted
    double _offset = 0.0;        ///< of what is heard from `position`, smoothed, microseconds
    double _settledOffset = 0.0; ///< what it was soon after the start
    qint64 _soundEnd = noSound;  ///< of the time line
    int _measures = 0;           ///< since the start
    int _strayed = 0;            ///< measures in a row that are far off
};

} // namespace tavlo
