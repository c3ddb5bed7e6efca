#include "TavloOutputModule/RecordPath.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStandardPaths>

namespace tavlo {

namespace {

constexpr int mostCounters = 10'000;

bool hasDriveLetter(const QString& path)
{
    return path.size() >= 2 && path[0].isLetter() && path[1] == QLatin1Char(':');
}

} // namespace

QString resolvedFolder(const QString& folder)
{
    QString path = folder;
    path.replace(QLatin1Char('\\'), QLatin1Char('/'));
    if (hasDriveLetter(path))
        path = QStandardPaths::writableLocation(QStandardPaths::MoviesLocation) + QLatin1Char('/') + path.mid(2);
    return QDir::cleanPath(path);
}

QString recordFileName(const QString& name, const QString& timeFormat, const QDateTime& time)
{
    QString path = name;
    path.replace(QStringLiteral("${TIME}"), time.toString(timeFormat));
    path.replace(QLatin1Char('\\'), QLatin1Char('/'));
    QStringList parts = path.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    parts.removeAll(QStringLiteral(".."));
    return parts.isEmpty() ? QStringLiteral("record") : parts.join(QLatin1Char('/'));
}

QString makeRecordFile(const QString& folder, const QString& name, const QString& suffix, QString& error)
{
    const QString stem = folder + QLatin1Char('/') + name;
    if (!QDir().mkpath(QFileInfo(stem).path())) {
        error = QStringLiteral("cannot make the folder of ") + stem;
        return {};
    }
    for (int counter = 0; counter < mostCounters; ++counter) {
        const QString number = counter > 0 ? QStringLiteral("_%1").arg(counter) : QString();
        QFile file(stem + number + QLatin1Char('.') + suffix);
        if (file.open(QIODevice::WriteOnly | QIODevice::NewOnly))
            return file.fileName();
        if (!file.exists()) {
            error = file.fileName() + QStringLiteral(": ") + file.errorString();
            return {};
        }
    }
    error = stem + QStringLiteral(": too many files of that name");
    return {};
}

QStringList segmentsIn(const QString& folder)
{
    static const QRegularExpression day(QStringLiteral("^\\d{4}-\\d{2}-\\d{2}$"));
    static const QRegularExpression segment(QStringLiteral("^\\d{2}_\\d{2}_\\d{2}(_\\d+)?\\.ts$"));
    QStringList paths;
    for (const QString& dayName : QDir(folder).entryList(QDir::Dirs | QDir::NoSymLinks).filter(day)) {
        const QDir dayFolder(folder + QLatin1Char('/') + dayName);
        for (const QString& name : dayFolder.entryList(QDir::Files | QDir::NoSymLinks).filter(segment))
            paths.append(dayFolder.filePath(name));
    }
    return paths;
}

} // namespace tavlo
