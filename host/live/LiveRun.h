#pragma once

#include "live/ShowEngine.h"

#include <QSize>
#include <QStringList>

#include <functional>
#include <memory>

class QWindow;

namespace tavlo::host {

class StopSignals;

/// How a show is put on.
struct LiveOptions
{
    bool window = false;     ///< the multi-view on the screen
    QSize canvas{1280, 720}; ///< of the multi-view
    QString snapshot;        ///< file for its picture at the end
    bool multiView = false;  ///< without a window it is drawn in every frame all the same
    bool quiet = false;      ///< no status lines
    bool json = false;       ///< status lines for programs, on standard output
};

/// Runs a show from its start to its end, the event loop of the main thread alive meanwhile.
class LiveRun
{
public:
    LiveRun(Show show, LiveOptions options);
    ~LiveRun();

    /// Called a few times a second while the show waits or rolls; ends it when it returns false. Before `run`.
    std::function<bool(ShowEngine::Phase, const LiveFigures&)> onTick;

    ShowEngine& engine() { return _engine; }

    /// Makes the engine, opens, rolls and ends. \return an ExitStatus: Done also when something was lost
    int run();

    /// After `run`: the figures of the show's end.
    const LiveFigures& figures() const { return _figures; }

private:
    void openWindow(tagTavloWindowInfo& info);
    void follow(const StopSignals& stop);
    void close();

    const double _framesPerSecond;
    const LiveOptions _options;
    ShowEngine _engine;
    std::unique_ptr<QWindow> _window;
    LiveFigures _figures;
};

/// Prints what a run has made and what it has lost. \return LostSomething or Done
/// \param files  that were recorded
int printSummary(const LiveFigures& figures, double framesPerSecond, const QStringList& files, bool json);

} // namespace tavlo::host
