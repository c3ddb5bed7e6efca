#pragma once

#include "graphics/SwapChain.h"

#include <memory>

namespace tavlo::graphics {

/// What happened on a window: pixels from its left top, y down.
struct WindowInput
{
    enum class Kind : std::uint8_t
    {
        ButtonDown,
        ButtonUp,
        Move,
        Wheel,
        TouchBegin,
        TouchMove,
        TouchEnd
    };
    enum Button : std::uint8_t
    {
        None,
        Left,
        Right,
        Middle
    };
    enum Modifier : std::uint8_t
    {
        Shift = 1,
        Control = 2,
        Alt = 4
    };

    Kind kind = Kind::Move;
    float x = 0, y = 0;
    Button button = None;       ///< the one that went down or up
    std::uint8_t held = 0;      ///< the others and, going down, this one: bit 1 << Button
    std::uint8_t modifiers = 0; ///< a set of Modifier
    int wheelX = 0, wheelY = 0; ///< steps, right and up are positive
    int touchId = 0;            ///< the finger's, while it is down
};

/// A window of our own inside a window of the host, with a connection to the display server of its own: what happens
/// on it is read here and never reaches the host. When the host closes its window, this one goes with it and nothing is
/// heard any more. Owner's thread: the one that made it.
class ChildWindow
{
public:
    /// Shown at once. Null, and the reason in the log, without a display server, a parent or a size.
    static std::unique_ptr<ChildWindow> create(NativeWindow parent, const Window::Place& place);
    ~ChildWindow();
    ChildWindow(const ChildWindow&) = delete;
    ChildWindow& operator=(const ChildWindow&) = delete;

    NativeWindow handle() const;

    /// Where it stands in its parent, y down.
    void setPlace(const Window::Place& place);

    /// Takes the next thing that happened; false when nothing has. Never blocks.
    bool nextInput(WindowInput& input);

    /// Whether the window is no more, as far as what happened has been taken.
    bool isGone() const;

private:
    struct Impl;
    explicit ChildWindow(std::unique_ptr<Impl> impl);

    const std::unique_ptr<Impl> _impl;
};

} // namespace tavlo::graphics
