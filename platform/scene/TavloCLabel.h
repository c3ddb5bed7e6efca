#pragma once

#include "scene/Label.h"

namespace tavlo::scene {

/// The font of a label.
struct TTFConfig
{
    std::string fontFilePath; ///< UTF-8, found through `FileUtils`; empty takes the system's own font
    float fontSize = 20;      ///< pixels
    bool operator==(const TTFConfig&) const = default;
};

/// Text with a look: filled plainly, by a gradient or a picture, with a shadow and an outline, each of which may be
/// blurred. Sizes are held within `TextBounds.h`. Frame thread.
class TavloCLabel : public Label
{
public:
    static RefPtr<TavloCLabel> create(Director& director) { return makeRef<TavloCLabel>(director); }
    static RefPtr<TavloCLabel> createWithTTF(Director& director, const TTFConfig& config, std::string_view text);
    explicit TavloCLabel(Director& director) : Label(director) {}
    std::string_view className() const override { return "TavloCLabel"; }

    const TTFConfig& ttfConfig() const { return _config; }

    /// False when the file is not there: the font stays, the size is taken.
    bool setTTFConfig(const TTFConfig& config);

    void setFillColor(Color4B color);

    /// From the top of each line to its bottom.
    void setFillGradient(Color4B begin, Color4B end);

    /// Tiles the text with a picture, found through `FileUtils`. False, and the fill stays, when it cannot be read.
    bool setFillTexture(const std::string& path);

    /// \param offset  pixels, y up
    /// \param blur    pixels that the edge reaches out
    void setShadow(Color4B color, Vec2 offset, float blur);

    /// \param size  pixels around the glyphs
    void setOutline(Color4B color, float size, float blur);

private:
    TTFConfig _config;
    std::string _fillTexturePath;
};

} // namespace tavlo::scene
