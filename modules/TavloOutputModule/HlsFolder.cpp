#include "TavloOutputModule/HlsFolder.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

namespace tavlo {

namespace {

/// Of the segments that a list names, in order.
QList<qulonglong> segmentNumbers(const QByteArray& list)
{
    static const QRegularExpression line(QStringLiteral("^index(\\d+)\\.ts\\s*$"), QRegularExpression::MultilineOption);
    QList<qulonglong> numbers;
    for (auto matches = line.globalMatch(QString::fromUtf8(list)); matches.hasNext();)
        numbers.append(matches.next().captured(1).toULongLong());
    return numbers;
}

} // namespace

void prepareHlsFolder(const QString& folder, bool clear)
{
    QDir().mkpath(folder);
    const QDir place(folder);
    QFile list(place.filePath(QStringLiteral("index.m3u8")));
    if (!clear || !list.open(QIODevice::ReadOnly))
        return;
    QList<qulonglong> numbers = segmentNumbers(list.readAll());
    list.remove();
    if (!numbers.isEmpty() &&
        numbers.first() > 0) // one that has left the list stays a while for those who still read it
        numbers.prepend(numbers.first() - 1);
    for (const qulonglong number : numbers)
        QFile::remove(place.filePath(QStringLiteral("index%1.ts").arg(number)));
}

} // namespace tavlo
