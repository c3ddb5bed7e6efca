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
constexpr std::time_t impatience = 2; // seconds

std::atomic<std::time_t> firstAsked = 0;

/// In a signal handler: nothing but what is safe there.
void onSignal(int)
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    std::time_t never = 0;
    if (!firstAsked.compare_exchange_strong(never, now.tv_sec + 1) && now.tv_sec + 1 - never <= impatience)
        _exit(LostSomething);
    firstAsked = now.tv_sec + 1;
}

} // namespace

StopSignals::StopSignals()
{
    firstAsked = 0;
    for (const int signal : stopSignals)
        std::signal(signal, onSignal);
}

StopSignals::~StopSignals()
{
    for (const int signal : stopSignals)
        std::signal(signal, SIG_DFL);
}

bool StopSignals::asked() const { return firstAsked != 0; }

} // namespace tavlo::host
