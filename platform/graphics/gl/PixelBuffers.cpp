#include "graphics/gl/PixelBuffers.h"

#include <algorithm>
#include <new>
#include <utility>

namespace tavlo::graphics {

namespace {

constexpr std::size_t idleLimit = std::size_t{256} << 20; // sixteen buffers of a 2160p picture at 8 bits RGBA are half

} // namespace

PixelBuffer createPixelBuffer(std::size_t bytes, PixelDirection direction, PixelMemory kind)
{
    if (kind == PixelMemory::Plain) {
        std::unique_ptr<std::byte[]> plain(new (std::nothrow) std::byte[bytes]);
        std::byte* const memory = plain.get();
        return {0, memory ? bytes : 0, memory, {}, std::move(plain)};
    }
    static const auto bufferStorage =
        reinterpret_cast<PFNGLBUFFERSTORAGEEXTPROC>(eglGetProcAddress("glBufferStorageEXT"));
    const bool up = direction == PixelDirection::ToDevice;
    const GLenum target = up ? GL_PIXEL_UNPACK_BUFFER : GL_PIXEL_PACK_BUFFER;
    const auto size = static_cast<GLsizeiptr>(bytes);

    while (glGetError() != GL_NO_ERROR) {
    }
    const bool keepMapped = kind == PixelMemory::Kept;
    PixelBuffer buffer{0, bytes, nullptr, {}, nullptr};
    glGenBuffers(1, &buffer.name);
    glBindBuffer(target, buffer.name);
    if (keepMapped && bufferStorage) {
        const GLbitfield access =
            (up ? GL_MAP_WRITE_BIT : GL_MAP_READ_BIT) | GL_MAP_PERSISTENT_BIT_EXT | GL_MAP_COHERENT_BIT_EXT;
        bufferStorage(target, size, nullptr, access | (up ? 0U : GLbitfield{GL_CLIENT_STORAGE_BIT_EXT}));
        buffer.memory = static_cast<std::byte*>(glMapBufferRange(target, 0, size, access));
    } else {
        glBufferData(target, size, nullptr, up ? GL_STREAM_DRAW : GL_STREAM_READ);
    }
    const bool failed = glGetError() != GL_NO_ERROR || (keepMapped && !buffer.memory);
    glBindBuffer(target, 0);
    if (failed) {
        glDeleteBuffers(1, &buffer.name);
        return {};
    }
    return buffer;
}

PixelBuffer PixelBufferPool::take(std::size_t bytes)
{
    {
        const std::lock_guard guard(_lock);
        const auto found = std::ranges::find_if(_idle, [bytes](const PixelBuffer& buffer) {
            return buffer.capacity >= bytes && buffer.capacity <= bytes + bytes / 4 && buffer.lastUse.passed();
        });
        if (found != _idle.end()) {
            PixelBuffer buffer = std::move(*found);
            _idle.erase(found);
            _idleBytes -= buffer.capacity;
            return buffer;
        }
    }
    return createPixelBuffer(bytes, PixelDirection::ToDevice, _kind);
}

void PixelBufferPool::give(PixelBuffer buffer)
{
    const std::lock_guard guard(_lock);
    _idleBytes += buffer.capacity;
    _idle.push_back(std::move(buffer));
    // GL keeps a deleted buffer until the work that reads it is done.
    while (_idleBytes > idleLimit && _idle.size() > 1) {
        _idleBytes -= _idle.front().capacity;
        drop(_idle.front());
        _idle.erase(_idle.begin());
    }
}

void PixelBufferPool::drop(const PixelBuffer& buffer)
{
    if (buffer.name != 0)
        glDeleteBuffers(1, &buffer.name);
}

void PixelBufferPool::clear()
{
    const std::lock_guard guard(_lock);
    for (const PixelBuffer& buffer : _idle)
        drop(buffer);
    _idle.clear();
    _idleBytes = 0;
}

} // namespace tavlo::graphics
