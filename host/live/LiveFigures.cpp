#include "live/LiveFigures.h"

#include <QJsonArray>
#include <QTime>

#include <algorithm>

namespace tavlo::host {
namespace {

using Statistics = tagTavloOutputStatistics;

const char* stateName(quint32 state)
{
    switch (state) {
    case Statistics::Opening:
        return "opening";
    case Statistics::Running:
        return "running";
    case Statistics::Waiting:
        return "WAITING to try again";
    default:
        return "off";
    }
}

/// What an output counts as lost.
struct LossRow
{
    quint64 Statistics::*count;
    const char* cause;
    const char* culprit;
};

constexpr LossRow lossRows[]{
    {&Statistics::droppedPictures, "pool drop", "pictures"},
    {&Statistics::droppedBlocks, "pool drop", "sound blocks"},
    {&Statistics::encoderDropped, "encoder skip", "no room in the encoder"},
    {&Statistics::repeatedPictures, "encoder skip", "steps without a picture, repeated"},
    {&Statistics::skippedPictures, "encoder skip", "pictures beyond the rate"},
    {&Statistics::silentSamples, "sound gap", "samples, filled with silence"},
    {&Statistics::skippedSamples, "sound overlap", "samples, left out"},
    {&Statistics::recordDropped, "record drop", "recording"},
    {&Statistics::netDropped, "network drop", "stream"},
    {&Statistics::viewerDropped, "viewer drop", "viewers that are too slow"},
    {&Statistics::netReconnects, "reconnect", "stream"},
};

/// One way out of an output: its recording, or its stream.
struct Way
{
    const char* name;
    bool OutputFigures::*isUsed;
    quint32 Statistics::*state;
    float Statistics::*video;
    float Statistics::*sound;
    quint64 Statistics::*written;
    quint32 silentState; ///< in which it may have written nothing: segments alone, servers without a viewer
};

constexpr Way ways[]{
    {"record", &OutputFigures::records, &Statistics::recordState, &Statistics::recordRatePair1,
     &Statistics::recordRatePair2, &Statistics::recordWritten, Statistics::Off},
    {"stream", &OutputFigures::streams, &Statistics::netState, &Statistics::netRatePair1, &Statistics::netRatePair2,
     &Statistics::netWritten, Statistics::Running},
};

/// Calls with each way that is in use, its output, and a name: "record", or "record 2" where there are more outputs.
template <class Function>
void forEachWay(const LiveFigures& figures, Function function)
{
    for (const OutputFigures& output : figures.outputs) {
        for (const Way& way : ways) {
            if (output.*way.isUsed)
                function(way, output,
                         figures.outputs.size() > 1
                             ? QStringLiteral("%1 %2").arg(QLatin1String(way.name)).arg(output.index)
                             : QString::fromLatin1(way.name));
        }
    }
}

double secondsOf(const LiveFigures& figures, double framesPerSecond)
{
    return static_cast<double>(figures.frames + figures.missedFrames) / framesPerSecond;
}

qint64 farthestDelay(const LiveFigures& figures)
{
    qint64 farthest = 0;
    for (const SourceFigures& source : figures.sources) {
        if (source.isPlaying && std::abs(source.statistics.avDelay) > std::abs(farthest))
            farthest = source.statistics.avDelay;
    }
    return farthest;
}

} // namespace

QList<Loss> lossesOf(const LiveFigures& figures)
{
    QList<Loss> losses;
    const auto add = [&losses](const char* cause, const QString& culprit, quint64 count) {
        if (count > 0)
            losses.append({QString::fromLatin1(cause), culprit, count});
    };
    for (const SourceFigures& source : figures.sources) {
        const QString name = QStringLiteral("channel %1 (%2)").arg(source.channel).arg(source.statistics.name);
        add("source late", name, source.statistics.latePictures);
        add("source dropped", name, source.statistics.droppedPictures);
    }
    add("step late", QStringLiteral("frame thread"), figures.missedFrames);
    for (const OutputFigures& output : figures.outputs) {
        const QString place = figures.outputs.size() > 1 ? QStringLiteral("output %1, ").arg(output.index) : QString();
        add("output late", place + QStringLiteral("frames before its encoder was open"), output.missedFrames);
        for (const LossRow& row : lossRows)
            add(row.cause, place + QLatin1String(row.culprit), output.statistics.*row.count);
    }
    return losses;
}

QStringList faultsOf(const LiveFigures& figures, double framesPerSecond)
{
    QStringList faults;
    if (secondsOf(figures, framesPerSecond) < 1.0)
        return faults; // too short for anything to come out of an encoder
    forEachWay(figures, [&](const Way& way, const OutputFigures& output, const QString& name) {
        const Statistics& statistics = output.statistics;
        if (statistics.codedPictures == 0)
            faults.append(QStringLiteral("%1: no picture was coded; an encoder or a module is missing, or it refused "
                                         "the settings (TAVLO_LOG=1 shows which)")
                              .arg(name));
        else if (statistics.*way.written == 0 && statistics.*way.state != way.silentState)
            faults.append(QStringLiteral("%1: nothing was written; it stood at \"%2\" (TAVLO_LOG=1 shows why)")
                              .arg(name, QLatin1String(stateName(statistics.*way.state))));
        else if (way.state == &Statistics::recordState && statistics.recordState == Statistics::Waiting)
            faults.append(QStringLiteral("%1: the end is missing: the disk is full, gone or read-only").arg(name));
    });
    return faults;
}

QString statusLine(const LiveFigures& figures, double framesPerSecond)
{
    const auto milliseconds = static_cast<qint64>(secondsOf(figures, framesPerSecond) * 1000);
    QString line =
        QStringLiteral("%1  %2 frames  %3 fps")
            .arg(QTime::fromMSecsSinceStartOfDay(static_cast<int>(milliseconds % 86'400'000)).toString(u"hh:mm:ss"))
            .arg(figures.frames)
            .arg(figures.fps, 0, 'f', 1);
    const QList<Loss> losses = lossesOf(figures); // in front of what a narrow terminal may not show
    for (const Loss& loss : losses)
        line += QStringLiteral("  %1 %2").arg(loss.cause).arg(loss.count);
    if (losses.isEmpty())
        line += QStringLiteral("  nothing lost");
    forEachWay(figures, [&line](const Way& way, const OutputFigures& output, const QString& name) {
        const Statistics& statistics = output.statistics;
        line += QStringLiteral("  %1 %2 %3 kbit/s %4 pictures")
                    .arg(name, QLatin1String(stateName(statistics.*way.state)))
                    .arg(static_cast<double>(statistics.*way.video + statistics.*way.sound), 0, 'f', 0)
                    .arg(statistics.*way.written);
    });
    return line + QStringLiteral("  a/v %1 ms").arg(farthestDelay(figures));
}

QJsonObject statusObject(const LiveFigures& figures, double framesPerSecond)
{
    QJsonArray outputs, losses;
    forEachWay(figures, [&outputs](const Way& way, const OutputFigures& output, const QString&) {
        const Statistics& statistics = output.statistics;
        outputs.append(QJsonObject{
            {QStringLiteral("output"), output.index},
            {QStringLiteral("kind"), QLatin1String(way.name)},
            {QStringLiteral("state"), QLatin1String(stateName(statistics.*way.state))},
            {QStringLiteral("kilobits"), static_cast<double>(statistics.*way.video + statistics.*way.sound)},
            {QStringLiteral("codedBytes"), static_cast<qint64>(statistics.workerTotal)},
            {QStringLiteral("codedPictures"), static_cast<qint64>(statistics.codedPictures)},
            {QStringLiteral("writtenPictures"), static_cast<qint64>(statistics.*way.written)}});
    });
    for (const Loss& loss : lossesOf(figures))
        losses.append(QJsonObject{{QStringLiteral("cause"), loss.cause},
                                  {QStringLiteral("culprit"), loss.culprit},
                                  {QStringLiteral("count"), static_cast<qint64>(loss.count)}});
    return {{QStringLiteral("seconds"), secondsOf(figures, framesPerSecond)},
            {QStringLiteral("frames"), static_cast<qint64>(figures.frames)},
            {QStringLiteral("missedFrames"), static_cast<qint64>(figures.missedFrames)},
            {QStringLiteral("fps"), figures.fps},
            {QStringLiteral("avMilliseconds"), farthestDelay(figures)},
            {QStringLiteral("outputs"), outputs},
            {QStringLiteral("losses"), losses}};
}

QString withoutSecrets(const QString& name)
{
    const QString separator = QStringLiteral("://");
    const auto scheme = name.indexOf(separator);
    if (scheme < 0)
        return name;
    // A password may hold any character, so all in front of the last @ goes, wherever that stands.
    const auto begin = scheme + separator.size();
    const auto user = name.lastIndexOf(u'@');
    const QString place = name.mid(user >= begin ? user + 1 : begin);
    return name.left(begin) + place.section(u'?', 0, 0).section(u'#', 0, 0);
}

} // namespace tavlo::host
