#pragma once

#include "live/LiveFigures.h"
#include "show/Show.h"

#include <tavlo/InterfacePtr.h>
#include <tavlo/TavloPresentEngine.h>

#include <atomic>
#include <map>
#include <mutex>
#include <set>

namespace tavlo::host {

/// The engine with a show on it. Sources play as soon as they are open; the show begins, and with it its clock and its
/// outputs, once each of them has a picture. A cue is posted before the frame of its time, so that it stands exactly
/// there.
class ShowEngine final : public TavloPresentEngine
{
public:
    enum class Phase
    {
        Idle,    ///< nothing is open
        Waiting, ///< for pictures
        Rolling,
        Over,
        Gone, ///< the engine's world has been destroyed
    };

    explicit ShowEngine(Show show);
    ~ShowEngine() override;

    /// Makes the engine's world and opens what the show names. Owner's thread, after `start`.
    void open(const tagTavloWindowInfo& window);

    /// Ends the show after the frame that is running. Any thread.
    void endShow() { _endAsked = true; }

    /// Ends what is open; the phase becomes Gone.
    void close();

    /// Any thread.
    Phase phase() const { return _phase; }
    bool failed() const { return _failed; }

    /// As it was measured last: once a second, and at the end. Any thread.
    LiveFigures figures() const;

    /// Picture of the multi-view, saved as the show ends. Before `start`.
    void setSnapshot(const QString& path) { _snapshot = path; }

    /// Keeps how long each step of the show takes, milliseconds, as far as the vector's capacity goes. Lent; before
    /// `start`, to be read when the show is over.
    void keepStepTimes(std::vector<float>& times) { _stepTimes = &times; }

    ITavloPresentThreadSink* hostSink();

protected:
    bool onThreadStep(const quint64& time, const quint64& frameId, const quint64& clockMicroseconds) override;

private:
    class Sink;

    void hear(qulonglong event, const QVariant& result, const QVariant& a1, const QVariant& a2);
    void openSources();
    bool arePicturesThere();
    double showTime() const;
    void begin();
    void postCues(double until);
    void end();
    void measure();

    const Show _show;
    QString _snapshot;
    std::vector<float>* _stepTimes = nullptr;
    const std::unique_ptr<Sink> _sink;

    // any thread
    std::atomic<Phase> _phase = Phase::Idle;
    std::atomic<bool> _endAsked = false;
    std::atomic<bool> _failed = false;

    // frame thread
    std::map<int, CountedPtr<ITavloPresentSource>> _playing;
    std::set<int> _seen;        ///< channels that had a picture or sound
    std::map<int, bool> _ended; ///< lists that play once, and whether they have ended
    quint64 _waited = 0;        ///< frames
    quint64 _frames = 0;        ///< of the show
    quint64 _missedBefore = 0;
    std::size_t _nextCue = 0;
    quint64 _takes = 0; ///< of the rotation

    mutable std::mutex _lock;
    LiveFigures _figures; // guarded by _lock
};

} // namespace tavlo::host
