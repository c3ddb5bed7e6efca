#include "scene/text/FontFinder.h"

#include "graphics/Log.h"

#include <QFontDatabase>
#include <QRawFont>

#include <algorithm>
#include <cmath>

namespace tavlo::scene {

namespace {

constexpr int largestPixels = 2048;
constexpr qreal probePixels = 16; // any size serves to ask a file for its weight

} // namespace

int shapingPixels(float fontSize)
{
    return std::clamp(static_cast<int>(std::lround(std::isfinite(fontSize) ? fontSize : 0)), 1, largestPixels);
}

QFont FontFinder::fontFor(const TextStyle& style)
{
    QFont font;
    if (!style.fontFamily.empty())
        font.setFamilies({QString::fromStdString(style.fontFamily)});
    font.setBold(style.bold);
    if (!style.fontFile.empty()) {
        const KnownFile& file = fileOf(style.fontFile);
        if (!file.families.isEmpty()) {
            font.setFamilies(file.families);
            font.setWeight(static_cast<QFont::Weight>(file.weight));
            font.setStyle(file.style);
        }
    }
    font.setPixelSize(shapingPixels(style.fontSize));
    font.setHintingPreference(QFont::PreferNoHinting); // the outlines are what is drawn
    return font;
}

const FontFinder::KnownFile& FontFinder::fileOf(const std::string& path)
{
    const auto found = std::ranges::find(_files, path, &KnownFile::path);
    if (found != _files.end())
        return *found;
    KnownFile file;
    file.path = path;
    const QString name = QString::fromStdString(path);
    if (const int id = QFontDatabase::addApplicationFont(name); id >= 0) {
        const QRawFont probe(name, probePixels);
        file.families = QFontDatabase::applicationFontFamilies(id).mid(0, 1);
        file.weight = probe.weight();
        file.style = probe.style();
    } else {
        graphics::logFailure("no font: " + path);
    }
    _files.push_back(std::move(file));
    return _files.back();
}

} // namespace tavlo::scene
