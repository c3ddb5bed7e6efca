#include "graphics/ChildWindow.h"

#include "graphics/Log.h"

#include <xcb/xcb.h>
#include <xcb/xinput.h>

#include <cstdlib>

namespace tavlo::graphics {

namespace {

struct FreeReply
{
    void operator()(void* reply) const { std::free(reply); }
};
template <class T>
using Reply = std::unique_ptr<T, FreeReply>;

struct Disconnect
{
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};

enum WheelButton : std::uint8_t
{
    WheelUp = 4,
    WheelDown,
    WheelLeft,
    WheelRight
};

WindowInput::Button buttonOf(xcb_button_t detail)
{
    switch (detail) {
    case XCB_BUTTON_INDEX_1:
        return WindowInput::Left;
    case XCB_BUTTON_INDEX_2:
        return WindowInput::Middle;
    case XCB_BUTTON_INDEX_3:
        return WindowInput::Right;
    default:
        return WindowInput::None;
    }
}

std::uint8_t bit(WindowInput::Button button) { return static_cast<std::uint8_t>(1U << button); }

std::uint8_t heldIn(std::uint16_t state)
{
    std::uint8_t held = 0;
    if ((state & XCB_BUTTON_MASK_1) != 0)
        held |= bit(WindowInput::Left);
    if ((state & XCB_BUTTON_MASK_2) != 0)
        held |= bit(WindowInput::Middle);
    if ((state & XCB_BUTTON_MASK_3) != 0)
        held |= bit(WindowInput::Right);
    return held;
}

std::uint8_t modifiersIn(std::uint16_t state)
{
    std::uint8_t modifiers = 0;
    if ((state & XCB_MOD_MASK_SHIFT) != 0)
        modifiers |= WindowInput::Shift;
    if ((state & XCB_MOD_MASK_CONTROL) != 0)
        modifiers |= WindowInput::Control;
    if ((state & XCB_MOD_MASK_1) != 0)
        modifiers |= WindowInput::Alt;
    return modifiers;
}

// Presses, releases and moves of the pointer share one layout.
WindowInput pointerInput(WindowInput::Kind kind, const xcb_button_press_event_t& event)
{
    WindowInput input;
    input.kind = kind;
    input.x = event.event_x;
    input.y = event.event_y;
    input.held = heldIn(event.state); // as it was before the event
    input.modifiers = modifiersIn(event.state);
    return input;
}

// A step of the wheel is a press of a button of its own; nothing for buttons that are neither.
bool readPress(const xcb_button_press_event_t& event, WindowInput& input)
{
    input = pointerInput(WindowInput::Kind::ButtonDown, event);
    input.button = buttonOf(event.detail);
    input.wheelY = event.detail == WheelUp ? 1 : event.detail == WheelDown ? -1 : 0;
    input.wheelX = event.detail == WheelRight ? 1 : event.detail == WheelLeft ? -1 : 0;
    if (input.wheelX != 0 || input.wheelY != 0)
        input.kind = WindowInput::Kind::Wheel;
    else if (input.button != WindowInput::None)
        input.held |= bit(input.button);
    else
        return false;
    return true;
}

bool readRelease(const xcb_button_release_event_t& event, WindowInput& input)
{
    input = pointerInput(WindowInput::Kind::ButtonUp, event);
    input.button = buttonOf(event.detail);
    input.held &= static_cast<std::uint8_t>(~bit(input.button));
    return input.button != WindowInput::None;
}

float fixedPoint(xcb_input_fp1616_t value) { return static_cast<float>(value) / 65536; }

bool readTouch(const xcb_input_touch_begin_event_t& event, WindowInput& input)
{
    input = {};
    switch (event.event_type) {
    case XCB_INPUT_TOUCH_BEGIN:
        input.kind = WindowInput::Kind::TouchBegin;
        break;
    case XCB_INPUT_TOUCH_UPDATE:
        input.kind = WindowInput::Kind::TouchMove;
        break;
    case XCB_INPUT_TOUCH_END:
        input.kind = WindowInput::Kind::TouchEnd;
        break;
    default:
        return false;
    }
    input.x = fixedPoint(event.event_x);
    input.y = fixedPoint(event.event_y);
    input.touchId = static_cast<int>(event.detail);
    input.modifiers = modifiersIn(static_cast<std::uint16_t>(event.mods.effective));
    return true;
}

} // namespace

/// Owner's thread.
struct ChildWindow::Impl
{
    // A window that is gone gives an error back, which ends up among the events and is dropped there.
    std::unique_ptr<xcb_connection_t, Disconnect> connection;
    xcb_window_t window = XCB_NONE;
    std::uint8_t touchExtension = 0; ///< 0: the server knows no touches
    bool gone = false;

