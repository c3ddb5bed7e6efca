#include <tavlo/TavloPresentThread.h>

#include "base/Clock.h"
#include "frame/TavloPresentThreadWorker.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDebug>
#include <QEventLoop>

namespace {

constexpr quint64 secondMicroseconds = 1'000'000;
constexpr quint64 napMicroseconds = 2'000; ///< this close to the next frame the loop only naps
constexpr float fallbackFps = 64.0F;

quint64 now() { return static_cast<quint64>(tavlo::monotonicMicroseconds()); }

} // namespace

TavloPresentThread::TavloPresentThread() : _thread(std::make_unique<TavloPresentThreadWorker>(*this))
{
    // Queued, an event waits on the thread on which this object lives: while it runs, the frame thread.
    connect(this, &TavloPresentThread::sig_postEvent, this, &TavloPresentThread::slot_postEvent, Qt::QueuedConnection);
}

TavloPresentThread::~TavloPresentThread() = default;

void TavloPresentThread::start(ITavloPresentThreadSink* sink, TavloPresentThreadMode mode)
{
    if (_running || _thread->isRunning())
        return;
    _mode = mode;
    _sink = sink;
    _started = false;
    _running = true;
    if (mode != TavloPresentThreadModeThread) {
        onThreadBegin();
        beginRun();
        stepFrame();
        _started = true;
        return;
    }
    _thread->startFor(thread());
    moveToThread(_thread.get());
    _thread->start(QThread::InheritPriority);
    while (!_started) {
        QCoreApplication::processEvents();
        QThread::yieldCurrentThread();
    }
}

void TavloPresentThread::stop()
{
    if (!_running)
        return;
    if (QThread::currentThread() == _thread.get()) {
        qDebug() << "TavloPresentThread::stop: not from the frame thread";
        return;
    }
    _running = false;
    if (_mode != TavloPresentThreadModeThread) {
        drainEvents();
        onThreadEnd();
        return;
    }
    while (!_thread->hasEnded()) {
        QCoreApplication::processEvents();
        QThread::yieldCurrentThread();
    }
    while (!_thread->wait(10))
        qDebug() << "wait thread timeout: TavloPresentThread::stop";
}

void TavloPresentThread::doFrameStep()
{
    if (_running && _mode == TavloPresentThreadModeStep)
        stepFrame();
}

void TavloPresentThread::setFps(float fps)
{
    if (!(fps > 0.0F))
        fps = fallbackFps;
    _frameInterval = static_cast<quint64>(1000000.0F / fps);
    _currentFps = 0.0;
}

// The order of the two steps here and of the two tests that end the loop leave no gap: an event that saw the object
// run is counted before the loop can find nothing pending.
void TavloPresentThread::postEvent(qulonglong event, QVariant a1, QVariant a2, QVariant a3, QVariant a4)
{
    ++_pendingEvents;
    if (_running)
        Q_EMIT sig_postEvent(event, a1, a2, a3, a4);
    else
        --_pendingEvents;
}

quint64 TavloPresentThread::frameInterval() const { return _frameInterval; }

quint64 TavloPresentThread::missedFrames() const { return _missedFrames; }

double TavloPresentThread::getCurrentFps() const { return _currentFps; }

double TavloPresentThread::getCalFps() { return _rate.samplerateCurrent(true) * 1000.0; }

ITavloPresentThreadSink* TavloPresentThread::sink() const { return _sink; }

void TavloPresentThread::onThreadBegin() { qDebug() << "begin frame thread :" << QThread::currentThreadId(); }

bool TavloPresentThread::onThreadStep(const quint64&, const quint64&, const quint64&) { return true; }

void TavloPresentThread::onThreadEnd() { qDebug() << "end frame thread id :" << QThread::currentThreadId(); }

QVariant TavloPresentThread::onThreadEvent(qulonglong, QVariant&, QVariant&, QVariant&, QVariant&)
{
    return QVariant(0);
}

void TavloPresentThread::onThreadRun()
{
    qDebug() << "enter onThreadBegin";
    onThreadBegin();
    qDebug() << "exit onThreadBegin";

    beginRun();
    quint64 lastFrame = now();
    quint64 secondStart = lastFrame;
    int framesThisSecond = 0;
    QEventLoop eventLoop;
    do {
        eventLoop.processEvents();
        const quint64 interval = _frameInterval;
        const quint64 elapsed = now() - lastFrame;
        if (elapsed >= interval) {
            // Up to half an interval the pace makes up for a late frame, so that the rate holds over hours. After a
            // later one it goes on from here: no frames are made up for.
            const quint64 late = elapsed - interval;
            if (late * 2 < interval) {
                lastFrame += interval;
            } else {
                lastFrame = now();
                if (interval > 0)
                    _missedFrames += (late * 2 + interval) / (interval * 2);
            }
            if (lastFrame - secondStart > secondMicroseconds) {
                _currentFps = framesThisSecond;
                framesThisSecond = 0;
                secondStart = lastFrame;
            } else {
                ++framesThisSecond;
            }
            stepFrame();
            _started = true;
            _rate.Deliver(1);
        }
        if (elapsed + napMicroseconds < interval)
            QThread::msleep(1);
        else
            TavloPresentThreadWorker::nap();
    } while (_running || _pendingEvents != 0);

    qDebug() << "enter onThreadEnd";
    onThreadEnd();
    qDebug() << "exit onThreadEnd";
}

void TavloPresentThread::slot_postEvent(qulonglong event, QVariant a1, QVariant a2, QVariant a3, QVariant a4)
{
    ++_eventDepth;
    const QVariant result = onThreadEvent(event, a1, a2, a3, a4);
    if (ITavloPresentThreadSink* const host = _sink)
        host->onEvent(event, result, a1, a2, a3, a4);
    --_eventDepth;
    --_pendingEvents;
}

void TavloPresentThread::beginRun()
{
    _currentFps = 0.0;
    _missedFrames = 0;
    _frameId = 0;
}

void TavloPresentThread::stepFrame()
{
    const auto time = quint64{static_cast<quint32>(QDateTime::currentSecsSinceEpoch())};
    const quint64 frameId = _frameId++;
    const quint64 clockMicroseconds = tavlo::millisecondClockMicroseconds();
    onThreadStep(time, frameId, clockMicroseconds);
}

// Without a loop of its own the object takes its events out of the caller's queue. A poster on another thread may
// stand between counting its event and queueing it.
void TavloPresentThread::drainEvents()
{
    while (_pendingEvents > _eventDepth) {
        QCoreApplication::sendPostedEvents(this, QEvent::MetaCall);
        QThread::yieldCurrentThread();
    }
}
