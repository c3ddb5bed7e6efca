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

    /// Sleeps for 50 microseconds and some that the scheduler takes; a thread that spun instead would keep others off
    /// its core for milliseconds of each frame. Worker's thread.
    static void nap();

protected:
    void run() override;

private:
    TavloPresentThread& _owner; // fixed after construction
    QThread* _home = nullptr;   // written before the thread starts
    std::atomic<bool> _ended = true;
};
