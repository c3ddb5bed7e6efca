#pragma once

#include <QString>

#include <source_location>

namespace tavlo {

/// Where a failure is met: the source's name, the line and the function, as the log shows them.
///
/// The line is that of the expression that makes the mark: `logFailure({"impl\\TavloCanvas", "TavloCanvas::present"},
/// …)`.
struct LogMark
{
    LogMark(const char* sourceName, const char* functionName, std::source_location at = std::source_location::current())
        : source(sourceName), function(functionName), line(static_cast<int>(at.line()))
    {}

    const char* source;
    const char* function;
    int line;
};

/// "[", source, "-", line, a blank, function and "]".
QString logHeader(const LogMark& mark);

/// Logs the failure of a call into the system: header and text. Any thread.
void logFailure(const LogMark& mark, const QString& text);

} // namespace tavlo
