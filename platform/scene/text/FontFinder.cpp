#include "scene/text/FontFinder.h"

#include "graphics/Log.h"
#include "scene/text/TextBounds.h"

#include <QFontDatabase>

#include <algorithm>
#include <cmath>
#include <map>
#include <mutex>
#include <string>

namespace tavlo::scene {

namespace {

constexpr qreal probePixels = 16;       // any size serves to ask a file for its weight
constexpr std::size_t fontsToKnow = 32; // fonts in different sizes count apart

struct FontFile
{
    QStringList families; ///< empty: it is no font
    int weight = QFont::Normal;
    QFont::Style style = QFont::StyleNormal;
};

FontFile readFile(const std::string& path)
{
    FontFile file;
    const QString name = QString::fromStdString(path);
    if (const int id = QFontDatabase::addApplicationFont(name); id >= 0) {
        const QRawFont probe(name, probePixels);
        file.families = QFontDatabase::applicationFontFamilies(id).mid(0, 1);
        file.weight = probe.weight();
        file.style = probe.style();
    } else {
        graphics::logFailure("no font: " + path);
    }
    return file;
}

// Any thread.
const FontFile& fileOf(const std::string& path)
{
    static std::mutex lock;
    static std::map<std::string, FontFile> files; // guarded by lock; what is in it stays
    const std::lock_guard guard(lock);
    const auto found = files.find(path);
    return found != files.end() ? found->second : files.emplace(path, readFile(path)).first->second;
}

} // namespace

int shapingPixels(float fontSize)
{
    return static_cast<int>(std::lround(bounded(fontSize, smallestFont, largestFont)));
}

QFont FontFinder::fontFor(const TextStyle& style)
{
    QFont font;
    if (!style.fontFamily.empty())
        font.setFamilies({QString::fromStdString(style.fontFamily)});
    font.setBold(style.bold);
    if (!style.fontFile.empty()) {
        const FontFile& file = fileOf(style.fontFile);
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

GlyphOutlines& FontFinder::glyphsOf(const QRawFont& font)
{
    const auto found = std::ranges::find(_fonts, font, &GlyphOutlines::font);
    if (found != _fonts.end())
        return *found;
    if (_fonts.size() == fontsToKnow)
        _fonts.erase(_fonts.begin());
    return _fonts.emplace_back(font);
}

} // namespace tavlo::scene
