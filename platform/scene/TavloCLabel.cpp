#include "scene/TavloCLabel.h"

#include "graphics/Log.h"
#include "scene/FileUtils.h"
#include "scene/text/TextBounds.h"

#include <QImageReader>

namespace tavlo::scene {

RefPtr<TavloCLabel> TavloCLabel::createWithTTF(Director& director, const TTFConfig& config, std::string_view text)
{
    RefPtr<TavloCLabel> label = create(director);
    label->setTTFConfig(config);
    label->setString(text);
    return label;
}

bool TavloCLabel::setTTFConfig(const TTFConfig& config)
{
    setSystemFontSize(config.fontSize);
    _config.fontSize = textStyle().fontSize;
    if (config.fontFilePath == _config.fontFilePath)
        return true;
    const std::string found =
        config.fontFilePath.empty() ? std::string() : director().fileUtils().fullPathForFilename(config.fontFilePath);
    if (found.empty() && !config.fontFilePath.empty()) {
        graphics::logFailure("no such font file: " + config.fontFilePath);
        return false;
    }
    _config.fontFilePath = config.fontFilePath;
    setStyle(&TextStyle::fontFile, found);
    return true;
}

void TavloCLabel::setFillColor(Color4B color) { setTextColor(color); }

void TavloCLabel::setFillGradient(Color4B begin, Color4B end)
{
    setStyle(&TextStyle::fill, TextFill::Gradient);
    setStyle(&TextStyle::fillColor, begin);
    setStyle(&TextStyle::fillEndColor, end);
}

bool TavloCLabel::setFillTexture(const std::string& path)
{
    const bool known = path == _fillTexturePath && !textStyle().fillTexture.isNull();
    const std::string found = known ? std::string() : director().fileUtils().fullPathForFilename(path);
    const QImage image = known           ? textStyle().fillTexture
                         : found.empty() ? QImage()
                                         : QImageReader(QString::fromStdString(found)).read();
    if (image.isNull()) {
        graphics::logFailure("no picture to fill a text with: " + path);
        return false;
    }
    _fillTexturePath = path;
    setStyle(&TextStyle::fillTexture, image);
    setStyle(&TextStyle::fill, TextFill::Texture);
    return true;
}

void TavloCLabel::setShadow(Color4B color, Vec2 offset, float blur)
{
    setStyle(&TextStyle::shadowColor, color);
    setStyle(&TextStyle::shadowOffset,
             {bounded(offset.x, -farthestShadow, farthestShadow), bounded(offset.y, -farthestShadow, farthestShadow)});
    setStyle(&TextStyle::shadowBlur, bounded(blur, 0, widestBlur));
}

void TavloCLabel::setOutline(Color4B color, float size, float blur)
{
    setStyle(&TextStyle::outlineColor, color);
    setStyle(&TextStyle::outlineSize, bounded(size, 0, widestOutline));
    setStyle(&TextStyle::outlineBlur, bounded(blur, 0, widestBlur));
}

} // namespace tavlo::scene
