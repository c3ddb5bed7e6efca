#include "Console.h"
#include "commands/Commands.h"
#include "show/ShowFile.h"

#include <QFile>

#include <algorithm>

namespace tavlo::host {
namespace {

/// \param recordType  empty for a show file
int checkFile(const QString& path, const QString& recordType)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        err() << path << ": " << file.errorString() << Qt::endl;
        return WrongUse;
    }
    const QString text = QString::fromUtf8(file.readAll());
    const QList<TavloXmlFinding> findings =
        recordType.isEmpty() ? readShow(text, path).findings : TavloPresentUtil::checkXml(text, recordType);
    printFindings(path, findings);
    if (findings.isEmpty())
        out() << path << ": good as a " << (recordType.isEmpty() ? QStringLiteral("show") : recordType) << Qt::endl;
    return findings.isEmpty() ? Done : WrongUse;
}

} // namespace

int checkCommand(const QStringList& arguments)
{
    QStringList files = arguments;
    QString recordType;
    if (const auto place = files.indexOf(QLatin1String("--record")); place >= 0 && place + 1 < files.size()) {
        recordType = files[place + 1];
        files.remove(place, 2);
    }
    const auto isOption = [](const QString& word) { return word.startsWith(QLatin1String("--")); };
    if (files.isEmpty() || std::ranges::any_of(files, isOption)) {
        err() << checkUsage << Qt::endl;
        return WrongUse;
    }
    int status = Done;
    for (const QString& path : files)
        status = std::max(status, checkFile(path, recordType));
    return status;
}

} // namespace tavlo::host
