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

protected:
    void run() override;

private:
    TavloPresentThread& _owner; // fixed after construction
    QThread* _home = nullptr;   // written before the thread starts
};
