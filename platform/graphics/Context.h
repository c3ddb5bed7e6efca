#pragma once

#include "graphics/Buffer.h"
#include "graphics/CommandList.h"
#include "graphics/Fence.h"
#include "graphics/Program.h"
#include "graphics/State.h"
#include "graphics/Texture.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

namespace tavlo::graphics {

enum class MapMode : std::uint8_t
{
    WriteDiscard,     ///< what was there is lost; the whole has to be written
    WriteNoOverwrite, ///< buffers only: the caller touches no byte that a draw may still read
    Read,             ///< staging textures only
};

/// One stream of work on the device: draws, writes and copies happen in the order of the calls.
///
/// Owner's thread: the thread of the first call (or of `attach`) until `detach`. The immediate context is the frame
/// thread's. A deferred context writes textures on a thread of its own; what it writes into dynamic textures shows in
/// the immediate context when the command list is executed there, and not before. A deferred context may draw into and
/// write default textures too, as long as the immediate context does not use them before it has executed the list.
///
/// Nothing here waits for the graphics processor, `map` with Read excepted; with the software renderer a call may wait for
/// that of another thread (docs/graphics.md). Nothing allocates once the textures and
/// buffers in use have been through once. Failures are logged and returned; a call that fails changes nothing.
class Context
{
public:
    struct Impl;

    /// For the device alone.
    explicit Context(std::unique_ptr<Impl> impl);
    ~Context();
    Context(const Context&) = delete;
    Context& operator=(const Context&) = delete;

    bool isImmediate() const;

    /// Makes the calling thread the owner. False when another thread still is.
    bool attach();

    /// Lets go of the calling thread, so that another one may take the context.
    void detach();

    // Writing and reading

    /// A dynamic texture with WriteDiscard, or a staging texture with Read. Dynamic textures are written in place, into
    /// memory that the driver reads from, or that the immediate context copies with the software renderer; a mapped
    /// texture still draws what it showed before. Nothing, and a line in the log, on failure.
    std::optional<Mapped> map(Texture& texture, MapMode mode);

    /// Ends `map`. On a deferred context the picture goes into its next command list; when the texture is in that list
    /// already, the newer picture takes the place of the older.
    void unmap(const TexturePtr& texture);

    /// A dynamic buffer, whole.
    std::byte* map(Buffer& buffer, MapMode mode);
    void unmap(Buffer& buffer);

    /// Writes the box of a default texture from memory with that row pitch.
    bool updateSubresource(Texture& texture, const Box& box, const void* data, std::uint32_t rowPitch);

    /// Copies the source's box to x, y of the target, which is a default or a staging texture of the same format. The
    /// source is a default texture; on the immediate context it may be a dynamic one. A staging target can be read
    /// (`Texture::mapRead`) by any thread after this call.
    bool copySubresourceRegion(Texture& target, std::uint32_t x, std::uint32_t y, const TexturePtr& source,
                               const Box& box);

    /// The same with the whole of the source, to 0, 0.
    bool copyResource(Texture& target, const TexturePtr& source);

    /// Deferred contexts: everything written since the last list. Null on the immediate context.
    CommandListPtr finishCommandList();

    /// Immediate context: waits on the graphics processor for the list's fence and shows its pictures. Afterwards the
    /// list is used up.
    bool executeCommandList(CommandListPtr list);

    /// Hands all work to the device, and marks its end.
    Fence flush();

    // Drawing. The settings stay until they are changed or cleared; a draw holds a reference to all it uses.

    void setRenderTarget(TexturePtr color, TexturePtr depth = nullptr);
    const TexturePtr& renderTarget() const;
    const TexturePtr& depthTarget() const;
    void setViewport(const Viewport& viewport);
    const Viewport& viewport() const;
    void setScissor(const std::optional<Viewport>& area); ///< nothing outside the area is drawn; null: no limit
    void setBlendState(const BlendState& state);
    void setDepthState(const DepthState& state);
    void setProgram(ProgramPtr program);
    void setTexture(int unit, TexturePtr texture, Sampler sampler); ///< a null texture gives zeros
    void setInputLayout(std::shared_ptr<const InputLayout> layout);
    const std::shared_ptr<const InputLayout>& inputLayout() const;
    void setVertexBuffer(BufferPtr buffer, std::uint32_t stride, std::uint32_t offset);
    void setIndexBuffer(BufferPtr buffer); ///< 16 bit indices
    void setTopology(Topology topology);

    /// Sets a uniform of a program, from 4-byte components. Texture uniforms have their units from the start.
    bool setUniform(Program& program, const Uniform& uniform, std::span<const std::byte> values);

    bool draw(std::uint32_t vertexCount, std::uint32_t firstVertex);
    bool drawIndexed(std::uint32_t indexCount, std::uint32_t firstIndex);

    /// Both take any target, set or not, and cover it whole.
    bool clearRenderTarget(const TexturePtr& target, const Rgba& color);
    bool clearDepth(const TexturePtr& target, float depth, std::uint8_t stencil);

    /// All settings as they were at first; every reference is let go.
    void clearState();

    Impl& impl() { return *_impl; }

private:
    const std::unique_ptr<Impl> _impl;
};

using ContextPtr = std::shared_ptr<Context>;

} // namespace tavlo::graphics
