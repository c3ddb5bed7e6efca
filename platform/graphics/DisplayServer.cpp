#include "graphics/DisplayServer.h"

#include "graphics/Log.h"

#include <X11/Xlib-xcb.h>
#include <X11/Xlib.h>

#define GLFW_INCLUDE_NONE
#define GLFW_EXPOSE_NATIVE_X11
#include <GLFW/glfw3.h>
#include <GLFW/glfw3native.h>

#include <cstdlib>
#include <memory>
#include <mutex>

namespace tavlo::graphics {

namespace {

constexpr std::uint32_t eglPlatformX11 = 0x31d5; // EGL_PLATFORM_X11

// A connection of our own. Nobody reads events from it, so the error for a window that its owner has closed under us
// stays in its queue and ends nobody's process.
Display* connection()
{
    static Display* const display = [] {
        XInitThreads();
        return XOpenDisplay(nullptr);
    }();
    return display;
}

struct FreeReply
{
    void operator()(void* reply) const { std::free(reply); }
};

bool startGlfw()
{
    static const bool started = [] {
        glfwSetErrorCallback([](int, const char* text) { logFailure(std::string("GLFW: ") + text); });
        return glfwInit() == GLFW_TRUE;
    }();
    return started;
}

GLFWwindow* glfwOf(void* window) { return static_cast<GLFWwindow*>(window); }

} // namespace

std::optional<DisplayServer> connectDisplayServer()
{
    static std::once_flag told;
    Display* display = connection();
    if (!display) {
        std::call_once(told, [] { logFailure("no display server: windows are off"); });
        return std::nullopt;
    }
    return DisplayServer{eglPlatformX11, display};
}

std::optional<NativeWindowInfo> queryWindow(NativeWindow window)
{
    if (!connection())
        return std::nullopt;
    // Through XCB, which gives a wrong window back as an empty reply; Xlib would call the process's error handler.
    xcb_connection_t* xcb = XGetXCBConnection(connection());
    const auto id = static_cast<xcb_window_t>(window);
    const auto geometryAsked = xcb_get_geometry(xcb, id);
    const auto attributesAsked = xcb_get_window_attributes(xcb, id);
    const std::unique_ptr<xcb_get_geometry_reply_t, FreeReply> geometry(
        xcb_get_geometry_reply(xcb, geometryAsked, nullptr));
    const std::unique_ptr<xcb_get_window_attributes_reply_t, FreeReply> attributes(
        xcb_get_window_attributes_reply(xcb, attributesAsked, nullptr));
    if (!geometry || !attributes)
        return std::nullopt;
    return NativeWindowInfo{geometry->width, geometry->height, static_cast<std::int32_t>(attributes->visual)};
}

std::unique_ptr<Window> Window::create(const std::string& title, const Place& place)
{
    if (place.width <= 0 || place.height <= 0) {
        logFailure("a window of no size: " + title);
        return nullptr;
    }
    if (!startGlfw())
        return nullptr;
    glfwDefaultWindowHints();
    glfwWindowHint(GLFW_CLIENT_API, GLFW_NO_API); // its surface is made with the device's display
    glfwWindowHint(GLFW_DECORATED, GLFW_FALSE);
    glfwWindowHint(GLFW_AUTO_ICONIFY, GLFW_FALSE);
    glfwWindowHint(GLFW_FOCUS_ON_SHOW, GLFW_FALSE);
    glfwWindowHint(GLFW_VISIBLE, GLFW_FALSE);
    GLFWwindow* window = glfwCreateWindow(place.width, place.height, title.c_str(), nullptr, nullptr);
    if (!window)
        return nullptr;
    std::unique_ptr<Window> made(new Window(window));
    made->setPlace(place);
    glfwShowWindow(window);
    XSync(glfwGetX11Display(), False); // the window is the server's before another connection names it
    return made;
}

Window::~Window() { glfwDestroyWindow(glfwOf(_window)); }

NativeWindow Window::handle() const { return glfwGetX11Window(glfwOf(_window)); }

void Window::setPlace(const Place& place)
{
    glfwSetWindowSize(glfwOf(_window), place.width, place.height);
    glfwSetWindowPos(glfwOf(_window), place.x, place.y);
}

void Window::processEvents()
{
    if (startGlfw())
        glfwPollEvents();
}

} // namespace tavlo::graphics
