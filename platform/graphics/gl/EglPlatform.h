#pragma once

#include "graphics/Adapter.h"
#include "graphics/gl/GlApi.h"

#include <optional>

namespace tavlo::graphics {

/// An EGL display that has been opened, and what contexts on it are made with.
///
/// Displays stay open to the end of the process: the host may have opened the same one.
struct EglTarget
{
    EGLDisplay display = EGL_NO_DISPLAY;
    EGLDeviceEXT device = EGL_NO_DEVICE_EXT; ///< none when the platform does not tell
    bool windows = false;
};

/// The target of an adapter's number, or with -1 the best one. Nothing, and the reason in the log, when there is none.
std::optional<EglTarget> openTarget(int adapter);

/// What the renderer behind a target says of itself. Makes a context for a moment.
std::optional<Adapter> describeTarget(const EglTarget& target);

/// An OpenGL ES 3 context, or none. `config` is the one of a window surface, or EGL_NO_CONFIG_KHR.
EGLContext createEglContext(EGLDisplay display, EGLConfig config, EGLContext shareWith);

/// A config for windows of that visual (0: any), or EGL_NO_CONFIG_KHR.
EGLConfig windowConfig(EGLDisplay display, EGLint visual);

/// "0x3002 (EGL_BAD_ACCESS)" and so on, of the thread's last EGL call.
std::string eglErrorText();

bool hasEglExtension(EGLDisplay display, std::string_view name);

/// The surroundings of a thread's current context: put back when the object goes.
class CurrentEglState
{
public:
    CurrentEglState();
    ~CurrentEglState();
    CurrentEglState(const CurrentEglState&) = delete;
    CurrentEglState& operator=(const CurrentEglState&) = delete;

private:
    const EGLDisplay _display;
    const EGLSurface _draw, _read;
    const EGLContext _context;
};

} // namespace tavlo::graphics
