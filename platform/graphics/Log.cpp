#include "graphics/Log.h"

#include <QDebug>
#include <QString>

namespace tavlo::graphics {

namespace {

// "platform\graphics\Context" of ".../platform/graphics/Context.cpp"
QString sourceName(const char* file)
{
    QString name = QString::fromUtf8(file);
    name = name.mid(std::max<qsizetype>(name.lastIndexOf(QLatin1String("platform/")), 0));
    name.truncate(name.lastIndexOf(QLatin1Char('.')));
    return name.replace(QLatin1Char('/'), QLatin1Char('\\'));
}

// "Context::map" of "bool tavlo::graphics::Context::map(tavlo::graphics::Texture&)"
QString functionName(const char* signature)
{
    QString name = QString::fromUtf8(signature);
    name.truncate(name.indexOf(QLatin1Char('(')));
    name = name.mid(name.lastIndexOf(QLatin1Char(' ')) + 1);
    for (const char* prefix : {"tavlo::", "graphics::", "effects::", "{anonymous}::"})
        name.remove(QLatin1String(prefix));
    return name;
}

} // namespace

void logFailure(const std::string& text, std::source_location where)
{
    qDebug().noquote() << QStringLiteral("[%1-%2 %3]")
                              .arg(sourceName(where.file_name()))
                              .arg(where.line())
                              .arg(functionName(where.function_name()))
                       << QString::fromStdString(text);
}

} // namespace tavlo::graphics
