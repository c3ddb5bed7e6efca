#pragma once

#include "TavloCommonModule/player/PlayClock.h"

#include <condition_variable>
#include <mutex>

namespace tavlo {

/// Has pictures and sound begin together: the clock starts when each has its first at hand and enough is buffered.
/// Any thread.
class StartGate
{
public:
    enum Line : unsigned
    {
        Pictures = 1,
        Sound = 2
    };

    explicit StartGate(PlayClock& clock) : _clock(clock) {}

    /// Closes the gate for a new epoch.
    /// \param lines          those that have to be ready
    /// \param bufferedAfter  microseconds that a live input is given to fill its buffer
    void arm(unsigned epoch, unsigned lines, qint64 bufferedAfter);

    /// A line has its first output at hand, or none at all: waits until it may go on. False when `cancelled`, or when
    /// the epoch is over.
    /// \param isFilled  whether the buffer is as full as it has to be, ahead of time
    bool pass(Line line, unsigned epoch, const PlayClock::Cancelled& cancelled, const PlayClock::Cancelled& isFilled);

    /// Whoever waits looks at its `cancelled`.
    void wake();

private:
    static constexpr qint64 patience = 1'000'000; ///< microseconds that a ready line waits for the other

    PlayClock& _clock;
    std::mutex _lock;
    std::condition_variable _changed;

    // guarded by _lock
    unsigned _epoch = 0;
    unsigned _missing = 0; ///< lines
    qint64 _notBefore = 0; ///< microseconds of the clock's time
    qint64 _firstReady = 0;
};

} // namespace tavlo
