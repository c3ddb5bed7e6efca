#pragma once

#include <tavlo/CBitrateCalculater.h>
#include <tavlo/Export.h>
#include <tavlo/ITavloPresentThreadSink.h>

#include <QObject>
#include <QVariant>

#include <atomic>
#include <memory>

class TavloPresentThreadWorker;

/// Where the frames of an engine run.
enum TavloPresentThreadMode : quint32
{
    TavloPresentThreadModeThread = 0, ///< on a thread of the engine's own, paced by the clock
    TavloPresentThreadModeStep = 1,   ///< on the caller's thread, one for each doFrameStep
};

/// Base of every engine: paces frames and carries posted events to the thread that runs them.
///
/// Between two frames every event that was posted runs on the frame thread, in the order in which its poster sent it,
/// so that handlers and frame steps need no locks among themselves. A QCoreApplication must exist.
class TAVLO_EXPORT TavloPresentThread : public QObject
{
    Q_OBJECT

public:
    TavloPresentThread();

    /// The thread must have been stopped.
    ~TavloPresentThread() override;

    TavloPresentThread(const TavloPresentThread&) = delete;
    TavloPresentThread& operator=(const TavloPresentThread&) = delete;

    /// Begins frames and returns once the first has stepped, the caller's event loop alive meanwhile. Owner's thread:
    /// the one this object lives on. Does nothing on a running object.
    ///
    /// \param sink  lent until `stop`; may be null
    virtual void start(ITavloPresentThreadSink* sink, TavloPresentThreadMode mode);

    /// Handles the events that are still pending, ends the frames and returns when both are done. Owner's thread.
    virtual void stop();

    /// One frame, in step mode. Owner's thread.
    virtual void doFrameStep();

    /// Frames a second from now on; what is not above zero becomes 64. Any thread.
    virtual void setFps(float fps);

    /// Queues an event for the frame thread. Any thread. Dropped without a word unless the object runs; what is
    /// accepted is handled and reported to the sink once.
    void postEvent(qulonglong event, QVariant a1 = {}, QVariant a2 = {}, QVariant a3 = {}, QVariant a4 = {});

    /// Wanted distance between two frames, microseconds; 0 steps without pause. Any thread.
    quint64 frameInterval() const;

    /// Frames of this run that were never stepped, because the one before took too long or the machine was busy; 0 in
    /// step mode. Any thread.
    quint64 missedFrames() const;

    /// Frames counted in the last full second, less the one on which the second ended; 0 in step mode. Any thread.
    double getCurrentFps() const;

    /// Frames a second, as measured over the last second. Any thread.
    double getCalFps();

    /// The sink given to `start`.
    ITavloPresentThreadSink* sink() const;

protected:
    /// Frame thread. Overrides call the base first.
    virtual void onThreadBegin();

    /// One frame. Frame thread. The result has no effect.
    ///
    /// \param time               seconds since the epoch, 32 bits
    /// \param frameId            0 for the first frame of a run
    /// \param clockMicroseconds  the millisecond clock as a signed 32 bit count, times 1000
    virtual bool onThreadStep(const quint64& time, const quint64& frameId, const quint64& clockMicroseconds);

    /// Frame thread. Overrides call the base last.
    virtual void onThreadEnd();

    /// One event. Frame thread. What it leaves in the arguments goes to the sink with its result.
    virtual QVariant onThreadEvent(qulonglong event, QVariant& a1, QVariant& a2, QVariant& a3, QVariant& a4);

    /// The frame loop; returns after `stop`. The worker's thread.
    virtual void onThreadRun();

Q_SIGNALS:
    void sig_postEvent(qulonglong event, QVariant a1, QVariant a2, QVariant a3, QVariant a4);

protected Q_SLOTS:
    void slot_postEvent(qulonglong event, QVariant a1, QVariant a2, QVariant a3, QVariant a4);

private:
    friend class TavloPresentThreadWorker;

    void beginRun();
    void stepFrame();
    void drainEvents();

    // fixed after construction
    std::unique_ptr<TavloPresentThreadWorker> _thread;

    // any thread
    std::atomic<bool> _running = false;          ///< from `start` until `stop`
    std::atomic<quint64> _frameInterval = 40000; ///< microseconds; 0 steps on every turn of the loop
    std::atomic<double> _currentFps = 0.0;
    std::atomic<ITavloPresentThreadSink*> _sink = nullptr;
    std::atomic<quint64> _missedFrames = 0;
    std::atomic<bool> _started = false;     ///< the first frame has stepped
    std::atomic<qint32> _pendingEvents = 0; ///< accepted and not yet reported
    std::atomic<TavloPresentThreadMode> _mode = TavloPresentThreadModeThread;

    // frame thread
    quint64 _frameId = 0;
    qint32 _eventDepth = 0; ///< handlers that are running now, one inside the other

    // any thread, locked inside
    CBitrateCalculater _rate;
};
