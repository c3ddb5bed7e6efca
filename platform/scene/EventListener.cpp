#include "scene/EventListener.h"

namespace tavlo::scene {

namespace {

template <class AnyEvent>
void call(const std::function<void(AnyEvent&)>& function, AnyEvent& event)
{
    if (function)
        function(event);
}

} // namespace

void EventListener::hear(EventMouse&) const {}
void EventListener::hear(EventTouch&) const {}

void EventListenerMouse::hear(EventMouse& event) const
{
    switch (event.type) {
    case EventMouse::Type::Down:
        return call(onMouseDown, event);
    case EventMouse::Type::Up:
        return call(onMouseUp, event);
    case EventMouse::Type::Move:
        return call(onMouseMove, event);
    case EventMouse::Type::Scroll:
        return call(onMouseScroll, event);
    }
}

void EventListenerTouch::hear(EventTouch& event) const
{
    switch (event.phase) {
    case TouchPhase::Began:
        return call(onTouchesBegan, event);
    case TouchPhase::Moved:
        return call(onTouchesMoved, event);
    case TouchPhase::Ended:
        return call(onTouchesEnded, event);
    case TouchPhase::Cancelled:
        return call(onTouchesCancelled, event);
    }
}

} // namespace tavlo::scene
