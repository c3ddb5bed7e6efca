#pragma once

#include "graphics/SwapChain.h"

#include <optional>

// The only door to the display server: everything that knows one is behind this header.

namespace tavlo::graphics {

struct DisplayServer
{
    std::uint32_t eglPlatform = 0; ///< as `eglGetPlatformDisplay` takes it
    void* nativeDisplay = nullptr;
};

/// The connection to the display server, made at the first call and kept to the end of the process. Nothing when there
/// is none; that is a normal state and is logged once. Any thread.
std::optional<DisplayServer> connectDisplayServer();

struct NativeWindowInfo
{
    std::uint32_t width = 0, height = 0; ///< pixels
    std::int32_t visual = 0;             ///< as EGL_NATIVE_VISUAL_ID counts them; 0 when not told
};

/// Nothing when there is no such window.
std::optional<NativeWindowInfo> queryWindow(NativeWindow window);

} // namespace tavlo::graphics
