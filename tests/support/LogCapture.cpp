#include "support/LogCapture.h"

#include <QtGlobal>

#include <algorithm>
#include <mutex>

namespace tavlo::test {

namespace {

std::mutex lock;
QStringList captured; // guarded by lock

void capture(QtMsgType, const QMessageLogContext&, const QString& text)
{
    const std::lock_guard guard(lock);
    captured.append(text);
}

} // namespace

LogCapture::LogCapture()
{
    const std::lock_guard guard(lock);
    captured.clear();
    qInstallMessageHandler(&capture);
}

LogCapture::~LogCapture() { qInstallMessageHandler(nullptr); }

QStringList LogCapture::lines() const
{
    const std::lock_guard guard(lock);
    return captured;
}

int LogCapture::count(const char* text) const
{
    const QStringList all = lines();
    return static_cast<int>(
        std::ranges::count_if(all, [text](const QString& line) { return line.contains(QLatin1String(text)); }));
}

} // namespace tavlo::test
