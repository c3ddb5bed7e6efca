#include "scene/FileUtils.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace tavlo::scene {

namespace {

bool isFile(const QString& path) { return QFileInfo(path).isFile(); }

} // namespace

void FileUtils::addSearchPath(const std::string& folder)
{
    if (std::ranges::find(_folders, folder) == _folders.end())
        _folders.push_back(folder);
}

std::string FileUtils::fullPathForFilename(const std::string& name) const
{
    const QString asked = QString::fromStdString(name);
    if (asked.isEmpty())
        return {};
    const bool searched = QDir::isRelativePath(asked);
    for (const std::string& folder : _folders) {
        const QString path = QString::fromStdString(folder) + QLatin1Char('/') + asked;
        if (searched && isFile(path))
            return path.toStdString();
    }
    return isFile(asked) ? name : std::string();
}

} // namespace tavlo::scene
