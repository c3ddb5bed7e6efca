#include "Console.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QVariant>

#include <algorithm>
#include <vector>

namespace tavlo::host {

QTextStream& out()
{
    static QTextStream stream(stdout);
    return stream;
}

QTextStream& err()
{
    static QTextStream stream(stderr);
    return stream;
}

void printRows(const QJsonArray& rows, const QStringList& keys, bool json)
{
    if (json) {
        out() << QJsonDocument(rows).toJson() << Qt::flush;
        return;
    }
    const auto cell = [](const QJsonValue& row, const QString& key) {
        return row.toObject().value(key).toVariant().toString();
    };
    std::vector<qsizetype> widths(static_cast<std::size_t>(keys.size()), 0);
    for (const QJsonValue& row : rows) {
        for (qsizetype i = 0; i < keys.size(); ++i) {
            auto& width = widths[static_cast<std::size_t>(i)];
            width = std::max(width, cell(row, keys[i]).size());
        }
    }
    for (const QJsonValue& row : rows) {
        QString line;
        for (qsizetype i = 0; i < keys.size(); ++i)
            line += cell(row, keys[i]).leftJustified(widths[static_cast<std::size_t>(i)] + 2);
        out() << line.trimmed() << '\n';
    }
    out().flush();
}

void printLine(const QJsonObject& object) { out() << QJsonDocument(object).toJson(QJsonDocument::Compact) << Qt::endl; }

} // namespace tavlo::host
