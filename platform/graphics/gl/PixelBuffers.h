#pragma once

#include "graphics/Fence.h"
#include "graphics/gl/GlApi.h"

#include <cstddef>
#include <mutex>
#include <vector>

namespace tavlo::graphics {

/// A buffer through which pixels go to or come from the device.
struct PixelBuffer
{
    GLuint name = 0;
    std::size_t capacity = 0;    ///< bytes
    std::byte* memory = nullptr; ///< where the buffer is kept mapped for good
    Fence lastUse;               ///< behind it the device has done with the buffer
};

enum class PixelDirection : std::uint8_t
{
    ToDevice,
    FromDevice
};

/// A new buffer; `keepMapped` needs `GL_EXT_buffer_storage`. Name 0 on failure. A context is current.
PixelBuffer createPixelBuffer(std::size_t bytes, PixelDirection direction, bool keepMapped);

/// The upload buffers that no texture is writing to, shared by all textures of a device. Any thread with a context.
///
/// Four dynamic textures of one source thus run on two or three buffers, and pictures that are uploaded once and never
/// again keep none.
class PixelBufferPool
{
public:
    explicit PixelBufferPool(bool keepMapped) : _keepMapped(keepMapped) {}

    /// One that the device has done with, or a new one. Name 0 on failure.
    PixelBuffer take(std::size_t bytes);

    /// Keeps the buffer for later; `lastUse` tells from when on.
    void give(PixelBuffer buffer);

    /// Deletes all of them.
    void clear();

private:
    const bool _keepMapped;

    std::mutex _lock;
    std::vector<PixelBuffer> _idle; // guarded by _lock; oldest first
    std::size_t _idleBytes = 0;     // guarded by _lock
};

} // namespace tavlo::graphics
