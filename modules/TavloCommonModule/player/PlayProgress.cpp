#include "TavloCommonModule/player/PlayProgress.h"

#include <utility>

namespace tavlo {

void PlayProgress::opening(int item)
{
    const std::scoped_lock lock(_reportLock);
    _ahead.clear();
    report(TavloSourcePlayerStateOpening, item);
}

void PlayProgress::add(SegmentPtr segment)
{
    const std::scoped_lock lock(_reportLock);
    if (std::exchange(_epoch, segment->epoch) != segment->epoch)
        _ahead.clear();
    const qint64 at = segment->timelineStart;
    _ahead.push_back({at, std::move(segment), -1});
}

void PlayProgress::skip(int item, qint64 timeline)
{
    const std::scoped_lock lock(_reportLock);
    _ahead.push_back({timeline, nullptr, item});
}

void PlayProgress::finishAt(qint64 timeline)
{
    const std::scoped_lock lock(_reportLock);
    _ahead.push_back({timeline, nullptr, -1});
}

void PlayProgress::advance(qint64 timeline)
{
    const std::scoped_lock lock(_reportLock);
    while (!_ahead.empty() && _ahead.front().at <= timeline) {
        const Boundary boundary = std::move(_ahead.front());
        _ahead.pop_front();
        pass(boundary);
    }
}

void PlayProgress::pass(const Boundary& boundary)
{
    const SegmentPtr before = current();
    const bool plays = state() == TavloSourcePlayerStatePlaying || state() == TavloSourcePlayerStatePaused;
    const bool entryEnds =
        !boundary.segment || (before && before->epoch == boundary.segment->epoch && boundary.segment->beginsItem);
    if (plays && entryEnds)
        report(TavloSourcePlayerStateEnded, item());
    if (boundary.skipped >= 0)
        report(TavloSourcePlayerStateEnded, boundary.skipped);
    if (!boundary.segment)
        return;
    {
        const std::scoped_lock lock(_lock);
        _current = boundary.segment;
    }
    report(TavloSourcePlayerStatePlaying, boundary.segment->item);
}

void PlayProgress::setPaused(bool paused)
{
    const std::scoped_lock reports(_reportLock);
    {
        const std::scoped_lock lock(_lock);
        _paused = paused;
    }
    if (state() == TavloSourcePlayerStatePlaying || state() == TavloSourcePlayerStatePaused)
        report(TavloSourcePlayerStatePlaying, item());
}

void PlayProgress::stop()
{
    const std::scoped_lock lock(_reportLock);
    report(TavloSourcePlayerStateStopped, item());
    _sink = nullptr;
}

TavloSourcePlayerState PlayProgress::state() const
{
    const std::scoped_lock lock(_lock);
    return _state;
}

int PlayProgress::item() const
{
    const std::scoped_lock lock(_lock);
    return _item;
}

SegmentPtr PlayProgress::current() const
{
    const std::scoped_lock lock(_lock);
    return _current;
}

/// Under the report lock. Who plays in a pause is paused; what is so already is not told again, and what is stopped
/// stays so, as a reading thread may still be at work.
void PlayProgress::report(TavloSourcePlayerState state, int item)
{
    {
        const std::scoped_lock lock(_lock);
        if (state == TavloSourcePlayerStatePlaying && _paused)
            state = TavloSourcePlayerStatePaused;
        if (_state == TavloSourcePlayerStateStopped || (_state == state && _item == item))
            return;
        _state = state;
        _item = item;
    }
    if (_sink)
        _sink->OnMediaSourcePlayerState(state, item, _itemCount);
}

} // namespace tavlo
