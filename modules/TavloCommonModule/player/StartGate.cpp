#include "TavloCommonModule/player/StartGate.h"

namespace tavlo {

void StartGate::arm(unsigned epoch, unsigned lines, qint64 bufferedAfter)
{
    {
        const std::scoped_lock lock(_lock);
        _epoch = epoch;
        _missing = lines;
        _notBefore = _clock.now() + bufferedAfter;
        _firstReady = 0;
    }
    _changed.notify_all();
}

bool StartGate::pass(Line line, unsigned epoch, const PlayClock::Cancelled& cancelled,
                     const PlayClock::Cancelled& isFilled)
{
    std::unique_lock lock(_lock);
    if (epoch == _epoch) { // else the clock of a device, which waits for nobody
        _missing &= ~static_cast<unsigned>(line);
        if (_firstReady == 0)
            _firstReady = _clock.now();
    }
    while (!cancelled()) {
        if (_clock.isStarted())
            return true;
        const qint64 now = _clock.now();
        const bool ready = _missing == 0 || now - _firstReady >= patience;
        if (ready && (now >= _notBefore || isFilled())) {
            _clock.start();
            _changed.notify_all();
            return true;
        }
        _changed.wait_for(lock, std::chrono::milliseconds(10));
    }
    return false;
}

void StartGate::wake()
{
    {
        const std::scoped_lock lock(_lock);
    }
    _changed.notify_all();
}

} // namespace tavlo
