#include "TavloCommonModule/player/LooseThreads.h"

#include <pthread.h>

#include <QDebug>

#include <chrono>
#include <thread>
#include <utility>

namespace tavlo {
namespace {

constexpr auto patience = std::chrono::milliseconds(1500); ///< at the end of the process, and before it is told
constexpr auto glance = std::chrono::milliseconds(50);     ///< at whether who waits is to end

using Ended = std::shared_future<void>;

/// Waits for all of them. False when whoever waits was told to end meanwhile.
bool awaitAll(const std::vector<Ended>& threads, const std::atomic<bool>& ends, const QString& place)
{
    const auto tellAt = std::chrono::steady_clock::now() + patience;
    bool isTold = false;
    for (const Ended& thread : threads) {
        while (thread.wait_for(glance) == std::future_status::timeout) {
            if (ends)
                return false;
            if (!isTold && std::chrono::steady_clock::now() > tellAt) {
                isTold = true;
                qDebug().noquote() << "player: waiting for what doesn't let go of" << place;
            }
        }
    }
    return !ends;
}

} // namespace

LooseThreads& LooseThreads::instance()
{
    static LooseThreads threads;
    return threads;
}

/// The libraries that the threads are in go next. One that hangs in the system is left to itself.
LooseThreads::~LooseThreads()
{
    const std::scoped_lock lock(_lock);
    const auto deadline = std::chrono::steady_clock::now() + patience;
    for (const Running& running : _running) {
        if (*running.ends)
            running.ended.wait_until(deadline);
    }
}

void LooseThreads::start(const char* name, const QString& place, Flag ends, std::function<void()> work)
{
    const std::scoped_lock lock(_lock);
    forgetEnded();
    std::vector<Ended> before;
    for (const Running& running : _running) {
        if (!place.isEmpty() && running.place == place && *running.ends)
            before.push_back(running.ended);
    }
    // Whose future is kept keeps the task, and what that holds: not those before it, or a chain would grow.
    std::packaged_task<void()> task([name, place, ends, before = std::move(before), work = std::move(work)]() mutable {
        pthread_setname_np(pthread_self(), name);
        if (awaitAll(std::exchange(before, {}), *ends, place))
            work();
    });
    _running.push_back({task.get_future().share(), place, std::move(ends)});
    std::thread(std::move(task)).detach();
}

void LooseThreads::forgetEnded()
{
    std::erase_if(_running, [](const Running& running) {
        return running.ended.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    });
}

} // namespace tavlo
