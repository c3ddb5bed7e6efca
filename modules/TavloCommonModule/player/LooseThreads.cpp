#include "TavloCommonModule/player/LooseThreads.h"

#include <pthread.h>

#include <QDebug>

#include <chrono>
#include <thread>

namespace tavlo {
namespace {

constexpr auto patience = std::chrono::milliseconds(1500); ///< at the end of the process, and before it is told

bool hasEnded(const std::shared_future<void>& thread)
{
    return thread.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
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
    std::vector<std::shared_future<void>> before;
    for (const Running& running : _running) {
        if (!place.isEmpty() && running.place == place && *running.ends)
            before.push_back(running.ended);
    }
    std::packaged_task<void()> task([name, place, before, work = std::move(work)] {
        pthread_setname_np(pthread_self(), name);
        for (const auto& thread : before) {
            if (thread.wait_for(patience) == std::future_status::timeout)
                qDebug().noquote() << "player: waiting for what doesn't let go of" << place;
            thread.wait();
        }
        work();
    });
    _running.push_back({task.get_future().share(), place, std::move(ends)});
    std::thread(std::move(task)).detach();
}

void LooseThreads::forgetEnded()
{
    std::erase_if(_running, [](const Running& running) { return hasEnded(running.ended); });
}

} // namespace tavlo
