#include "live/LiveRun.h"

#include "Console.h"
#include "live/StopSignals.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QThread>
#include <QThreadPool>
#include <QWindow>

#include <unistd.h>

namespace tavlo::host {
namespace {

constexpr unsigned long tick = 50; // milliseconds

/// The multi-view's window, whose pixels the engine draws.
class ViewWindow final : public QWindow
{
public:
    std::function<void()> onPlaced;
    std::function<void()> onClosed;

protected:
    void resizeEvent(QResizeEvent*) override
    {
        if (onPlaced)
            onPlaced();
    }
    bool event(QEvent* event) override
    {
        if (event->type() == QEvent::Close && onClosed)
            onClosed();
        return QWindow::event(event);
    }
};

tagTavloWindowInfo placementOf(const QWindow& window)
{
    tagTavloWindowInfo info;
    const double ratio = window.devicePixelRatio();
    info.rect = QRect(0, 0, static_cast<int>(window.width() * ratio), static_cast<int>(window.height() * ratio));
    info.window = static_cast<quintptr>(window.winId());
    return info;
}

/// One line that is written over on a terminal, a line a second into a pipe.
class StatusOutput
{
public:
    explicit StatusOutput(bool quiet) : _quiet(quiet), _isTerminal(isatty(STDERR_FILENO) == 1) {}
    ~StatusOutput()
    {
        if (_isTerminal && _width > 0)
            err() << Qt::endl;
    }
    StatusOutput(const StatusOutput&) = delete;
    StatusOutput& operator=(const StatusOutput&) = delete;

    void show(const QString& line)
    {
        if (_quiet || line == _last)
            return;
        _last = line;
        if (_isTerminal)
            err() << '\r' << line.leftJustified(_width) << Qt::flush;
        else
            err() << line << Qt::endl;
        _width = line.size();
    }

private:
    const bool _quiet, _isTerminal;
    QString _last;
    qsizetype _width = 0;
};

} // namespace

LiveRun::LiveRun(Show show, LiveOptions options)
    : _framesPerSecond(show.framesPerSecond()), _options(std::move(options)), _engine(std::move(show))
{
    _engine.setSnapshot(_options.snapshot);
}

LiveRun::~LiveRun() = default;

int LiveRun::run()
{
    tagTavloWindowInfo window;
    window.rect = QRect(QPoint(0, 0), _options.canvas);
    if (_options.window)
        openWindow(window);
    _engine.start(_engine.hostSink(), TavloPresentThreadModeThread);
    _engine.open(window);
    follow();
    close();
    return _engine.failed() ? CouldNotStart : Done;
}

void LiveRun::openWindow(tagTavloWindowInfo& info)
{
    auto window = std::make_unique<ViewWindow>();
    window->setTitle(QStringLiteral("Tavlo"));
    window->resize(_options.canvas);
    window->show();
    QCoreApplication::processEvents();
    info = placementOf(*window);
    window->onPlaced = [this, view = window.get()] {
        _engine.postEvent(TavloEventUpdateWindow, 0, QVariant::fromValue(placementOf(*view)));
    };
    window->onClosed = [this] { _engine.endShow(); };
    _window = std::move(window);
}

void LiveRun::follow()
{
    const StopSignals signals_;
    StatusOutput status(_options.quiet);
    while (_engine.phase() != ShowEngine::Phase::Over && !_engine.failed()) {
        QCoreApplication::processEvents();
        QThread::msleep(tick);
        const LiveFigures figures = _engine.figures();
        if (signals_.asked() || (onTick && !onTick(_engine.phase(), figures)))
            _engine.endShow();
        if (_engine.phase() == ShowEngine::Phase::Rolling && figures.frames > 0)
            status.show(statusLine(figures, _framesPerSecond));
    }
    _figures = _engine.figures();
}

/// What is recorded is written to its end before this returns.
void LiveRun::close()
{
    _engine.close();
    while (_engine.phase() != ShowEngine::Phase::Gone) {
        QCoreApplication::processEvents();
        QThread::msleep(1);
    }
    _engine.stop();
    QThreadPool::globalInstance()->waitForDone(); // saved pictures
}

int printSummary(const LiveFigures& figures)
{
    const QList<Loss> losses = lossesOf(figures);
    out() << figures.frames << " frames, " << figures.output.codedPictures << " coded so far";
    if (losses.isEmpty())
        out() << ", nothing lost";
    out() << '\n';
    for (const Loss& loss : losses)
        out() << "lost: " << loss.cause << ", " << loss.culprit << ": " << loss.count << '\n';
    out().flush();
    return losses.isEmpty() ? Done : LostSomething;
}

} // namespace tavlo::host
