#pragma once

#include <QStringList>

namespace tavlo::host {

/// Each command gets its arguments and returns the exit status: 0 when all is well, 1 when it found faults, 2 when it
/// was called wrongly.
int checkCommand(const QStringList& arguments);
int recordsCommand(const QStringList& arguments);
int paceCommand(const QStringList& arguments);

} // namespace tavlo::host
