#pragma once

#include "graphics/Adapter.h"
#include "graphics/Context.h"
#include "graphics/SwapChain.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace tavlo::graphics {

/// How pictures get into the memory of the device and back.
enum class Transfer : std::uint8_t
{
    Best,          ///< what suits the driver
    KeptBuffers,   ///< through buffers that stay mapped, where the driver can keep them so
    MappedBuffers, ///< through buffers that are mapped for each use
};

struct DeviceOptions
{
    int adapter = -1; ///< index into `enumerateAdapters`; -1 takes the display server's, else the first
    Transfer transfer = Transfer::Best;
};

class DeviceCore;

/// A graphics processor, or the software renderer, and everything made on it.
///
/// Every operation may be called on any thread. What is made keeps the device alive as long as it needs it, so the
/// order of destruction does not matter. Making something on a thread that owns no context of the device takes a lock
/// and waits until it is made; the frame thread owns the immediate context and waits for nothing.
class Device
{
public:
    /// Null, and the reason in the log, when the adapter is not there or cannot be opened.
    static std::shared_ptr<Device> create(const DeviceOptions& options = {});
    ~Device();
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    const Adapter& adapter() const;

    /// Whether windows can be drawn on: a display server was reachable and is served by this adapter.
    bool hasDisplay() const;

    /// The driver's identity: vendor, renderer and version. A program binary fits only where it is the same.
    const std::string& driverIdentity() const;

    FormatSupport formatSupport(Format format) const;
    std::uint32_t maxTextureSize() const; ///< texels

    /// The newest message of the driver's debug log and of this library about the device; empty when there was none.
    std::string lastMessage() const;

    const ContextPtr& immediateContext() const;

    /// A new context for a thread of its own, or null.
    ContextPtr createDeferredContext();

    /// Null, and the reason in the log, for an empty size, one above `maxTextureSize`, or a format that the device
    /// cannot use so. `data` holds all rows with that pitch and is for default textures only.
    TexturePtr createTexture(const TextureDesc& desc, const void* data = nullptr, std::uint32_t rowPitch = 0);

    /// `data` has desc.size bytes, or none for a dynamic buffer.
    BufferPtr createBuffer(const BufferDesc& desc, std::span<const std::byte> data = {});

    /// Compiles and links; null with the driver's messages in `messages` when the shaders are wrong.
    ProgramPtr createProgram(const std::string& vertexSource, const std::string& fragmentSource, std::string& messages);

    /// Null when the driver refuses the bytes.
    ProgramPtr createProgramFromBinary(std::span<const std::byte> binary);

    /// A chain on a window that the host handed over (`Window::handle` of ours); null without a display, or when the
    /// window is not one. The size is that of the back buffer, in pixels.
    SwapChainPtr createSwapChain(NativeWindow window, std::uint32_t width, std::uint32_t height);

private:
    explicit Device(std::shared_ptr<DeviceCore> core);

    const std::shared_ptr<DeviceCore> _core;
    ContextPtr _immediate; ///< fixed after create
};

using DevicePtr = std::shared_ptr<Device>;

} // namespace tavlo::graphics
