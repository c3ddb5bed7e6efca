#include "live/StopSignals.h"

#include "Console.h"

#include <array>
#include <atomic>
#include <csignal>
#include <ctime>
#include <unistd.h>

namespace tavlo::host {
namespace {

constexpr std::array stopSignals{SIGINT, SIGTERM, SIGHUP};
constexpr qint64 impatience = 2000; // milliseconds

/// When it was asked last, milliseconds of the monotonic clock; 0: never.
std::atomic<qint64> lastAsked = 0;
static_assert(std::atomic<qint64>::is_always_lock_free);

/// In a signal handler: nothing but what is safe there.
void onSignal(int)
{
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    const qint64 now = static_cast<qint64>(time.tv_sec) * 1000 + time.tv_nsec / 1'000'000;
    const qint64 before = lastAsked.exchange(now);
    if (before != 0 && now - before <= impatience)
        _exit(LostSomething);
}

} // namespace

StopSignals::StopSignals()
{
    lastAsked = 0;
    for (const int signal : stopSignals)
        std::signal(signal, onSignal);
}

StopSignals::~StopSignals()
{
    for (const int signal : stopSignals)
        std::signal(signal, SIG_DFL);
}

bool StopSignals::asked() const { return lastAsked != 0; }

} // namespace tavlo::host
