#pragma once

#include <QStringList>

namespace tavlo::host {

/// Each command gets its arguments and returns an ExitStatus.
int switchCommand(const QStringList& arguments);
int runCommand(const QStringList& arguments);
int checkCommand(const QStringList& arguments);
int probeCommand(const QStringList& arguments);
int devicesCommand(const QStringList& arguments);
int effectsCommand(const QStringList& arguments);
int filtersCommand(const QStringList& arguments);
int recordsCommand(const QStringList& arguments);
int versionCommand(const QStringList& arguments);
int paceCommand(const QStringList& arguments);

} // namespace tavlo::host
