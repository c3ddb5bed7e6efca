#include "scene/GLView.h"

#include "scene/EventDispatcher.h"

#include <algorithm>

namespace tavlo::scene {

void GLView::injectMouse(const EventMouse& event)
{
    EventMouse heard = event;
    if (_director)
        _director->eventDispatcher().dispatch(heard);
}

void GLView::injectTouch(TouchPhase phase, int fingerId, Vec2 location)
{
    auto finger = std::ranges::find(_fingers, fingerId, &Touch::id);
    if (phase == TouchPhase::Began && finger != _fingers.end())
        phase = TouchPhase::Moved;
    if (finger == _fingers.end()) {
        if (phase != TouchPhase::Began)
            return;
        _fingers.push_back({fingerId, location, location, location});
        finger = std::prev(_fingers.end());
    }
    finger->previousLocation = std::exchange(finger->location, location);

    EventTouch event;
    event.phase = phase;
    event.changed = *finger;
    event.touches = _fingers;
    if (_director)
        _director->eventDispatcher().dispatch(event);
    if (phase == TouchPhase::Ended || phase == TouchPhase::Cancelled)
        std::erase_if(_fingers, [fingerId](const Touch& touch) { return touch.id == fingerId; });
}

void GLView::cancelTouches()
{
    const std::vector<Touch> down = _fingers; // the listeners may inject more
    for (const Touch& finger : down)
        injectTouch(TouchPhase::Cancelled, finger.id, finger.location);
}

} // namespace tavlo::scene
