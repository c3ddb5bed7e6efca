#pragma once

#include "scene/Event.h"
#include "scene/Ref.h"

#include <functional>

namespace tavlo::scene {

class Node;

/// Who wants to be told of events. Held by the dispatcher while it is registered there. Frame thread.
class EventListener : public Ref
{
public:
    /// A disabled one stays where it is and hears nothing.
    void setEnabled(bool enabled) { _enabled = enabled; }
    bool isEnabled() const { return _enabled; }

    /// Calls what belongs to the event; for the dispatcher.
    virtual void hear(EventMouse& event) const;
    virtual void hear(EventTouch& event) const;

private:
    bool _enabled = true;
};

class EventListenerMouse : public EventListener
{
public:
    static RefPtr<EventListenerMouse> create() { return makeRef<EventListenerMouse>(); }

    std::function<void(EventMouse&)> onMouseDown;
    std::function<void(EventMouse&)> onMouseUp;
    std::function<void(EventMouse&)> onMouseMove;
    std::function<void(EventMouse&)> onMouseScroll;

    using EventListener::hear;
    void hear(EventMouse& event) const override;
};

/// Hears every finger, with all that are down at the time.
class EventListenerTouch : public EventListener
{
public:
    static RefPtr<EventListenerTouch> create() { return makeRef<EventListenerTouch>(); }

    std::function<void(EventTouch&)> onTouchesBegan;
    std::function<void(EventTouch&)> onTouchesMoved;
    std::function<void(EventTouch&)> onTouchesEnded;
    std::function<void(EventTouch&)> onTouchesCancelled;

    using EventListener::hear;
    void hear(EventTouch& event) const override;
};

} // namespace tavlo::scene
