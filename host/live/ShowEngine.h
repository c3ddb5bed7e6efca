#pragma once

#include "live/LiveFigures.h"
#include "show/Show.h"

#include <tavlo/InterfacePtr.h>
#include <tavlo/TavloPresentEngine.h>

#include <atomic>
#include <chrono>
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
        Ending, ///< the show is over, its outputs write their ends
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

    /// As it was measured last: once a second, and when the outputs have ended. Any thread.
    LiveFigures figures() const;

    /// Picture of the multi-view, saved as the show ends. Before `start`.
    void setSnapshot(const QString& path) { _snapshot = path; }

    /// Has the multi-view drawn in every frame, though nobody sees it. Before `start`.
    void drawMultiView() { _drawsMultiView = true; }

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
    void awaitOutputs();
    void measure();
    std::vector<OutputFigures> measureOutputs();
    void askForMultiView();

    const Show _show;
    const std::vector<OutputFigures> _outputs; ///< those that the show uses, without figures
    QString _snapshot;
    bool _drawsMultiView = false;
    std::vector<float>* _stepTimes = nullptr;
    const std::unique_ptr<Sink> _sink;

    // any thread
    std::atomic<Phase> _phase = Phase::Idle;
    std::atomic<bool> _endAsked = false;
    std::atomic<bool> _failed = false;

    // frame thread
    std::map<int, CountedPtr<ITavloPresentSource>> _playing;
    std::set<int> _seen;                          ///< channels that had a picture or sound
    std::map<int, bool> _ended;                   ///< lists that play once, and whether they have ended
    std::chrono::steady_clock::time_point _since; ///< when the phase began
    quint64 _frames = 0;                          ///< of the show
    quint64 _missedBefore = 0;
    std::size_t _nextCue = 0;
    quint64 _takes = 0; ///< of the rotation

    mutable std::mutex _lock;
    LiveFigures _figures; // guarded by _lock
};

} // namespace tavlo::host
