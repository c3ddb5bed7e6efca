#pragma once

#include "scene/Geometry.h"

#include <QImage>

#include <string>

namespace tavlo::scene {

enum class TextHAlignment : std::uint8_t
{
    Left,
    Center,
    Right
};

enum class TextVAlignment : std::uint8_t
{
    Top,
    Center,
    Bottom
};

enum class TextFill : std::uint8_t
{
    Solid,
    Gradient, ///< down each line, from `fillColor` to `fillEndColor`
    Texture   ///< tiles the text, from its left top
};

/// The look of a text, all that its picture depends on beside the words.
struct TextStyle
{
    // the font: the file when there is one, else the family
    std::string fontFile;   ///< UTF-8
    std::string fontFamily; ///< UTF-8; empty takes the system's own
    float fontSize = 20;    ///< pixels of the em square
    bool bold = false;      ///< for families; a file is as bold as it is

    TextHAlignment hAlignment = TextHAlignment::Left;
    TextVAlignment vAlignment = TextVAlignment::Top;
    Size dimensions; ///< pixels, 0 is as large as the text: lines break at the width and are cut at the height

    TextFill fill = TextFill::Solid;
    Color4B fillColor{255, 255, 255, 255};
    Color4B fillEndColor{255, 255, 255, 255};
    QImage fillTexture;

    // a colour of alpha 0 leaves the part out
    Color4B shadowColor;
    Vec2 shadowOffset;    ///< pixels, y up
    float shadowBlur = 0; ///< pixels: how far the edge reaches out; its spread (sigma) is half of it
    Color4B outlineColor;
    float outlineSize = 0; ///< pixels around the glyphs
    float outlineBlur = 0;

    bool operator==(const TextStyle&) const = default;
};

} // namespace tavlo::scene
