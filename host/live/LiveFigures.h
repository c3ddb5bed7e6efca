#pragma once

#include <tavlo/ITavloPresentSource.h>
#include <tavlo/TavloOutputStatistics.h>

#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

#include <vector>

namespace tavlo::host {

struct SourceFigures
{
    int channel = 0;
    bool isPlaying = false;
    bool wasThere = false;                          ///< it had a picture or sound at some time
    qint64 length = 0;                              ///< milliseconds
    tagTavloPresentSourceStatisticsItem statistics; ///< its name without what is nobody's business
};

/// One of the show's outputs, with all that record or stream through it.
struct OutputFigures
{
    int index = 0;
    bool records = false, streams = false; ///< from the show's beginning to its end
    quint64 missedFrames = 0;              ///< of the show, before its encoder was open
    tagTavloOutputStatistics statistics;   ///< behind the show's end the states are still those of the end
};

/// How a run stands at one moment.
struct LiveFigures
{
    quint64 frames = 0;       ///< since the show began
    quint64 missedFrames = 0; ///< that were never stepped since then
    double fps = 0.0;         ///< measured over the last second
    std::vector<SourceFigures> sources;
    std::vector<OutputFigures> outputs; ///< in order of their indexes
};

/// Something that was lost: why, through whom, how often.
struct Loss
{
    QString cause;
    QString culprit;
    quint64 count = 0;
};

/// Everything that a run has lost, each under its own cause. Empty for a perfect one.
QList<Loss> lossesOf(const LiveFigures& figures);

/// What went wrong with outputs that is no loss of pictures: nothing was coded, nothing written, a disk that is full.
QStringList faultsOf(const LiveFigures& figures, double framesPerSecond);

/// The run in one line: time, frames, rate, losses by cause, outputs, distance of picture and sound.
QString statusLine(const LiveFigures& figures, double framesPerSecond);

/// The same for programs.
QJsonObject statusObject(const LiveFigures& figures, double framesPerSecond);

/// A source's name as it may be shown: of an address neither user nor password nor query.
QString withoutSecrets(const QString& name);

} // namespace tavlo::host
