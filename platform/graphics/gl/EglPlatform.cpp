#include "graphics/gl/EglPlatform.h"

#include "graphics/DisplayServer.h"
#include "graphics/Log.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <vector>

namespace tavlo::graphics {

namespace {

template <class Function>
Function eglFunction(const char* name)
{
    return reinterpret_cast<Function>(eglGetProcAddress(name));
}

bool holdsWord(const char* words, std::string_view wanted)
{
    std::string_view rest = words ? words : "";
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find(' '), rest.size());
        if (rest.substr(0, end) == wanted)
            return true;
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return false;
}

bool hasDeviceExtension(EGLDeviceEXT device, std::string_view name)
{
    const auto query = eglFunction<PFNEGLQUERYDEVICESTRINGEXTPROC>("eglQueryDeviceStringEXT");
    return query && holdsWord(query(device, EGL_EXTENSIONS), name);
}

// The system's devices, the software renderer last.
std::vector<EGLDeviceEXT> devices()
{
    const auto query = eglFunction<PFNEGLQUERYDEVICESEXTPROC>("eglQueryDevicesEXT");
    EGLint count = 0;
    if (!hasEglExtension(EGL_NO_DISPLAY, "EGL_EXT_platform_device") || !query || !query(0, nullptr, &count))
        return {};
    std::vector<EGLDeviceEXT> found(static_cast<std::size_t>(count));
    if (!query(count, found.data(), &count))
        return {};
    found.resize(static_cast<std::size_t>(count));
    std::ranges::stable_partition(
        found, [](EGLDeviceEXT device) { return !hasDeviceExtension(device, "EGL_MESA_device_software"); });
    return found;
}

// What we build on, beyond the version.
bool usable(EGLDisplay display)
{
    EGLint major = 0, minor = 0;
    if (display == EGL_NO_DISPLAY || !eglInitialize(display, &major, &minor))
        return false;
    return (major > 1 || minor >= 5) && hasEglExtension(display, "EGL_KHR_surfaceless_context") &&
           hasEglExtension(display, "EGL_KHR_no_config_context") && hasEglExtension(display, "EGL_KHR_wait_sync");
}

EGLDeviceEXT deviceOf(EGLDisplay display)
{
    const auto query = eglFunction<PFNEGLQUERYDISPLAYATTRIBEXTPROC>("eglQueryDisplayAttribEXT");
    EGLAttrib device = 0;
    if (!query || !query(display, EGL_DEVICE_EXT, &device))
        return EGL_NO_DEVICE_EXT;
    return reinterpret_cast<EGLDeviceEXT>(device); // EGL hands pointers out as integers
}

std::optional<EglTarget> openDisplayServer()
{
    const std::optional<DisplayServer> server = connectDisplayServer();
    if (!server)
        return std::nullopt;
    const EGLDisplay display = eglGetPlatformDisplay(server->eglPlatform, server->nativeDisplay, nullptr);
    if (!usable(display)) {
        logFailure("the display server's EGL is not usable: " + eglErrorText());
        return std::nullopt;
    }
    return EglTarget{display, deviceOf(display), true};
}

std::optional<EglTarget> openDevice(EGLDeviceEXT device)
{
    const EGLDisplay display = eglGetPlatformDisplay(EGL_PLATFORM_DEVICE_EXT, device, nullptr);
    if (!usable(display))
        return std::nullopt;
    return EglTarget{display, device, false};
}

std::optional<EglTarget> openSurfaceless()
{
    if (!hasEglExtension(EGL_NO_DISPLAY, "EGL_MESA_platform_surfaceless"))
        return std::nullopt;
    const EGLDisplay display =
        eglGetPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, reinterpret_cast<void*>(EGL_DEFAULT_DISPLAY), nullptr);
    if (!usable(display))
        return std::nullopt;
    return EglTarget{display, deviceOf(display), false};
}

std::vector<EglTarget> headlessTargets()
{
    std::vector<EglTarget> targets;
    for (const EGLDeviceEXT device : devices()) {
        if (const auto target = openDevice(device))
            targets.push_back(*target);
    }
    if (targets.empty()) {
        if (const auto target = openSurfaceless())
            targets.push_back(*target);
    }
    return targets;
}

std::string glText(GLenum name)
{
    const auto* text = reinterpret_cast<const char*>(glGetString(name));
    return text ? text : "";
}

// "vendor" or "device" of the PCI device behind a render node; 0 for anything else.
std::uint32_t pciNumber(EGLDeviceEXT device, const char* what)
{
    const auto query = eglFunction<PFNEGLQUERYDEVICESTRINGEXTPROC>("eglQueryDeviceStringEXT");
    if (device == EGL_NO_DEVICE_EXT || !hasDeviceExtension(device, "EGL_EXT_device_drm"))
        return 0;
    const char* node = query(device, EGL_DRM_DEVICE_FILE_EXT);
    struct stat status
    {};
    if (!node || stat(node, &status) != 0)
        return 0;
    std::ifstream file("/sys/dev/char/" + std::to_string(major(status.st_rdev)) + ":" +
                       std::to_string(minor(status.st_rdev)) + "/device/" + what);
    std::string number;
    file >> number;
    return static_cast<std::uint32_t>(std::strtoul(number.c_str(), nullptr, 16));
}

} // namespace

bool hasEglExtension(EGLDisplay display, std::string_view name)
{
    return holdsWord(eglQueryString(display, EGL_EXTENSIONS), name);
}

