#pragma once

#include "scene/text/TextStyle.h"

#include <QFont>
#include <QStringList>

#include <string>
#include <vector>

namespace tavlo::scene {

/// Finds the fonts of styles. A font file is made known to Qt once, for the whole process, as Qt has it. Frame thread.
class FontFinder
{
public:
    /// The style's font at a whole number of pixels, the nearest to its size; the text is scaled by the rest. A file
    /// that is no font is logged and leaves the family.
    QFont fontFor(const TextStyle& style);

private:
    struct KnownFile
    {
        std::string path;
        QStringList families; ///< empty: it is no font
        int weight = QFont::Normal;
        QFont::Style style = QFont::StyleNormal;
    };

    const KnownFile& fileOf(const std::string& path);

    std::vector<KnownFile> _files;
};

/// The whole number of pixels at which a size is shaped.
int shapingPixels(float fontSize);

} // namespace tavlo::scene
