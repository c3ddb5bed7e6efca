// The commands that put a show on: out of arguments, or out of a file.

#include "Console.h"
#include "commands/Commands.h"
#include "live/LiveRun.h"
#include "live/MadeFiles.h"
#include "show/CueArguments.h"
#include "show/ShowFile.h"
#include "show/SwitchShow.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cmath>

namespace tavlo::host {
namespace {

/// Reads arguments and keeps the first thing that is wrong with them.
class Arguments
{
public:
    explicit Arguments(const char* usage) : _usage(usage) {}

    void add(const char* name, const char* value = nullptr)
    {
        const QString option = QLatin1String(name);
        _parser.addOption(value ? QCommandLineOption(option, {}, QLatin1String(value)) : QCommandLineOption(option));
    }

    bool parse(const QStringList& arguments)
    {
        if (!_parser.parse(QStringList{QString()} + arguments))
            fail(_parser.errorText());
        return _error.isEmpty();
    }

    QStringList names() const { return _parser.positionalArguments(); }
    bool has(const char* name) const { return _parser.isSet(QLatin1String(name)); }
    QString text(const char* name) const { return _parser.value(QLatin1String(name)); }

    /// The option's number; `fallback` where it is not given.
    double number(const char* name, double fallback, double least, double most)
    {
        if (!has(name))
            return fallback;
        bool good = false;
        const double value = text(name).toDouble(&good);
        if (!good || !(value >= least && value <= most)) // no number is neither
            fail(QStringLiteral("--%1 %2: wants a number from %3 to %4")
                     .arg(QLatin1String(name), text(name))
                     .arg(least)
                     .arg(most));
        return value;
    }

    /// The option's size, as 1280x720.
    QSize size(const char* name, QSize fallback)
    {
        if (!has(name))
            return fallback;
        const QStringList parts = text(name).split(u'x');
        const QSize size(parts.value(0).toInt(), parts.value(1).toInt());
        if (parts.size() != 2 || size.width() < 16 || size.height() < 16 || size.width() > 16384 ||
            size.height() > 16384)
            fail(QStringLiteral("--%1 %2: wants a size such as 1280x720").arg(QLatin1String(name), text(name)));
        return size;
    }

    void fail(const QString& error)
    {
        if (_error.isEmpty())
            _error = error;
    }