std::string eglErrorText()
{
    constexpr std::array names{"EGL_SUCCESS",       "EGL_NOT_INITIALIZED",     "EGL_BAD_ACCESS",
                               "EGL_BAD_ALLOC",     "EGL_BAD_ATTRIBUTE",       "EGL_BAD_CONFIG",
                               "EGL_BAD_CONTEXT",   "EGL_BAD_CURRENT_SURFACE", "EGL_BAD_DISPLAY",
                               "EGL_BAD_MATCH",     "EGL_BAD_NATIVE_PIXMAP",   "EGL_BAD_NATIVE_WINDOW",
                               "EGL_BAD_PARAMETER", "EGL_BAD_SURFACE",         "EGL_CONTEXT_LOST"};
    const EGLint error = eglGetError();
    const auto index = static_cast<std::size_t>(error - EGL_SUCCESS);
    std::array<char, 16> number{};
    std::snprintf(number.data(), number.size(), "0x%04x", static_cast<unsigned>(error));
    return std::string(number.data()) + (index < names.size() ? std::string(" (") + names[index] + ")" : "");
}

std::optional<EglTarget> openTarget(int adapter)
{
    const std::optional<EglTarget> server = openDisplayServer();
    if (adapter < 0 && server)
        return server;
    const std::vector<EglTarget> targets = headlessTargets();
    const auto index = static_cast<std::size_t>(std::max(adapter, 0));
    if (index >= targets.size()) {
        logFailure("no graphics adapter " + std::to_string(adapter) + " of " + std::to_string(targets.size()));
        return std::nullopt;
    }
    if (server && server->device != EGL_NO_DEVICE_EXT && server->device == targets[index].device)
        return server;
    return targets[index];
}

EGLContext createEglContext(EGLDisplay display, EGLConfig config, EGLContext shareWith)
{
    constexpr std::array<EGLint, 5> attributes{EGL_CONTEXT_MAJOR_VERSION, 3, EGL_CONTEXT_MINOR_VERSION, 0, EGL_NONE};
    if (!eglBindAPI(EGL_OPENGL_ES_API))
        return EGL_NO_CONTEXT;
    return eglCreateContext(display, config, shareWith, attributes.data());
}

EGLConfig windowConfig(EGLDisplay display, EGLint visual)
{
    constexpr std::array<EGLint, 13> wanted{EGL_SURFACE_TYPE,
                                            EGL_WINDOW_BIT,
                                            EGL_RENDERABLE_TYPE,
                                            EGL_OPENGL_ES3_BIT,
                                            EGL_RED_SIZE,
                                            8,
                                            EGL_GREEN_SIZE,
                                            8,
                                            EGL_BLUE_SIZE,
                                            8,
                                            EGL_DEPTH_SIZE,
                                            0,
                                            EGL_NONE};
    std::array<EGLConfig, 64> configs{};
    EGLint count = 0;
    if (!eglChooseConfig(display, wanted.data(), configs.data(), static_cast<EGLint>(configs.size()), &count))
        return EGL_NO_CONFIG_KHR;
    for (EGLint i = 0; i < count; ++i) {
        EGLint itsVisual = 0;
        eglGetConfigAttrib(display, configs[static_cast<std::size_t>(i)], EGL_NATIVE_VISUAL_ID, &itsVisual);
        if (visual == 0 || visual == itsVisual)
            return configs[static_cast<std::size_t>(i)];
    }
    return EGL_NO_CONFIG_KHR;
}

std::optional<Adapter> describeTarget(const EglTarget& target)
{
    const CurrentEglState before;
    const EGLContext context = createEglContext(target.display, EGL_NO_CONFIG_KHR, EGL_NO_CONTEXT);
    if (context == EGL_NO_CONTEXT) {
        logFailure("failed to eglCreateContext: " + eglErrorText());
        return std::nullopt;
    }
    std::optional<Adapter> adapter;
    if (eglMakeCurrent(target.display, EGL_NO_SURFACE, EGL_NO_SURFACE, context)) {
        adapter.emplace();
        adapter->name = glText(GL_RENDERER);
        adapter->vendor = glText(GL_VENDOR);
        adapter->driverVersion = glText(GL_VERSION);
        adapter->pciVendor = pciNumber(target.device, "vendor");
        adapter->pciDevice = pciNumber(target.device, "device");
        adapter->software =
            adapter->name.find("llvmpipe") != std::string::npos ||
            adapter->name.find("softpipe") != std::string::npos ||
            adapter->name.find("SwiftShader") != std::string::npos ||
            (target.device != EGL_NO_DEVICE_EXT && hasDeviceExtension(target.device, "EGL_MESA_device_software"));
    } else {
        logFailure("failed to eglMakeCurrent: " + eglErrorText());
    }
    eglMakeCurrent(target.display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    eglDestroyContext(target.display, context);
    return adapter;
}

std::vector<Adapter> enumerateAdapters()
{
    std::vector<Adapter> adapters;
    int id = 0;
    for (const EglTarget& target : headlessTargets()) {
        if (auto adapter = describeTarget(target)) {
            adapter->id = id;
            adapters.push_back(std::move(*adapter));
        }
        ++id;
    }
    return adapters;
}

CurrentEglState::CurrentEglState()
    : _display(eglGetCurrentDisplay()), _draw(eglGetCurrentSurface(EGL_DRAW)), _read(eglGetCurrentSurface(EGL_READ)),
      _context(eglGetCurrentContext())
{}

CurrentEglState::~CurrentEglState()
{
    if (eglGetCurrentContext() == _context)
        return;
    if (_context != EGL_NO_CONTEXT)
        eglMakeCurrent(_display, _draw, _read, _context);
    else
        eglMakeCurrent(eglGetCurrentDisplay(), EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
}

} // namespace tavlo::graphics
