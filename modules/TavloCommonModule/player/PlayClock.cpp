#include "TavloCommonModule/player/PlayClock.h"

#include <algorithm>
#include <cmath>

namespace tavlo {
namespace {

constexpr double smoothing = 1.0 / 16;    ///< of one measure, made for each block of 20 milliseconds
constexpr double strayLimit = 80'000.0;   ///< microseconds from the mean that are no jitter
constexpr int straysBelieved = 3;         ///< in a row
constexpr int settledAfter = 100;         ///< measures
constexpr double driftAllowed = 20'000.0; ///< microseconds, before the clock goes along
constexpr double driftFollowed = 100.0;   ///< microseconds a measure, half a percent

} // namespace

qint64 PlayClock::now() const
{
    const std::scoped_lock lock(_lock);
    return _time->now();
}

void PlayClock::useSystemTime()
{
    std::unique_lock lock(_lock);
    anchor(_time->now());
    _started = false;
    _time = &MonotonicTime::instance();
    _changed.notify_all();
    _left.wait(lock, [this] { return _waiting == 0; });
}

void PlayClock::reset(qint64 position)
{
    {
        const std::scoped_lock lock(_lock);
        _started = false;
        _anchorPosition = position;
        _soundEnd = noSound;
        _offset = _settledOffset = 0.0;
        _measures = _strayed = 0;
    }
    _changed.notify_all();
}

void PlayClock::start()
{
    {
        const std::scoped_lock lock(_lock);
        _started = true;
        _anchorTime = _time->now();
    }
    _changed.notify_all();
}

bool PlayClock::isStarted() const
{
    const std::scoped_lock lock(_lock);
    return _started;
}

void PlayClock::setPaused(bool paused)
{
    {
        const std::scoped_lock lock(_lock);
        anchor(_time->now());
        _paused = paused;
    }
    _changed.notify_all();
}

void PlayClock::setRate(double rate)
{
    {
        const std::scoped_lock lock(_lock);
        _wantedRate = rate;
        applyRate();
    }
    _changed.notify_all();
}

void PlayClock::setLive(bool live)
{
    {
        const std::scoped_lock lock(_lock);
        _live = live;
        applyRate();
    }
    _changed.notify_all();
}

/// Under the lock.
void PlayClock::applyRate()
{
    const double rate = _live ? 1.0 : _wantedRate;
    if (rate == _rate)
        return;
    anchor(_time->now());
    _offset *= rate / _rate; // it is a time of the sink's
    _settledOffset *= rate / _rate;
    _rate = rate;
}

double PlayClock::rate() const
{
    const std::scoped_lock lock(_lock);
    return _rate;
}

void PlayClock::shift(qint64 microseconds)
{
    {
        const std::scoped_lock lock(_lock);
        _anchorPosition += microseconds;
    }
    _changed.notify_all();
}

qint64 PlayClock::position() const
{
    const std::scoped_lock lock(_lock);
    return positionAt(_time->now());
}

qint64 PlayClock::pictureTime() const
{
    const std::scoped_lock lock(_lock);
    return positionAt(_time->now()) + std::llround(_offset);
}

qint64 PlayClock::dateOf(qint64 timeline) const
{
    const std::scoped_lock lock(_lock);
    const qint64 now = _time->now();
    const double ahead = static_cast<double>(timeline - positionAt(now)) - _offset;
    return now + std::llround(ahead / _rate);
}

void PlayClock::noteHandedOver(qint64 timeline)
{
    const std::scoped_lock lock(_lock);
    _soundEnd = timeline;
}

qint64 PlayClock::lateness(qint64 timeline) const
{
    const std::scoped_lock lock(_lock);
    const qint64 reached = std::min(positionAt(_time->now()) + std::llround(_offset), _soundEnd);
    return std::llround(static_cast<double>(reached - timeline) / _rate);
}

void PlayClock::noteHeard(qint64 timeline)
{
    const std::scoped_lock lock(_lock);
    if (!runs())
        return;
    const double measured = static_cast<double>(timeline - positionAt(_time->now()));
    const bool strays = std::abs(measured - _offset) > strayLimit * std::max(_rate, 1.0);
    _strayed = strays ? _strayed + 1 : 0;
    if (_measures == 0 || _strayed >= straysBelieved)
        _offset = measured; // the sink began anew
    else if (!strays)
        _offset += (measured - _offset) * smoothing;
    if (++_measures <= settledAfter || _strayed >= straysBelieved) {
        _settledOffset = _offset;
        return;
    }
    const double drift = _offset - _settledOffset;
    if (std::abs(drift) < driftAllowed)
        return;
    const double step = std::copysign(driftFollowed, drift) * _rate;
    _anchorPosition += std::llround(step);
    _offset -= step;
}

void PlayClock::wake()
{
    {
        const std::scoped_lock lock(_lock); // nobody is between its look and its wait
    }
    _changed.notify_all();
}

bool PlayClock::wait(qint64 timeline, bool picture, const Cancelled& cancelled)
{
    std::unique_lock lock(_lock);
    while (!cancelled()) {
        if (!runs()) {
            _changed.wait(lock);
            continue;
        }
        const qint64 now = _time->now();
        const double ahead = static_cast<double>(timeline - positionAt(now)) - (picture ? _offset : 0.0);
        if (ahead <= 0)
            return true;
        // No longer than the offset may be trusted.
        const qint64 left = std::min<qint64>(std::llround(std::ceil(ahead / _rate)), 100'000);
        ++_waiting;
        _time->wait(_changed, lock, now + left);
        if (--_waiting == 0)
            _left.notify_all();
    }
    return false;
}

qint64 PlayClock::positionAt(qint64 now) const
{
    return runs() ? _anchorPosition + std::llround(static_cast<double>(now - _anchorTime) * _rate) : _anchorPosition;
}

void PlayClock::anchor(qint64 now)
{
    _anchorPosition = positionAt(now);
    _anchorTime = now;
}

} // namespace tavlo
