#pragma once

#include "scene/Geometry.h"

#include <cstdint>
#include <span>
#include <vector>

namespace tavlo::scene {

enum class MouseButton : std::uint8_t
{
    None,
    Left,
    Right,
    Middle
};

/// Keys held while the mouse does something. Flags.
enum KeyModifier : std::uint8_t
{
    ShiftKey = 1,
    ControlKey = 2,
    AltKey = 4
};

/// What listeners are told of. Listeners are asked from the topmost node down until one stops the event.
class Event
{
public:
    void stopPropagation() { _stopped = true; }
    bool isStopped() const { return _stopped; }

private:
    bool _stopped = false;
};

class EventMouse : public Event
{
public:
    enum class Type : std::uint8_t
    {
        Down,
        Up,
        Move,
        Scroll
    };

    Type type = Type::Move;
    Vec2 location;                          ///< in the view, pixels, y up: the left bottom of the pixel
    MouseButton button = MouseButton::None; ///< the one that went down or up
    std::uint8_t heldButtons = 0; ///< bit 1 << MouseButton; a button that goes down is in, one that goes up is not
    std::uint8_t modifiers = 0;   ///< a set of KeyModifier
    Vec2 scroll;                  ///< steps of the wheel, up and right are positive

    bool isHeld(MouseButton which) const { return (heldButtons >> static_cast<int>(which) & 1) != 0; }
    bool isControlDown() const { return (modifiers & ControlKey) != 0; }
};

enum class TouchPhase : std::uint8_t
{
    Began,
    Moved,
    Ended,
    Cancelled
};

/// A finger on the view.
struct Touch
{
    int id = 0;            ///< the finger's, while it is down
    Vec2 location;         ///< in the view, pixels, y up
    Vec2 previousLocation; ///< before this event
    Vec2 startLocation;    ///< where it went down
};

class EventTouch : public Event
{
public:
    TouchPhase phase = TouchPhase::Began;
    Touch changed; ///< the finger that this event is about
    std::span<const Touch>
        touches; ///< all that are down, in the order in which they went down; one that ends is the last
                 ///< time among them. Valid during the call
};

} // namespace tavlo::scene
