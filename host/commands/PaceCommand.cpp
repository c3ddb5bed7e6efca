#include "Console.h"
#include "commands/Commands.h"

#include <tavlo/InterfacePtr.h>
#include <tavlo/TavloPresentThread.h>

#include <QThread>

namespace tavlo::host {
namespace {

/// Counts the events that come back.
class CountingSink final : public Implements<CountingSink, ITavloPresentThreadSink>
{
public:
    void onEvent(qulonglong, QVariant, QVariant, QVariant, QVariant, QVariant) override { ++count; }
    int count = 0; // frame thread; read after stop
};

} // namespace

int paceCommand(const QStringList& arguments)
{
    const float fps = arguments.value(0, QStringLiteral("25")).toFloat();
    const int seconds = arguments.value(1, QStringLiteral("3")).toInt();
    if (!(fps > 0.0F && fps <= 1000.0F) || seconds < 1 || arguments.size() > 2) {
        err() << paceUsage << Qt::endl;
        return WrongUse;
    }
    TavloPresentThread engine;
    CountingSink sink;
    engine.setFps(fps);
    engine.start(&sink, TavloPresentThreadModeThread);
    int posted = 0;
    for (int second = 1; second <= seconds; ++second) {
        QThread::sleep(1);
        for (int i = 0; i < 1000; ++i, ++posted)
            engine.postEvent(0, i);
        out() << "second " << second << ": " << QString::number(engine.getCalFps(), 'f', 3) << " frames a second, "
              << engine.missedFrames() << " missed" << Qt::endl;
    }
    engine.stop();
    out() << posted << " events posted, " << sink.count << " reported" << Qt::endl;
    return posted == sink.count ? Done : LostSomething;
}

} // namespace tavlo::host
