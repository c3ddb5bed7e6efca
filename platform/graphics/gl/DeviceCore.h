#pragma once

#include "graphics/Adapter.h"
#include "graphics/State.h"
#include "graphics/gl/EglPlatform.h"
#include "graphics/gl/FormatTable.h"
#include "graphics/gl/PixelBuffers.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <source_location>
#include <string>
#include <vector>

namespace tavlo::graphics {

struct DeviceOptions;
enum class Transfer : std::uint8_t;
class CommandList;

/// The unit at which textures are bound to be written, so that no draw's binding is touched.
inline constexpr GLenum scratchUnit = GL_TEXTURE0 + 16;

/// What all contexts and objects of a device share. It goes with the last of them.
class DeviceCore
{
public:
    /// Null, and the reason in the log, when the adapter cannot be opened.
    static std::shared_ptr<DeviceCore> open(const DeviceOptions& options);
    ~DeviceCore();
    DeviceCore(const DeviceCore&) = delete;
    DeviceCore& operator=(const DeviceCore&) = delete;

    /// Logs a failure and keeps it as the last message. Any thread.
    void fail(const std::string& text, std::source_location where = std::source_location::current());

    /// Keeps a text as the last message. Any thread.
    void note(std::string text);
    std::string lastMessage() const;

    /// The calling thread's turn to call GL; it lasts as long as the value. The software renderer looks through the
    /// unfinished work of every context of the process when one of them writes or reads a texture, and takes no lock
    /// for it, so its users take turns. Other drivers need none. A thread may take further turns within its own.
    using Turn = std::unique_lock<std::recursive_mutex>;
    Turn takeTurn() const;

    /// Makes a context of this device current on the calling thread, and remembers that it is ours.
    bool makeCurrent(EGLContext context, EGLSurface surface = EGL_NO_SURFACE) const;

    /// Whether a context of this device is current on the calling thread.
    bool isCurrentHere() const;

    /// A further context in the share group, not current anywhere.
    EGLContext createContext(EGLConfig config = EGL_NO_CONFIG_KHR) const;

    /// Sets up what every context of the device has; it is current.
    void prepareContext();

    /// GL objects to be deleted when a context is current next. Any thread.
    enum class Grave : std::uint8_t
    {
        Texture,
        Buffer,
        Program
    };
    void bury(Grave kind, GLuint name);
    void deleteBuried();

    /// Rises with every texture that goes.
    std::uint32_t buriedTextures() const { return _buriedTextures.load(); }

    std::uint64_t nextSerial() { return _serial.fetch_add(1) + 1; }

    std::unique_ptr<CommandList> takeCommandList();
    void giveCommandList(std::unique_ptr<CommandList> list);

    FormatSupport support(Format format) const;

    // fixed after open
    EglTarget target;
    Adapter adapter;
    std::string driverIdentity;
    std::uint32_t maxTextureSize = 0;
    PixelMemory bufferMemory = PixelMemory::Mapped; ///< of what GL keeps: Mapped or Kept
    GLuint zeroTexture = 0;                         ///< one transparent black texel: what stands for no texture
    std::array<GLuint, samplerCount> samplers{};

    /// Plain with the software renderer: no other thread than the frame's reaches it then for a picture, and a picture
    /// that is never drawn is never copied.
    std::unique_ptr<PixelBufferPool> uploads;

private:
    friend class CurrentContext;

    DeviceCore() = default;

    bool start(Transfer transfer);
    void probeFormats();
    void makeSharedObjects();

    EGLContext _service = EGL_NO_CONTEXT; // fixed after open; used under _serviceLock
    std::mutex _serviceLock;
    std::vector<FormatSupport> _support; // fixed after open; in the order of formatRows()
    std::atomic<std::uint64_t> _serial{0};
    std::atomic<std::uint32_t> _buriedTextures{0};

    std::mutex _graveLock;
    std::array<std::vector<GLuint>, 3> _graves; // guarded by _graveLock
    std::atomic<bool> _hasGraves{false};

    std::mutex _listLock;
    std::vector<std::unique_ptr<CommandList>> _lists; // guarded by _listLock

    mutable std::mutex _messageLock;
    std::string _message; // guarded by _messageLock
};

/// Sees to it that a context of the device is current on this thread, as long as the object lives.
///
/// A thread that owns one goes on with it. Any other borrows the device's service context, one thread at a time, and
/// waits at the end until its work can be seen everywhere.
class CurrentContext
{
public:
    explicit CurrentContext(DeviceCore& core);
    ~CurrentContext();
    CurrentContext(const CurrentContext&) = delete;
    CurrentContext& operator=(const CurrentContext&) = delete;

    explicit operator bool() const { return _ready; }

private:
    struct Borrowed
    {
        explicit Borrowed(DeviceCore& core) : lock(core._serviceLock) {}
        std::unique_lock<std::mutex> lock;
        CurrentEglState before;
    };

    std::optional<Borrowed> _borrowed;
    DeviceCore::Turn _turn;
    bool _ready = false;
};

} // namespace tavlo::graphics
