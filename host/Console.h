#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QTextStream>

namespace tavlo::host {

/// What the program says to the shell. Higher numbers win where several apply.
enum ExitStatus
{
    Done = 0,
    LostSomething = 1, ///< it ran, and what was lost stands in the summary
    WrongUse = 2,      ///< wrong arguments, or a show with faults
    CouldNotStart = 3,
};

/// Standard output and standard error. Main thread.
QTextStream& out();
QTextStream& err();

/// Prints rows of equal objects: as JSON, or as lines of columns in the order of `keys`.
void printRows(const QJsonArray& rows, const QStringList& keys, bool json);

/// Prints an object on a line of its own.
void printLine(const QJsonObject& object);

} // namespace tavlo::host
