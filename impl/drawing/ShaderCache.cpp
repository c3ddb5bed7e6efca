#include "drawing/ShaderCache.h"

#include "base/BuildStamp.h"

#include <QDebug>
#include <QDir>

namespace tavlo {

QString prepareShaderCache(const QString& cachePath)
{
    if (cachePath.isEmpty())
        return {};
    const QString all = QDir(cachePath).filePath(QStringLiteral("hlslObj/"));
    QString own = all + QString::number(buildStamp()) + u'/';
    if (!QDir(own).exists()) {
        qDebug() << "reset shader bin cache : " << all;
        QDir(all).removeRecursively();
    }
    if (!QDir().mkpath(own + QStringLiteral("shader/")))
        qDebug() << "cannot make" << own << ": effects are compiled at each start";
    return own;
}

} // namespace tavlo
