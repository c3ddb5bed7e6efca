#include "live/MadeFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>

namespace tavlo::host {
namespace {

/// What tells a file from another one that takes its name; 0 where there is none.
quint64 identityOf(const QString& path)
{
    struct stat status
    {};
    return !path.isEmpty() && stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_ino : 0;
}

QString suffixOf(quint32 recordMode)
{
    return recordMode == 0 ? QStringLiteral(".ts") : recordMode == 1 ? QStringLiteral(".mkv") : QStringLiteral(".mp4");
}

} // namespace

MadeFiles::MadeFiles(const Show& show, const QString& picture) : _picture(picture), _pictureBefore(identityOf(picture))
{
    for (const ShowOutput& output : show.outputs) {
        if (output.type != TavloPresentOutputTypeRecord || output.param.recordEnabled == 0)
            continue;
        const QFileInfo name(output.param.recordDir + u'/' +
                             output.param.recordName.section(QLatin1String("${"), 0, 0));
        Place place{name.absolutePath(), name.fileName(), suffixOf(output.param.recordMode), {}};
        place.before = place.files();
        _places.push_back(place);
    }
}

QStringList MadeFiles::recordings() const
{
    QStringList made;
    for (const Place& place : _places) {
        const QStringList files = place.files();
        for (const QString& file : files) {
            if (!place.before.contains(file) && !made.contains(file))
                made.append(file);
        }
    }
    return made;
}

bool MadeFiles::hasPicture() const
{
    const quint64 now = identityOf(_picture);
    return now != 0 && now != _pictureBefore;
}

QStringList MadeFiles::Place::files() const
{
    QStringList found;
    const QDir directory(folder);
    const QStringList names = directory.entryList(QDir::Files, QDir::Name);
    for (const QString& name : names) {
        if (name.startsWith(prefix) && name.endsWith(suffix))
            found.append(directory.filePath(name));
    }
    return found;
}

} // namespace tavlo::host
