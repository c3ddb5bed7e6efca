#pragma once

#include <QThread>

class TavloPresentThread;

/// The thread that runs the frame loop of one TavloPresentThread.
class TavloPresentThreadWorker : public QThread
{
public:
    explicit TavloPresentThreadWorker(TavloPresentThread& owner);

    /// Before each start: the thread to which the owner object returns when the loop has ended. Owner's thread.
    void startFor(QThread* home) { _home = home; }

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
};