    bool open(xcb_window_t parent, const Window::Place& place);
    void selectTouches();
    bool read(const xcb_generic_event_t& event, WindowInput& input);
};

bool ChildWindow::Impl::open(xcb_window_t parent, const Window::Place& place)
{
    connection.reset(xcb_connect(nullptr, nullptr));
    if (xcb_connection_has_error(connection.get()) != 0)
        return false;
    window = xcb_generate_id(connection.get());
    const std::uint32_t values[]{XCB_BACK_PIXMAP_NONE, XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE |
                                                           XCB_EVENT_MASK_POINTER_MOTION |
                                                           XCB_EVENT_MASK_STRUCTURE_NOTIFY};
    // Checked, so that the window is the server's before another connection names it.
    const xcb_void_cookie_t asked = xcb_create_window_checked(
        connection.get(), XCB_COPY_FROM_PARENT, window, parent, static_cast<std::int16_t>(place.x),
        static_cast<std::int16_t>(place.y), static_cast<std::uint16_t>(place.width),
        static_cast<std::uint16_t>(place.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
        XCB_CW_BACK_PIXMAP | XCB_CW_EVENT_MASK, values);
    if (const Reply<xcb_generic_error_t> error{xcb_request_check(connection.get(), asked)}; error)
        return false;
    selectTouches();
    xcb_map_window(connection.get(), window);
    xcb_flush(connection.get());
    return true;
}

void ChildWindow::Impl::selectTouches()
{
    const xcb_query_extension_reply_t* extension = xcb_get_extension_data(connection.get(), &xcb_input_id);
    if (!extension || extension->present == 0)
        return;
    const Reply<xcb_input_xi_query_version_reply_t> version{xcb_input_xi_query_version_reply(
        connection.get(), xcb_input_xi_query_version(connection.get(), 2, 2), nullptr)};
    if (!version || version->major_version < 2 || (version->major_version == 2 && version->minor_version < 2))
        return;
    struct
    {
        xcb_input_event_mask_t head{XCB_INPUT_DEVICE_ALL_MASTER, 1};
        std::uint32_t mask = XCB_INPUT_XI_EVENT_MASK_TOUCH_BEGIN | XCB_INPUT_XI_EVENT_MASK_TOUCH_UPDATE |
                             XCB_INPUT_XI_EVENT_MASK_TOUCH_END;
    } wanted;
    xcb_input_xi_select_events(connection.get(), window, 1, &wanted.head);
    touchExtension = extension->major_opcode;
}

bool ChildWindow::Impl::read(const xcb_generic_event_t& event, WindowInput& input)
{
    switch (event.response_type & 0x7f) { // the top bit marks what another program sent
    case XCB_BUTTON_PRESS:
        return readPress(reinterpret_cast<const xcb_button_press_event_t&>(event), input);
    case XCB_BUTTON_RELEASE:
        return readRelease(reinterpret_cast<const xcb_button_release_event_t&>(event), input);
    case XCB_MOTION_NOTIFY:
        input = pointerInput(WindowInput::Kind::Move, reinterpret_cast<const xcb_button_press_event_t&>(event));
        return true;
    case XCB_GE_GENERIC:
        return touchExtension != 0 &&
               reinterpret_cast<const xcb_ge_generic_event_t&>(event).extension == touchExtension &&
               readTouch(reinterpret_cast<const xcb_input_touch_begin_event_t&>(event), input);
    case XCB_DESTROY_NOTIFY:
        gone = true;
        return false;
    default:
        return false;
    }
}

ChildWindow::ChildWindow(std::unique_ptr<Impl> impl) : _impl(std::move(impl)) {}

ChildWindow::~ChildWindow()
{
    xcb_destroy_window(_impl->connection.get(), _impl->window);
    xcb_flush(_impl->connection.get());
}

std::unique_ptr<ChildWindow> ChildWindow::create(NativeWindow parent, const Window::Place& place)
{
    if (parent == 0 || place.width <= 0 || place.height <= 0) {
        logFailure("a child window of no parent or no size");
        return nullptr;
    }
    auto impl = std::make_unique<Impl>();
    if (!impl->open(static_cast<xcb_window_t>(parent), place)) {
        logFailure("no child window: no display server, or no such window");
        return nullptr;
    }
    return std::unique_ptr<ChildWindow>(new ChildWindow(std::move(impl)));
}

NativeWindow ChildWindow::handle() const { return _impl->window; }

void ChildWindow::setPlace(const Window::Place& place)
{
    const std::uint32_t values[]{static_cast<std::uint32_t>(place.x), static_cast<std::uint32_t>(place.y),
                                 static_cast<std::uint32_t>(place.width), static_cast<std::uint32_t>(place.height)};
    const xcb_void_cookie_t asked = xcb_configure_window_checked(
        _impl->connection.get(), _impl->window,
        XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, values);
    const Reply<xcb_generic_error_t> error{xcb_request_check(_impl->connection.get(), asked)};
}

bool ChildWindow::nextInput(WindowInput& input)
{
    while (const Reply<xcb_generic_event_t> event{xcb_poll_for_event(_impl->connection.get())})
        if (_impl->read(*event, input))
            return true;
    return false;
}

bool ChildWindow::isGone() const { return _impl->gone || xcb_connection_has_error(_impl->connection.get()) != 0; }

} // namespace tavlo::graphics
