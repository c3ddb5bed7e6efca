#include "live/LiveFigures.h"

#include <QTime>

#include <algorithm>

namespace tavlo::host {
namespace {

QString stateName(quint32 state)
{
    switch (state) {
    case tagTavloOutputStatistics::Opening:
        return QStringLiteral("opening");
    case tagTavloOutputStatistics::Running:
        return QStringLiteral("running");
    case tagTavloOutputStatistics::Waiting:
        return QStringLiteral("WAITING to try again");
    default:
        return QStringLiteral("off");
    }
}

/// An output's part of the status line; empty for one that is switched off.
QString outputText(const char* name, quint32 state, float video, float sound)
{
    return state == tagTavloOutputStatistics::Off ? QString()
                                                  : QStringLiteral("  %1 %2 %3 kbit/s")
                                                        .arg(QLatin1String(name), stateName(state))
                                                        .arg(video + sound, 0, 'f', 0);
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
    const tagTavloOutputStatistics& output = figures.output;
    add("step late", QStringLiteral("frame thread"), figures.missedFrames);
    add("pool drop", QStringLiteral("pictures"), output.droppedPictures);
    add("pool drop", QStringLiteral("sound blocks"), output.droppedBlocks);
    add("encoder skip", QStringLiteral("no room in the encoder"), output.encoderDropped);
    add("encoder skip", QStringLiteral("steps without a picture, repeated"), output.repeatedPictures);
    add("encoder skip", QStringLiteral("pictures beyond the rate"), output.skippedPictures);
    add("record drop", QStringLiteral("recording"), output.recordDropped);
    add("network drop", QStringLiteral("stream"), output.netDropped);
    add("reconnect", QStringLiteral("stream"), output.netReconnects);
    return losses;
}

QString statusLine(const LiveFigures& figures, double framesPerSecond)
{
    const int milliseconds =
        static_cast<int>(static_cast<double>(figures.frames + figures.missedFrames) * 1000 / framesPerSecond);
    QString line = QStringLiteral("%1  %2 frames  %3 fps")
                       .arg(QTime::fromMSecsSinceStartOfDay(milliseconds % 86'400'000).toString(u"hh:mm:ss"))
                       .arg(figures.frames)
                       .arg(figures.fps, 0, 'f', 1);
    line += outputText("record", figures.output.recordState, figures.output.recordRatePair1,
                       figures.output.recordRatePair2);
    line += outputText("stream", figures.output.netState, figures.output.netRatePair1, figures.output.netRatePair2);
    if (figures.output.workerTotal > 0)
        line += QStringLiteral("  %1 MB").arg(static_cast<double>(figures.output.workerTotal) / 1e6, 0, 'f', 1);
    qint64 farthest = 0;
    for (const SourceFigures& source : figures.sources) {
        if (source.isPlaying && std::abs(source.statistics.avDelay) > std::abs(farthest))
            farthest = source.statistics.avDelay;
    }
    line += QStringLiteral("  a/v %1 ms").arg(farthest);
    const QList<Loss> losses = lossesOf(figures);
    for (const Loss& loss : losses)
        line += QStringLiteral("  %1 %2").arg(loss.cause).arg(loss.count);
    return losses.isEmpty() ? line + QStringLiteral("  nothing lost") : line;
}

} // namespace tavlo::host
