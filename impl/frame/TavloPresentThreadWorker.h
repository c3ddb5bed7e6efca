#pragma once

#include <QThread>

#include <atomic>

class TavloPresentThread;

/// The thread that runs the frame loop of one TavloPresentThread.
class TavloPresentThreadWorker : public QThread
{
public:
    explicit TavloPresentThreadWorker(TavloPresentThread& owner);

    /// Before each start: the thread to which the owner object returns when the loop has ended. Owner's thread.
    void startFor(QThread* home);

    /// Whether the loop has ended and the owner object is back. What the loop wrote is seen by whoever sees that.
    bool hasEnded() const { return _ended.load(std::memory_order_acquire); }

    /// For a turn of the loop that has no time to sleep. A thread of normal priority goes on at once: the scheduler
    /// shares its core. A real-time one would keep all others off the core while it spins, so it naps for a moment
    /// that costs no precision: real-time sleepers wake to the microsecond. Worker's thread.
    void relax();

protected:
    void run() override;

private:
    TavloPresentThread& _owner; // fixed after construction
    QThread* _home = nullptr;   // written before the thread starts
    bool _realTime = false;     // worker's thread
    std::atomic<bool> _ended = true;
};
