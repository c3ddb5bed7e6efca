#pragma once

#include "scene/EventListener.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tavlo::scene {

class Node;

/// Brings events to listeners, the listener of the topmost node first.
///
/// The order is that in which the nodes were drawn last. A node that the last frame did not draw, because it is hidden
/// or in no running scene, hears nothing. Where a node stands is not asked: a listener looks at the location itself.
/// Frame thread.
class EventDispatcher
{
public:
    /// Registered until it is removed, or until its node is removed with clean-up or goes.
    void addEventListenerWithSceneGraphPriority(RefPtr<EventListener> listener, Node* node);

    void removeEventListener(const EventListener* listener);
    void removeEventListenersForTarget(const Node* node);
    void removeAllEventListeners();

    void dispatch(EventMouse& event);
    void dispatch(EventTouch& event);

    std::size_t listenerCount() const { return _entries.size(); }

    /// The running number of the last frame drawn; nodes carry it with their place in the order.
    void setDrawnFrame(std::uint64_t frame) { _drawnFrame = frame; }

private:
    struct Entry
    {
        RefPtr<EventListener> listener;
        Node* node;
    };

    template <class AnyEvent>
    void dispatchTo(AnyEvent& event);
    template <class Matches>
    void removeWhere(const Matches& matches);
    bool isRegistered(const EventListener* listener) const;

    std::vector<Entry> _entries; ///< in the order of their adding
    std::vector<Entry> _scratch; ///< room for the list that a dispatch walks
    std::uint64_t _drawnFrame = 0;
};

} // namespace tavlo::scene
