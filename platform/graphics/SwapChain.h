#pragma once

#include "graphics/Context.h"

#include <cstdint>
#include <memory>
#include <string>

namespace tavlo::graphics {

/// The window system's own number of a window; under X11 its XID.
using NativeWindow = std::uintptr_t;

/// A window of our own, for projections. The thread that made it, always the same one for all windows.
class Window
{
public:
    struct Place
    {
        int x = 0, y = 0; ///< desktop pixels, y down
        int width = 0, height = 0;
    };

    /// Undecorated and shown at once. Null, and the reason in the log, without a display server.
    static std::unique_ptr<Window> create(const std::string& title, const Place& place);
    ~Window();
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    NativeWindow handle() const;
    void setPlace(const Place& place);

    /// Lets the window system's events through to all windows. Never blocks.
    static void processEvents();

private:
    explicit Window(void* window) : _window(window) {}

    void* _window;
};

enum class PresentResult : std::uint8_t
{
    Presented,
    Failed,
    DeviceLost
};

/// A back buffer and the window that shows it.
///
/// The back buffer is an ordinary render target, bottom row first; what it holds stays after `present`. A window of
/// another size shows it stretched. Frame thread, like the immediate context.
class SwapChain
{
public:
    struct Impl;

    /// For the device alone.
    explicit SwapChain(std::unique_ptr<Impl> impl);
    ~SwapChain();
    SwapChain(const SwapChain&) = delete;
    SwapChain& operator=(const SwapChain&) = delete;

    const TexturePtr& backBuffer() const;

    /// Another target to show from the next `present` on, of any size.
    void setBackBuffer(TexturePtr target);

    /// Shows the back buffer, without waiting for the screen. The context's settings stay.
    PresentResult present(Context& immediate);

private:
    const std::unique_ptr<Impl> _impl;
};

using SwapChainPtr = std::unique_ptr<SwapChain>;

} // namespace tavlo::graphics