    /// Tells what is wrong, if anything is.
    bool areGood() const
    {
        if (!_error.isEmpty())
            err() << _error << '\n' << _usage << Qt::endl;
        return _error.isEmpty();
    }

private:
    const char* const _usage;
    QCommandLineParser _parser;
    QString _error;
};

/// So many channels that the multi-view has a grid for them.
quint32 channelsFor(std::size_t sources)
{
    int rows = 1, columns = 1, count = static_cast<int>(sources);
    const auto hasGrid = [&] {
        TavloPresentUtil::prefetchGridNum(count, rows, columns);
        return rows * columns == count;
    };
    while (!hasGrid() && count < TavloMixedChannelLimit)
        ++count;
    return static_cast<quint32>(hasGrid() ? count : static_cast<int>(sources));
}

int putOn(Show show, const LiveOptions& options)
{
    const double fps = show.framesPerSecond();
    const MadeFiles files(show, options.snapshot);
    LiveRun run(std::move(show), options);
    const int status = run.run();
    if (status != Done) {
        err() << "the engine could not start; what it said stands in the log (TAVLO_LOG=1 shows it)" << Qt::endl;
        return status;
    }
    QStringList faults = faultsOf(run.figures(), fps);
    for (const SourceFigures& source : run.figures().sources) {
        if (!source.wasThere)
            faults.append(
                QStringLiteral("channel %1 (%2) plays nothing").arg(source.channel).arg(source.statistics.name));
    }
    if (!options.snapshot.isEmpty() && !files.hasPicture())
        faults.append(QStringLiteral("%1: the picture could not be written").arg(options.snapshot));
    for (const QString& fault : faults)
        err() << fault << Qt::endl;
    return std::max<int>(printSummary(run.figures(), fps, files.recordings(), options.json),
                         faults.isEmpty() ? Done : LostSomething);
}

/// The options that both commands have.
void addLiveOptions(Arguments& arguments)
{
    for (const char* name : {"seconds", "record", "canvas", "snapshot"})
        arguments.add(name, "value");
    for (const char* name : {"window", "quiet", "json"})
        arguments.add(name);
}

LiveOptions optionsOf(Arguments& arguments)
{
    LiveOptions options;
    options.window = arguments.has("window");
    options.snapshot = arguments.text("snapshot");
    options.canvas = arguments.size("canvas", options.canvas);
    options.quiet = arguments.has("quiet");
    options.json = arguments.has("json");
    if (const QFileInfo picture(options.snapshot); !options.snapshot.isEmpty() && !picture.absoluteDir().exists())
        arguments.fail(
            QStringLiteral("--snapshot %1: there is no folder %2").arg(options.snapshot, picture.absolutePath()));
    return options;
}

void addClips(const QStringList& clips, Arguments& arguments, Show& show)
{
    if (clips.isEmpty() || clips.size() > TavloMixedChannelLimit)
        arguments.fail(QStringLiteral("wants 1 to %1 clips, addresses or devices").arg(TavloMixedChannelLimit));
    for (const QString& clip : clips) {
        ShowSource& source = show.sources.emplace_back();
        QString error;
        source.channel = static_cast<int>(show.sources.size()) - 1;
        source.info = sourceNamed(clip, error);
        source.picture.miscParam.name = labelOf(clip);
        if (!error.isEmpty())
            arguments.fail(error);
    }
    show.engine.channelCount = channelsFor(show.sources.size());
}

Rotation rotationOf(Arguments& arguments, const Show& show)
{
    Rotation rotation;
    rotation.every = arguments.number("every", 5, 0.04, 1e6);
    rotation.channels = static_cast<int>(show.sources.size());
    rotation.effect.duration = static_cast<float>(arguments.number("take-time", 0.8, 0, 60));
    if (arguments.has("effect"))
        rotation.effect.effect = transitionNumber(arguments.text("effect"));
    if (rotation.effect.effect < 0)
        arguments.fail(QStringLiteral("--effect %1: there is no such transition; \"tavlo effects\" lists them")
                           .arg(arguments.text("effect")));
    return rotation;
}

/// Where the recording and the stream go.
void addOutputs(Arguments& arguments, Show& show)
{
    QString error;
    if (arguments.has("record") && !recordTo(arguments.text("record"), show, error))
        arguments.fail(error);
    if (arguments.has("stream") && !streamTo(arguments.text("stream"), show, error))
        arguments.fail(error);
    if (arguments.has("record-period")) {
        if (!arguments.has("record"))
            arguments.fail(QStringLiteral("--record-period: wants a --record as well"));
        for (ShowOutput& output : show.outputs)
            output.param.recordPeriod = static_cast<quint32>(arguments.number("record-period", 0, 0, 1e6));
    }
    if (const QString fault = pictureFault(show); !fault.isEmpty())
        arguments.fail(fault);
}

} // namespace

int switchCommand(const QStringList& given)
{
    Arguments arguments(switchUsage);
    for (const char* name : {"effect", "every", "take-time", "size", "fps", "record-period", "stream"})
        arguments.add(name, "value");
    addLiveOptions(arguments);
    arguments.parse(given);

    Show show;
    const QSize size = arguments.size("size", {1280, 720});
    const double fps = arguments.number("fps", 25, 1, 240);
    if (fps != std::floor(fps))
        arguments.fail(QStringLiteral("--fps %1: wants a whole number").arg(arguments.text("fps")));
    tagTavloVideoInfo& video = show.engine.videoInfo;
    video.width = video.sourceWidth = size.width();
    video.height = video.sourceHeight = size.height();
    video.fpsNum = static_cast<qint32>(fps);
    show.seconds = arguments.number("seconds", 0, 0, 1e9);
    show.engine.pvmAudioDevName = QStringLiteral("None");
    show.engine.pgmAudioDevName = arguments.has("window") ? QString() : QStringLiteral("None");
    addClips(arguments.names(), arguments, show);
    show.rotation = rotationOf(arguments, show);
    addOutputs(arguments, show);
    const LiveOptions options = optionsOf(arguments);
    return arguments.areGood() ? putOn(std::move(show), options) : WrongUse;
}

int runCommand(const QStringList& given)
{
    Arguments arguments(runUsage);
    addLiveOptions(arguments);
    arguments.parse(given);
    if (arguments.names().size() != 1)
        arguments.fail(QStringLiteral("wants one show file"));
    const LiveOptions options = optionsOf(arguments);
    const double seconds = arguments.number("seconds", 0, 0, 1e9);
    if (!arguments.areGood())
        return WrongUse;

    const QString path = arguments.names().first();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        err() << path << ": " << file.errorString() << Qt::endl;
        return WrongUse;
    }
    ShowFile read = readShow(QString::fromUtf8(file.readAll()), path);
    if (!read.findings.isEmpty()) {
        printFindings(path, read.findings);
        return WrongUse;
    }
    if (arguments.has("seconds"))
        read.show.seconds = seconds;
    QString error;
    if (arguments.has("record") && recordTo(arguments.text("record"), read.show, error))
        error = pictureFault(read.show);
    if (!error.isEmpty()) {
        err() << error << Qt::endl;
        return WrongUse;
    }
    return putOn(std::move(read.show), options);
}

} // namespace tavlo::host
