#pragma once

#include "graphics/Texture.h"
#include "graphics/gl/DeviceCore.h"

#include <atomic>
#include <mutex>
#include <optional>
#include <vector>

namespace tavlo::graphics {

class Timeline;

/// One set of pixels on the device.
struct Picture
{
    GLuint name = 0;
    std::uint64_t serial = 0; ///< never given twice, unlike the name
    Fence lastUse;            ///< behind it nothing on the device reads or writes the pixels
};

/// A default texture has one picture. A dynamic one has a picture that is drawn and others that the next contents are
/// written to, so that neither the writer nor the drawing ever waits for the other: the picture written last takes the
/// place of the drawn one, which becomes a spare. Two are the rule, three when the device is behind.
struct Texture::Impl
{
    Impl(std::shared_ptr<DeviceCore> deviceCore, const TextureDesc& textureDesc, const FormatRow& formatRow);
    ~Impl();

    /// Rows in memory.
    std::uint32_t rows() const { return formatRows(desc.format, desc.height); }

    /// A picture that may be written from now on by the context of that timeline, which is current. The graphics
    /// processor waits where it has to. None when the drawing context never flushes.
    std::optional<Picture> takeSpare(const Timeline* writer);

    /// Dynamic: shows the picture; what was shown is in use until that fence has passed.
    void show(Picture picture, Fence drawnUntil);
    void giveSpare(Picture picture);

    /// What is drawn at the moment.
    Picture shown();

    /// New pixels in device memory, not yet written. A context is current.
    Picture makePicture() const;

    // fixed after create
    const std::shared_ptr<DeviceCore> core;
    const TextureDesc desc;
    const FormatRow& row;

    std::mutex lock;
    Picture front;               // guarded by lock; of a default texture fixed after create
    std::vector<Picture> spares; // guarded by lock
    int pictureCount = 0;        // guarded by lock

    // the mapping thread's
    PixelBuffer upload; ///< of a mapped dynamic texture

    // the drawing thread's
    PixelBuffer unsent; ///< of a dynamic texture: its contents, as long as they lie in plain memory alone

    // staging: the copying thread's until it hands the texture on, then the reading thread's
    PixelBuffer store;
    Fence arrival;
    bool filled = false;
    std::atomic<bool> reading{false};
};

} // namespace tavlo::graphics
