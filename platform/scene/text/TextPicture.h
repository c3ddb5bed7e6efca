#pragma once

#include "graphics/Texture.h"
#include "scene/Geometry.h"
#include "scene/text/TextAtlas.h"
#include "scene/text/TextShape.h"

#include <QImage>

#include <optional>
#include <string>
#include <vector>

namespace tavlo::scene {

class Director;
class Renderer;

/// The picture of one text: a small one in the director's atlas, a large one in textures of its own, as many as its
/// length takes. They are kept for the next text where it fits. Frame thread.
class TextPicture
{
public:
    explicit TextPicture(Director& director) : _director(director) {}
    ~TextPicture();
    TextPicture(const TextPicture&) = delete;
    TextPicture& operator=(const TextPicture&) = delete;

    /// Shapes the words, for `raster` to draw, and gives their size, whole pixels. Zero without an application object of
    /// Qt Gui.
    Size shape(const std::string& text, const TextStyle& style);

    /// Draws the words that were shaped last, which are let go then. False when the device cannot: nothing is shown, and
    /// it may be tried again.
    bool raster(const TextStyle& style);

    /// `transform` goes from the text's left bottom.
    void draw(Renderer& renderer, const Affine& transform, Color4B tint) const;

private:
    struct Tile
    {
        graphics::TexturePtr texture; ///< at least as large as what it shows
        Rect place;                   ///< from the text's left bottom, pixels
        Rect shown;                   ///< texels from the texture's left top, y down
    };

    bool rasterSmall(const QImage& image, const Rect& place);
    bool rasterLarge(const QImage& image, const Rect& place);
    bool rasterTile(Tile& tile, const QImage& image, QRect part, const Rect& place);
    bool upload(Tile& tile, const QImage& image, QRect part);

    Director& _director;
    std::optional<TextShape> _shape; ///< not drawn yet
    TextAtlas::Slot _slot;           ///< of a small text
    std::vector<Tile> _tiles;
    std::size_t _used = 0; ///< tiles of the present text
};

} // namespace tavlo::scene
