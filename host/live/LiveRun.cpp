#include "live/LiveRun.h"

#include "Console.h"
#include "live/StopSignals.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QJsonArray>
#include <QThread>
#include <QThreadPool>
#include <QWindow>

#include <algorithm>
#include <sys/ioctl.h>
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

/// The width of the terminal behind standard error, characters.
qsizetype terminalWidth()
{
    winsize size{};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1 ? size.ws_col : 80;
}

/// One line that is written over on a terminal, a line a second into a pipe.
class StatusOutput
{
public:
    StatusOutput(bool quiet, bool json) : _quiet(quiet), _json(json), _isTerminal(isatty(STDERR_FILENO) == 1) {}
    ~StatusOutput()
    {
        if (_isTerminal && _width > 0)
            err() << Qt::endl;
    }
    StatusOutput(const StatusOutput&) = delete;
    StatusOutput& operator=(const StatusOutput&) = delete;

    void show(const LiveFigures& figures, double framesPerSecond)
    {
        if (_quiet || (figures.frames == _frames && figures.missedFrames == _missed))
            return;
        _frames = figures.frames;
        _missed = figures.missedFrames;
        if (_json)
            printLine(statusObject(figures, framesPerSecond));
        else if (_isTerminal)
            overwrite(statusLine(figures, framesPerSecond));
        else
            err() << statusLine(figures, framesPerSecond) << Qt::endl;
    }

private:
    void overwrite(const QString& line)
    {
        const QString shown = line.left(terminalWidth() - 1); // a longer one would leave its first rows behind
        err() << '\r' << shown.leftJustified(std::min(_width, terminalWidth() - 1)) << Qt::flush;
        _width = shown.size();
    }

    const bool _quiet, _json, _isTerminal;
    quint64 _frames = 0, _missed = 0;
    qsizetype _width = 0;
};

} // namespace

LiveRun::LiveRun(Show show, LiveOptions options)
    : _framesPerSecond(show.framesPerSecond()), _options(std::move(options)), _engine(std::move(show))
{
    _engine.setSnapshot(_options.snapshot);
    if (_options.multiView)
        _engine.drawMultiView();
}

LiveRun::~LiveRun() = default;

int LiveRun::run()
{
    const StopSignals stop; // until all is written
    tagTavloWindowInfo window;
    window.rect = QRect(QPoint(0, 0), _options.canvas);
    if (_options.window)
        openWindow(window);
    _engine.start(_engine.hostSink(), TavloPresentThreadModeThread);
    _engine.open(window);
    follow(stop);
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

void LiveRun::follow(const StopSignals& stop)
{
    StatusOutput status(_options.quiet, _options.json);
    while (_engine.phase() != ShowEngine::Phase::Over && !_engine.failed()) {
        QCoreApplication::processEvents();
        QThread::msleep(tick);
        const LiveFigures figures = _engine.figures();
        if (stop.asked() || (onTick && !onTick(_engine.phase(), figures)))
            _engine.endShow();
        if (_engine.phase() == ShowEngine::Phase::Rolling && figures.frames > 0)
            status.show(figures, _framesPerSecond);
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

int printSummary(const LiveFigures& figures, double framesPerSecond, const QStringList& files, bool json)
{
    const QList<Loss> losses = lossesOf(figures);
    if (json) {
        QJsonObject summary = statusObject(figures, framesPerSecond);
        summary[QStringLiteral("files")] = QJsonArray::fromStringList(files);
        summary[QStringLiteral("over")] = true;
        printLine(summary);
        return losses.isEmpty() ? Done : LostSomething;
    }
    out() << figures.frames << " frames" << (losses.isEmpty() ? ", nothing lost\n" : "\n");
    for (const OutputFigures& output : figures.outputs) {
        const tagTavloOutputStatistics& s = output.statistics;
        out() << "output " << output.index << ": " << s.codedPictures << " pictures coded";
        if (s.codedPictures > 0 && s.recordWritten > 0)
            out() << ", " << s.recordWritten << " recorded";
        if (s.codedPictures > 0 && s.netWritten > 0)
            out() << ", " << s.netWritten << " sent";
        out() << '\n';
    }
    for (const QString& file : files)
        out() << "recorded: " << file << '\n';
    for (const Loss& loss : losses)
        out() << "lost: " << loss.cause << ", " << loss.culprit << ": " << loss.count << '\n';
    out().flush();
    return losses.isEmpty() ? Done : LostSomething;
}

} // namespace tavlo::host
