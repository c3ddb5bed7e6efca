#pragma once

#include "graphics/Device.h"

#include <QImage>

#include <memory>
#include <string>
#include <vector>

namespace tavlo::scene {

class Director;

/// Textures from files and images. Frame thread.
class TextureCache
{
public:
    explicit TextureCache(Director& director) : _director(director) {}

    /// A picture file, premultiplied; the same texture as long as somebody holds it. Null, and the reason in the log,
    /// when it cannot be read.
    graphics::TexturePtr addImage(const std::string& path);

    /// A new premultiplied texture of an image of any format. Null without a view, or when the device cannot.
    graphics::TexturePtr createTexture(const QImage& image);

    /// Shows another image in a texture of `createTexture`; one of another size gets a new texture. False when it cannot.
    bool updateTexture(graphics::TexturePtr& texture, const QImage& image);

private:
    struct Known
    {
        std::string path;
        std::weak_ptr<graphics::Texture> texture;
    };

    Director& _director;
    std::vector<Known> _known;
};

} // namespace tavlo::scene
