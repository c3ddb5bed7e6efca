#include "frame/TavloPresentThreadWorker.h"

#include "shared/RealTime.h"

#include <tavlo/TavloPresentThread.h>

#include <QDebug>

#include <cstring>
#include <mutex>
#include <sys/prctl.h>
#include <time.h>

namespace {

constexpr timespec napTime{0, 50'000};                // nanoseconds
constexpr unsigned long timerSlackNanoseconds = 1000; ///< a normal thread's sleeps are stretched by 50 times as much

// QThread's priorities have no effect under the normal Linux scheduler, so the time-critical one is asked for by name.
void becomeTimeCritical()
{
    const int error = tavlo::askForRealTime();
    if (error == 0)
        return;
    static std::once_flag told;
    std::call_once(told, [error] {
        qDebug() << "no real-time scheduling for the frame thread, frames may come late under load:"
                 << std::strerror(error);
    });
}

} // namespace

TavloPresentThreadWorker::TavloPresentThreadWorker(TavloPresentThread& owner) : _owner(owner)
{
    setObjectName(QStringLiteral("tavlo-frame"));
}

void TavloPresentThreadWorker::startFor(QThread* home)
{
    _home = home;
    _ended = false;
}

void TavloPresentThreadWorker::nap() { clock_nanosleep(CLOCK_MONOTONIC, 0, &napTime, nullptr); }

void TavloPresentThreadWorker::run()
{
    setPriority(QThread::TimeCriticalPriority);
    becomeTimeCritical();
    prctl(PR_SET_TIMERSLACK, timerSlackNanoseconds); // what has real-time priority has none
    _owner.onThreadRun();
    _owner.moveToThread(_home); // only the thread on which an object lives can send it away
    _ended.store(true, std::memory_order_release);
}
