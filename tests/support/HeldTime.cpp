#include "support/HeldTime.h"

#include <pthread.h>

#include <algorithm>
#include <cstring>

namespace tavlo::test {

void HeldTime::expect(int pictures, qint64 soundMicroseconds)
{
    const std::scoped_lock lock(_lock);
    _pictures = pictures;
    _sound = soundMicroseconds;
}

void HeldTime::jump(qint64 microseconds)
{
    const std::scoped_lock lock(_lock);
    _now += microseconds;
}

void HeldTime::takePicture()
{
    const std::scoped_lock lock(_lock);
    --_pictures;
}

void HeldTime::takeSound(qint64 microseconds)
{
    const std::scoped_lock lock(_lock);
    _sound -= microseconds;
}

qint64 HeldTime::now()
{
    const std::scoped_lock lock(_lock);
    return _now;
}

void HeldTime::wait(std::condition_variable& changed, std::unique_lock<std::mutex>& lock, qint64 until)
{
    std::list<Waiting>::iterator own;
    {
        const std::scoped_lock guard(_lock);
        own = _waiting.insert(_waiting.end(), {ownLine(), until, &changed});
        advance();
    }
    if (now() < until)
        changed.wait_for(lock, std::chrono::milliseconds(1)); // a notification can be missed here
    const std::scoped_lock guard(_lock);
    _waiting.erase(own);
}

HeldTime::Line HeldTime::ownLine()
{
    std::array<char, 16> name{};
    pthread_getname_np(pthread_self(), name.data(), name.size());
    return std::strcmp(name.data(), "tavlo-picture") == 0 ? Pictures
           : std::strcmp(name.data(), "tavlo-sound") == 0 ? Sound
                                                          : Other;
}

/// Under the lock.
bool HeldTime::isExpected(Line line) const { return line == Pictures ? _pictures > 0 : _sound > soundSlack; }

/// Under the lock. Whoever has something to do keeps all others waiting.
void HeldTime::advance()
{
    for (const Line line : {Pictures, Sound}) {
        if (isExpected(line) && std::ranges::find(_waiting, line, &Waiting::line) == _waiting.end())
            return;
    }
    const qint64 next = std::ranges::min_element(_waiting, {}, &Waiting::until)->until;
    if (next <= _now)
        return;
    _now = next;
    for (const Waiting& waiting : _waiting)
        waiting.changed->notify_all();
}

} // namespace tavlo::test
