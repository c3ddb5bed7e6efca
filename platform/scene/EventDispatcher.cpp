#include "scene/EventDispatcher.h"

#include "scene/Node.h"

#include <algorithm>

namespace tavlo::scene {

void EventDispatcher::addEventListenerWithSceneGraphPriority(RefPtr<EventListener> listener, Node* node)
{
    if (!listener || !node || isRegistered(listener.get()))
        return;
    ++node->_listeners;
    _entries.push_back({std::move(listener), node});
}

bool EventDispatcher::isRegistered(const EventListener* listener) const
{
    return std::ranges::any_of(_entries, [listener](const Entry& entry) { return entry.listener == listener; });
}

template <class Matches>
void EventDispatcher::removeWhere(const Matches& matches)
{
    // A listener's function may be the last that holds a node, whose end comes back here: by then the list is whole.
    std::vector<RefPtr<EventListener>> gone;
    for (Entry& entry : _entries) {
        if (!matches(entry))
            continue;
        --entry.node->_listeners;
        gone.push_back(std::move(entry.listener));
    }
    std::erase_if(_entries, [](const Entry& entry) { return !entry.listener; });
}

void EventDispatcher::removeEventListener(const EventListener* listener)
{
    removeWhere([listener](const Entry& entry) { return entry.listener == listener; });
}

void EventDispatcher::removeEventListenersForTarget(const Node* node)
{
    removeWhere([node](const Entry& entry) { return entry.node == node; });
}

void EventDispatcher::removeAllEventListeners()
{
    removeWhere([](const Entry&) { return true; });
}

void EventDispatcher::dispatch(EventMouse& event) { dispatchTo(event); }
void EventDispatcher::dispatch(EventTouch& event) { dispatchTo(event); }

template <class AnyEvent>
void EventDispatcher::dispatchTo(AnyEvent& event)
{
    // A listener may change the list, and send events itself: each dispatch walks a list of its own.
    std::vector<Entry> heard = std::exchange(_scratch, {});
    std::ranges::copy_if(_entries, std::back_inserter(heard), [this](const Entry& entry) {
        return entry.listener->isEnabled() && entry.node->_drawnFrame == _drawnFrame;
    });
    const auto isAbove = [](const Entry& a, const Entry& b) { return a.node->_drawIndex > b.node->_drawIndex; };
    for (auto next = heard.begin(); next != heard.end(); ++next) // few, and nearly in order; keeps equals as they came
        std::rotate(std::upper_bound(heard.begin(), next, *next, isAbove), next, std::next(next));
    for (const Entry& entry : heard) {
        if (event.isStopped())
            break;
        if (isRegistered(entry.listener.get()) && entry.listener->isEnabled())
            entry.listener->hear(event);
    }
    heard.clear();
    _scratch = std::move(heard);
}

} // namespace tavlo::scene
