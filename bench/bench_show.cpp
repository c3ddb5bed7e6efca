// A scene, live: what is lost, how long steps take, and which threads take the processor's time.

#include "Console.h"
#include "live/LiveRun.h"
#include "show/SwitchShow.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <sys/resource.h>
#include <unistd.h>

namespace {

using namespace tavlo::host;

/// Processor time of the process by stage, seconds. Threads carry the names of their work.
class StageTimes
{
public:
    /// Looks at the threads that live now.
    void sample()
    {
        const QDir tasks(QStringLiteral("/proc/self/task"));
        for (const QString& task : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
            QFile file(tasks.filePath(task + "/stat"));
            if (!file.open(QIODevice::ReadOnly))
                continue;
            const QByteArray text = file.readAll();
            const auto open = text.indexOf('('), close = text.lastIndexOf(')');
            const QList<QByteArray> fields = text.mid(close + 2).split(' ');
            const double ticks = fields.value(11).toDouble() + fields.value(12).toDouble(); // user and system
            Thread& thread = _threads[task.toInt()];
            thread.stage = stageOf(text.mid(open + 1, close - open - 1));
            thread.seconds = ticks / static_cast<double>(sysconf(_SC_CLK_TCK));
            if (!_begun)
                thread.before = thread.seconds;
        }
        _begun = true;
    }

    std::map<std::string, double> byStage() const
    {
        std::map<std::string, double> sums;
        for (const auto& [id, thread] : _threads)
            sums[thread.stage] += thread.seconds - thread.before;
        return sums;
    }

private:
    struct Thread
    {
        std::string stage;
        double seconds = 0.0, before = 0.0;
    };

    static std::string stageOf(const QByteArray& name)
    {
        struct Row
        {
            const char* prefix;
            const char* stage;
        };
        static constexpr std::array rows{
            Row{"tavlo-picture", "decode"}, Row{"tavlo-reader", "decode"},   Row{"av:", "decode"},
            Row{"tavlo-sound", "audio"},    Row{"tavlo-mix", "mix"},         Row{"tavlo-frame", "frame thread"},
            Row{"llvmpipe", "draw"},        Row{"tavlo-convert", "convert"}, Row{"tavlo-encode", "encode"},
            Row{"tavlo-target", "write"},
        };
        const auto row = std::ranges::find_if(rows, [&name](const Row& r) { return name.startsWith(r.prefix); });
        return row != rows.end() ? row->stage : "other";
    }

