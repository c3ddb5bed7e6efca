#pragma once

#include <cstdint>
#include <memory>

namespace tavlo::graphics {

enum class BufferKind : std::uint8_t
{
    Vertex,
    Index
};

struct BufferDesc
{
    std::uint32_t size = 0; ///< bytes
    BufferKind kind = BufferKind::Vertex;
    bool dynamic = false; ///< written by `map`; otherwise the bytes given at creation stay
};

/// Vertices or indices on the device. Held by shared pointers; the last one may go on any thread.
class Buffer
{
public:
    struct Impl;

    /// For the device alone.
    explicit Buffer(std::unique_ptr<Impl> impl);
    ~Buffer();
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    const BufferDesc& desc() const;

    Impl& impl() { return *_impl; }
    const Impl& impl() const { return *_impl; }

private:
    const std::unique_ptr<Impl> _impl;
};

using BufferPtr = std::shared_ptr<Buffer>;

} // namespace tavlo::graphics
