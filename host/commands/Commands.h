#pragma once

#include <QStringList>

namespace tavlo::host {

/// How the commands with arguments of their own are called.
inline constexpr const char* switchUsage =
    "usage: tavlo switch CLIP... [--effect NAME|NUMBER|random] [--every SECONDS] [--take-time SECONDS] "
    "[--size 1280x720] [--fps 25] [--record FILE] [--record-period SECONDS] [--stream URL] [--seconds N] [--window] "
    "[--canvas 1280x720] [--snapshot FILE.png] [--quiet] [--json]";
inline constexpr const char* runUsage = "usage: tavlo run SHOW.xml [--window] [--canvas 1280x720] [--seconds N] "
                                        "[--record FILE] [--snapshot FILE.png] [--quiet] [--json]";
inline constexpr const char* checkUsage = "usage: tavlo check [--record TYPE] FILE...";
inline constexpr const char* probeUsage = "usage: tavlo probe FILE|URL [--json]";
inline constexpr const char* paceUsage = "usage: tavlo pace [FRAMES-A-SECOND [SECONDS]]";

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
