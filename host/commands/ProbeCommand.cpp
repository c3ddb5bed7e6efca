#include "Console.h"
#include "commands/Commands.h"
#include "live/LiveRun.h"
#include "show/SwitchShow.h"

#include <QElapsedTimer>
#include <QJsonObject>

namespace tavlo::host {

int probeCommand(const QStringList& arguments)
{
    QStringList names = arguments;
    const bool json = names.removeAll(QStringLiteral("--json")) > 0;
    if (names.size() != 1 || names.first().startsWith(u'-')) {
        err() << probeUsage << Qt::endl;
        return WrongUse;
    }
    Show show;
    QString error;
    ShowSource& source = show.sources.emplace_back();
    source.info = sourceNamed(names.first(), error);
    if (!error.isEmpty()) {
        err() << error << Qt::endl;
        return WrongUse;
    }
    source.info.playbackMode = 0;
    show.engine.channelCount = 1;
    show.engine.videoInfo.width = show.engine.videoInfo.sourceWidth = 320;
    show.engine.videoInfo.height = show.engine.videoInfo.sourceHeight = 180;
    show.engine.pgmAudioDevName = show.engine.pvmAudioDevName = QStringLiteral("None");
    show.seconds = 1; // for what comes late of a stream
    LiveOptions options;
    options.quiet = true;
    LiveRun run(std::move(show), options);
    if (const int status = run.run(); status != Done) {
        err() << "the engine could not start; what it said stands in the log (TAVLO_LOG=1 shows it)" << Qt::endl;
        return status;
    }
    const LiveFigures& figures = run.figures();
    const bool isThere = !figures.sources.empty() && (figures.sources.front().statistics.width != 0 ||
                                                      figures.sources.front().statistics.audioSampleRate != 0);
    if (!isThere) {
        err() << withoutSecrets(names.first()) << ": nothing in it can be played" << Qt::endl;
        return CouldNotStart;
    }
    const SourceFigures& found = figures.sources.front();
    const QJsonObject row{
        {QStringLiteral("name"), found.statistics.name},
        {QStringLiteral("width"), static_cast<int>(found.statistics.width)},
        {QStringLiteral("height"), static_cast<int>(found.statistics.height)},
        {QStringLiteral("fps"), std::round(static_cast<double>(found.statistics.frameRate) * 100) / 100},
        {QStringLiteral("sampleRate"), static_cast<int>(found.statistics.audioSampleRate)},
        {QStringLiteral("milliseconds"), found.length}};
    if (json) {
        printRows({row}, {}, true);
        return Done;
    }
    out() << found.statistics.name << ": ";
    if (found.statistics.width != 0)
        out() << found.statistics.width << 'x' << found.statistics.height << ", "
              << QString::number(static_cast<double>(found.statistics.frameRate), 'g', 4) << " pictures a second, ";
    if (found.statistics.audioSampleRate != 0)
        out() << "sound at " << found.statistics.audioSampleRate << " Hz, ";
    out() << QString::number(static_cast<double>(found.length) / 1000, 'f', 3) << " s" << Qt::endl;
    return Done;
}

} // namespace tavlo::host