    std::map<int, Thread> _threads;
    bool _begun = false;
};

tagTavloPresentTransitionEffectParam fade(float seconds)
{
    tagTavloPresentTransitionEffectParam effect;
    effect.duration = seconds;
    return effect;
}

void addSource(Show& show, const QDir& clips, const char* clip, bool keyed)
{
    ShowSource& source = show.sources.emplace_back();
    QString error;
    source.channel = static_cast<int>(show.sources.size()) - 1;
    source.info = sourceNamed(clips.filePath(QLatin1String(clip)), error);
    source.picture.miscParam.name = QLatin1String(clip);
    if (!error.isEmpty()) {
        err() << error << Qt::endl;
        std::exit(WrongUse);
    }
    if (!keyed)
        return;
    source.picture.chromaKeyParam.enable = 1;
    source.picture.chromaKeyParam.color = 0xff00b140;
    source.picture.chromaKeyParam.similarity = 0.3F;
    source.picture.chromaKeyParam.smoothness = 0.08F;
    source.picture.chromaKeyParam.spill = 0.1F;
    source.picture.miscParam.backgroundColor = 0xff203060;
}

bool makeScene(const QString& name, const QDir& clips, Show& show)
{
    if (name == QLatin1String("four")) {
        addSource(show, clips, "A.mp4", false);
        addSource(show, clips, "B.mp4", false);
        addSource(show, clips, "C_green.mp4", true);
        addSource(show, clips, "D.mp4", false);
        show.rotation = Rotation{5.0, 4, fade(1.0F)};
    } else if (name == QLatin1String("keyed")) {
        addSource(show, clips, "A.mp4", false);
        addSource(show, clips, "C_green.mp4", true);
        addSource(show, clips, "D.mp4", false);
        show.rotation = Rotation{show.seconds / 2, 2, fade(1.0F)};
    } else if (name == QLatin1String("multiview")) {
        for (int i = 0; i < 2; ++i) {
            for (const char* clip : {"A.mp4", "B.mp4", "C_green.mp4", "D.mp4"})
                addSource(show, clips, clip, false);
        }
    } else if (name == QLatin1String("light")) {
        addSource(show, clips, "A.mp4", false);
    } else {
        return false;
    }
    show.engine.channelCount = show.sources.size() == 3 ? 4 : static_cast<quint32>(show.sources.size());
    return true;
}

double processorSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& t) {
        return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

float percentile(std::vector<float>& times, double part)
{
    if (times.empty())
        return 0.0F;
    const auto at = times.begin() + static_cast<std::ptrdiff_t>(part * static_cast<double>(times.size() - 1));
    std::nth_element(times.begin(), at, times.end());
    return *at;
}

QString valueOf(const QStringList& arguments, const char* option, const char* fallback)
{
    const auto at = arguments.indexOf(QLatin1String(option));
    return at >= 0 ? arguments.value(at + 1) : QString::fromLatin1(fallback);
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    if (!qEnvironmentVariableIsSet("TAVLO_LOG"))
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    const QGuiApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const QString scene = arguments.value(1);
    const QStringList size =
        valueOf(arguments, "--size", scene == QLatin1String("light") ? "640x360" : "1280x720").split(u'x');
    const QTemporaryDir folder;

    Show show;
    show.seconds = valueOf(arguments, "--seconds", "20").toDouble();
    show.engine.videoInfo.width = show.engine.videoInfo.sourceWidth = size.value(0).toInt();
    show.engine.videoInfo.height = show.engine.videoInfo.sourceHeight = size.value(1).toInt();
    show.engine.pgmAudioDevName = show.engine.pvmAudioDevName = QStringLiteral("None");
    if (!makeScene(scene, QDir(valueOf(arguments, "--clips", "out/clips")), show)) {
        err() << "usage: bench/show four|keyed|multiview|light [--size WxH] [--clips FOLDER] [--seconds N] [--json]"
              << Qt::endl;
        return WrongUse;
    }
    LiveOptions options;
    options.quiet = true;
    options.multiView = scene == QLatin1String("multiview");
    options.canvas = scene == QLatin1String("multiview") ? QSize(1920, 1080) : QSize(1280, 720);
    QString error;
    if (scene != QLatin1String("multiview") && !recordTo(folder.filePath(QStringLiteral("show.mp4")), show, error))
        return WrongUse;

    std::vector<float> steps;
    steps.reserve(static_cast<std::size_t>(show.seconds * show.framesPerSecond()) + 100);
    StageTimes stages;
    double before = 0.0, after = 0.0;
    LiveRun run(std::move(show), options);
    run.engine().keepStepTimes(steps);
    run.onTick = [&](ShowEngine::Phase phase, const LiveFigures&) {
        if (phase == ShowEngine::Phase::Rolling) {
            before = before > 0.0 ? before : processorSeconds();
            after = processorSeconds();
            stages.sample();
        }
        return true;
    };
    if (const int status = run.run(); status != Done)
        return status;

    const LiveFigures& figures = run.figures();
    const double frames = std::max(1.0, static_cast<double>(figures.frames));
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    QJsonObject lost, milliseconds;
    quint64 lostInAll = 0;
    for (const Loss& loss : lossesOf(figures)) {
        lost[loss.cause + QStringLiteral(", ") + loss.culprit] = static_cast<qint64>(loss.count);
        lostInAll += loss.count;
    }
    const auto rounded = [](double value) { return std::round(value * 100) / 100; };
    for (const auto& [stage, seconds] : stages.byStage())
        milliseconds[QString::fromStdString(stage)] = rounded(seconds * 1000 / frames);
    const QJsonObject result{
        {QStringLiteral("scene"), scene},
        {QStringLiteral("size"), size.join(u'x')},
        {QStringLiteral("frames"), static_cast<qint64>(figures.frames)},
        {QStringLiteral("lost"), static_cast<qint64>(lostInAll)},
        {QStringLiteral("lostBy"), lost},
        {QStringLiteral("stepMilliseconds"),
         QJsonObject{{QStringLiteral("p50"), rounded(static_cast<double>(percentile(steps, 0.5)))},
                     {QStringLiteral("p99"), rounded(static_cast<double>(percentile(steps, 0.99)))},
                     {QStringLiteral("max"), rounded(static_cast<double>(percentile(steps, 1.0)))}}},
        {QStringLiteral("processorMillisecondsPerFrame"), rounded((after - before) * 1000 / frames)},
        {QStringLiteral("byStage"), milliseconds},
        {QStringLiteral("peakMegabytes"), rounded(static_cast<double>(usage.ru_maxrss) / 1024)},
    };
    if (arguments.contains(QLatin1String("--json"))) {
        out() << QJsonDocument(result).toJson() << Qt::flush;
        return Done;
    }
    out() << scene << " at " << size.join(u'x') << ": " << figures.frames << " frames, " << lostInAll << " lost\n";
    for (auto loss = lost.begin(); loss != lost.end(); ++loss)
        out() << "  lost: " << loss.key() << ": " << loss.value().toInteger() << '\n';
    const QJsonObject step = result[QStringLiteral("stepMilliseconds")].toObject();
    out() << "  step: p50 " << step["p50"].toDouble() << " ms, p99 " << step["p99"].toDouble() << " ms, max "
          << step["max"].toDouble() << " ms\n"
          << "  processor: " << rounded((after - before) * 1000 / frames) << " ms a frame:";
    for (auto stage = milliseconds.begin(); stage != milliseconds.end(); ++stage)
        out() << ' ' << stage.key() << ' ' << stage.value().toDouble();
    out() << "\n  memory: " << rounded(static_cast<double>(usage.ru_maxrss) / 1024) << " MB at most" << Qt::endl;
    return Done;
}
