#pragma once

#include "show/Show.h"

#include <tavlo/TavloPresentUtil.h>

namespace tavlo::host {

/// A show file, read (docs/show-file.md).
struct ShowFile
{
    Show show;
    QList<TavloXmlFinding> findings; ///< everything that is wrong in it, in the order of its lines
};

/// Reads a show. Relative paths of its sources are taken from the file's own folder. A text with findings gives a show
/// that must not be run.
/// \param path  for the folder; the text is read by the caller
ShowFile readShow(const QString& text, const QString& path);

/// Prints what is wrong in a file, a line each: file, line, column, field and text.
void printFindings(const QString& path, const QList<TavloXmlFinding>& findings);

} // namespace tavlo::host
