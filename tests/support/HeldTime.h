#pragma once

#include "TavloCommonModule/player/ITavloSourcePlayer.h"

#include <tavlo/InterfacePtr.h>

#include <array>
#include <list>

namespace tavlo::test {

/// Time that waits for the player: it stands still while a thread has something to do, and when all wait it goes to the
/// nearest moment that one waits for. A busy machine makes nothing late, and an idle one plays faster than in real time.
///
/// The player's threads are known by their names. Any thread.
class HeldTime final : public Implements<HeldTime, ITavloSourcePlayerTime>
{
public:
    void destroy() override {}

    /// So many pictures and so much sound come, and time waits for them; without end until it is told.
    void expect(int pictures, qint64 soundMicroseconds);

    /// Pictures are late by so much, all at once.
    void jump(qint64 microseconds);

    // The sink's.
    void takePicture();
    void takeSound(qint64 microseconds);

    // ITavloSourcePlayerTime
    qint64 now() override;
    void wait(std::condition_variable& changed, std::unique_lock<std::mutex>& lock, qint64 until) override;

private:
    /// What may be missing in the end: a coder's delay, a block that is not full. Too little to be late.
    static constexpr qint64 soundSlack = 60'000;

    enum Line
    {
        Pictures,
        Sound,
        Other
    };

    struct Waiting
    {
        Line line;
        qint64 until;
        std::condition_variable* changed;
    };

    static Line ownLine();
    bool isExpected(Line line) const;
    void advance();

    std::mutex _lock;

    // guarded by _lock
    qint64 _now = 5'000'000'000;
    qint64 _pictures = INT64_MAX; ///< to come
    qint64 _sound = INT64_MAX;    ///< microseconds to come
    std::list<Waiting> _waiting;
};

} // namespace tavlo::test
