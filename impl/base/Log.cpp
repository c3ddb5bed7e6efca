#include "base/Log.h"

#include <QDebug>

namespace tavlo {

QString logHeader(const LogMark& mark)
{
    return QStringLiteral("[%1-%2 %3]")
        .arg(QLatin1String(mark.source), QString::number(mark.line), QLatin1String(mark.function));
}

void logFailure(const LogMark& mark, const QString& text) { qDebug().noquote() << logHeader(mark) << text; }

} // namespace tavlo
