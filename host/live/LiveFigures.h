#pragma once

#include <tavlo/ITavloPresentSource.h>
#include <tavlo/TavloOutputStatistics.h>

#include <QList>
#include <QString>

#include <vector>

namespace tavlo::host {

struct SourceFigures
{
    int channel = 0;
    bool isPlaying = false;
    bool wasThere = false; ///< it had a picture or sound at some time
    qint64 length = 0;     ///< milliseconds
    tagTavloPresentSourceStatisticsItem statistics;
};

/// How a run stands at one moment.
struct LiveFigures
{
    quint64 frames = 0;       ///< since the show began
    quint64 missedFrames = 0; ///< that were never stepped since then
    double fps = 0.0;         ///< measured over the last second
    std::vector<SourceFigures> sources;
    tagTavloOutputStatistics output;
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

/// The run in one line: time, frames, rate, losses by cause, outputs, distance of picture and sound.
QString statusLine(const LiveFigures& figures, double framesPerSecond);

} // namespace tavlo::host
