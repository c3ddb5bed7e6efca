#include "Commands.h"

#include <tavlo/InterfacePtr.h>
#include <tavlo/TavloPresentThread.h>
#include <tavlo/TavloPresentUtil.h>

#include <QFile>
#include <QTextStream>
#include <QThread>

#include <algorithm>

namespace tavlo::host {

namespace {

QTextStream& out()
{
    static QTextStream stream(stdout);
    return stream;
}

QTextStream& err()
{
    static QTextStream stream(stderr);
    return stream;
}

bool checkFile(const QString& path, const QString& recordType)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        err() << path << ": " << file.errorString() << Qt::endl;
        return false;
    }
    const QList<TavloXmlFinding> findings = TavloPresentUtil::checkXml(QString::fromUtf8(file.readAll()), recordType);
    for (const TavloXmlFinding& finding : findings) {
        out() << path << ':' << finding.line << ':' << finding.column << ": "
              << (finding.field.isEmpty() ? QString() : finding.field + QStringLiteral(": ")) << finding.text
              << Qt::endl;
    }
    if (findings.isEmpty())
        out() << path << ": good as a " << recordType << Qt::endl;
    return findings.isEmpty();
}

/// Counts the events that come back.
class CountingSink final : public Implements<CountingSink, ITavloPresentThreadSink>
{
public:
    void onEvent(qulonglong, QVariant, QVariant, QVariant, QVariant, QVariant) override { ++count; }
    int count = 0; // frame thread; read after stop
};

} // namespace

int checkCommand(const QStringList& arguments)
{
    if (arguments.size() < 2) {
        err() << "usage: tavlo check RECORD FILE..." << Qt::endl;
        return 2;
    }
    bool good = true;
    for (const QString& path : arguments.mid(1))
        good = checkFile(path, arguments.first()) && good;
    return good ? 0 : 1;
}

int recordsCommand(const QStringList&)
{
    for (const QString& type : TavloPresentUtil::recordTypes())
        out() << type << Qt::endl;
    return 0;
}

int paceCommand(const QStringList& arguments)
{
    const float fps = arguments.value(0, QStringLiteral("25")).toFloat();
    const int seconds = arguments.value(1, QStringLiteral("3")).toInt();
    if (!(fps > 0.0F) || seconds < 1) {
        err() << "usage: tavlo pace [FRAMES-A-SECOND [SECONDS]]" << Qt::endl;
        return 2;
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
        out() << "second " << second << ": " << QString::number(engine.getCalFps(), 'f', 3) << " frames a second"
              << Qt::endl;
    }
    engine.stop();
    out() << posted << " events posted, " << sink.count << " reported" << Qt::endl;
    return posted == sink.count ? 0 : 1;
}

} // namespace tavlo::host
