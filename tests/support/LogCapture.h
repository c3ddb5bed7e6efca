#pragma once

#include <QStringList>

namespace tavlo::test {

/// Takes what is logged as long as it lives, from all threads. One at a time.
class LogCapture
{
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    QStringList lines() const;

    /// How many lines hold the text.
    int count(const char* text) const;
};

} // namespace tavlo::test
