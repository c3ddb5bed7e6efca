#pragma once

#include "graphics/Fence.h"
#include "graphics/gl/GlApi.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace tavlo::graphics {

/// Where the bytes of a buffer lie.
enum class PixelMemory : std::uint8_t
{
    Mapped, ///< in a buffer of GL that is mapped for each use
    Kept,   ///< in one that stays mapped; needs `GL_EXT_buffer_storage`
    Plain,  ///< in the processor's memory, without GL
};

/// A buffer through which pixels go to or come from the device.
struct PixelBuffer
{
    GLuint name = 0;
    std::size_t capacity = 0;    ///< bytes; 0 for none
    std::byte* memory = nullptr; ///< where the buffer is kept mapped for good, or plain
    Fence lastUse;               ///< behind it the device has done with the buffer
    std::unique_ptr<std::byte[]> plain;
};

enum class PixelDirection : std::uint8_t
{
    ToDevice,
    FromDevice
};

/// A new buffer; without capacity on failure. A context is current unless it is plain.
PixelBuffer createPixelBuffer(std::size_t bytes, PixelDirection direction, PixelMemory kind);

/// The upload buffers that no texture is writing to, shared by all textures of a device. Any thread, with a context
/// unless they are plain.
///
/// Four dynamic textures of one source thus run on two or three buffers, and pictures that are uploaded once and never
/// again keep none.
class PixelBufferPool
{
public:
    explicit PixelBufferPool(PixelMemory kind) : _kind(kind) {}

    bool isPlain() const { return _kind == PixelMemory::Plain; }

    /// One that the device has done with, or a new one; without capacity on failure.
    PixelBuffer take(std::size_t bytes);

    /// Keeps the buffer for later; `lastUse` tells from when on.
    void give(PixelBuffer buffer);

    /// Deletes all of them.
    void clear();

private:
    static void drop(const PixelBuffer& buffer);

    const PixelMemory _kind;

    std::mutex _lock;
    std::vector<PixelBuffer> _idle; // guarded by _lock; oldest first
    std::size_t _idleBytes = 0;     // guarded by _lock
};

} // namespace tavlo::graphics
