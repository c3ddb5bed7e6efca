#pragma once

#include <QString>

#include <span>

namespace tavlo::decklink {

/// What a card plays. Interlaced ones count whole pictures; both fields of one are of the same moment.
struct Mode
{
    const char* name;
    int width, height; ///< pixels
    int fpsNum, fpsDen;
};

std::span<const Mode> modes();

/// The mode of that name, such as "1080p25"; null when there is none.
const Mode* findMode(const QString& name);

} // namespace tavlo::decklink
