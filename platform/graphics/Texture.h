#pragma once

#include "graphics/Format.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

namespace tavlo::graphics {

enum class Usage : std::uint8_t
{
    Default, ///< filled by draws, copies and `updateSubresource`
    Dynamic, ///< filled by `map` with WriteDiscard
    Staging, ///< takes copies of Default textures and gives them to the processor
};

struct TextureDesc
{
    std::uint32_t width = 0;  ///< texels
    std::uint32_t height = 0; ///< picture rows; NV12 takes more in memory, see `formatRows`
    Format format = Format::R8G8B8A8_UNORM;
    Usage usage = Usage::Default;
    bool renderTarget = false; ///< Default only; a depth format makes it a depth target
};

/// Memory that the caller may touch until it unmaps. Rows lie in the order in which the texture keeps them.
struct Mapped
{
    std::byte* data = nullptr;
    std::uint32_t rowPitch = 0; ///< bytes from one row to the next; at least 64 bytes of room follow the last row
};

/// A two-dimensional picture on the device, with one level. It is its own view: what is drawn from, drawn into and
/// handed on is the texture.
///
/// Orientation: a decoded picture keeps its top row first, a render target its bottom row first. Nothing here turns a
/// picture over: `map`, `updateSubresource`, copies and read-back keep the order of rows, and who hands a picture on
/// says which of the two it is.
///
/// A new texture holds zeros. Held by shared pointers; the last one may go on any thread, and what a context still
/// draws stays until it is drawn.
class Texture : public std::enable_shared_from_this<Texture>
{
public:
    struct Impl;

    /// For the device alone.
    explicit Texture(std::unique_ptr<Impl> impl);
    ~Texture();
    Texture(const Texture&) = delete;
    Texture& operator=(const Texture&) = delete;

    /// Any thread.
    const TextureDesc& desc() const;

    /// Staging only: waits without a context until the last copy has arrived and shows it. Nothing, and a line in the
    /// log, when it does not arrive in time, nothing was ever copied, or it is mapped already. Any one thread at a
    /// time.
    std::optional<Mapped> mapRead(std::chrono::milliseconds timeout = std::chrono::seconds(2));

    /// Ends `mapRead`.
    void unmapRead();

    Impl& impl() { return *_impl; }
    const Impl& impl() const { return *_impl; }

private:
    const std::unique_ptr<Impl> _impl;
};

using TexturePtr = std::shared_ptr<Texture>;

} // namespace tavlo::graphics
