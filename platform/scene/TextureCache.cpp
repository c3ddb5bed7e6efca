#include "scene/TextureCache.h"

#include "graphics/Log.h"
#include "scene/Director.h"

#include <QImageReader>

#include <algorithm>
#include <cstring>

namespace tavlo::scene {

using graphics::Format;
using graphics::TexturePtr;
using graphics::Usage;

namespace {

constexpr QImage::Format textureFormat = QImage::Format_RGBA8888_Premultiplied;

graphics::TextureDesc descOf(const QImage& image, Usage usage)
{
    return {static_cast<std::uint32_t>(image.width()), static_cast<std::uint32_t>(image.height()),
            Format::R8G8B8A8_UNORM, usage};
}

bool fits(const graphics::TextureDesc& desc, const QImage& image)
{
    return desc.usage == Usage::Dynamic && desc.width == static_cast<std::uint32_t>(image.width()) &&
           desc.height == static_cast<std::uint32_t>(image.height());
}

} // namespace

TexturePtr TextureCache::addImage(const std::string& path)
{
    std::erase_if(_known, [](const Known& known) { return known.texture.expired(); });
    const auto found = std::ranges::find(_known, path, &Known::path);
    if (found != _known.end())
        return found->texture.lock();

    QImageReader reader(QString::fromStdString(path));
    reader.setAutoTransform(true);
    const QImage image = reader.read().convertToFormat(textureFormat);
    const graphics::DevicePtr device = _director.device();
    if (image.isNull() || !device) {
        graphics::logFailure(path + ": " + (device ? reader.errorString().toStdString() : "no view to load it for"));
        return nullptr;
    }
    TexturePtr texture = device->createTexture(descOf(image, Usage::Default), image.constBits(),
                                               static_cast<std::uint32_t>(image.bytesPerLine()));
    if (texture)
        _known.push_back({path, texture});
    return texture;
}

TexturePtr TextureCache::createTexture(const QImage& image)
{
    TexturePtr texture;
    return updateTexture(texture, image) ? texture : nullptr;
}

bool TextureCache::updateTexture(TexturePtr& texture, const QImage& image)
{
    const graphics::DevicePtr device = _director.device();
    const QImage pixels = image.convertToFormat(textureFormat);
    if (pixels.isNull() || !device)
        return false;
    if (!texture || !fits(texture->desc(), pixels))
        texture = device->createTexture(descOf(pixels, Usage::Dynamic));
    const auto mapped = texture ? _director.context()->map(*texture, graphics::MapMode::WriteDiscard) : std::nullopt;
    if (!mapped)
        return false;
    for (int row = 0; row < pixels.height(); ++row)
        std::memcpy(mapped->data + static_cast<std::size_t>(row) * mapped->rowPitch, pixels.constScanLine(row),
                    static_cast<std::size_t>(pixels.width()) * 4);
    _director.context()->unmap(texture);
    return true;
}

} // namespace tavlo::scene
