#pragma once

#include "TavloCommonModule/player/ITavloSourcePlayer.h"
#include "TavloCommonModule/player/Segment.h"

#include <deque>
#include <mutex>

namespace tavlo {

/// Which entry plays, in which state, and the reports about it: each once, in order, at the time at which the picture
/// is there. Any thread.
class PlayProgress
{
public:
    PlayProgress(ITavloSourcePlayerSink* sink, int itemCount) : _sink(sink), _itemCount(itemCount) {}

    /// The input of an entry is looked for; nothing plays meanwhile.
    void opening(int item);

    /// A segment was read. What an earlier epoch left behind is void.
    void add(SegmentPtr segment);

    /// An entry could not be played and takes no time.
    void skip(int item, qint64 timeline);

    /// Nothing follows that place.
    void finishAt(qint64 timeline);

    /// Playing has come to that place of the time line.
    void advance(qint64 timeline);

    void setPaused(bool paused);

    /// The state becomes "stopped", and it is the last report: the sink is let go.
    void stop();

    TavloSourcePlayerState state() const;
    int item() const;

    /// What plays, or played last; null before the first.
    SegmentPtr current() const;

private:
    struct Boundary
    {
        qint64 at;          ///< of the time line
        SegmentPtr segment; ///< null where an entry was skipped, and at the end
        int skipped;        ///< the entry, or -1
    };

    void pass(const Boundary& boundary);
    void report(TavloSourcePlayerState state, int item);

    std::recursive_mutex _reportLock; ///< taken before _lock, held while the sink is called

    // guarded by _reportLock
    ITavloSourcePlayerSink* _sink;
    std::deque<Boundary> _ahead;
    unsigned _epoch = 0; ///< of the newest segment

    // fixed after create
    const int _itemCount;

    mutable std::mutex _lock;

    // guarded by _lock, written under both
    TavloSourcePlayerState _state = TavloSourcePlayerStateIdle;
    bool _paused = false;
    int _item = 0;
    SegmentPtr _current;
};

} // namespace tavlo
