#include "scene/ActionManager.h"

#include "scene/Node.h"

#include <algorithm>

namespace tavlo::scene {

void ActionManager::add(Node& node, RefPtr<Action> action)
{
    if (!action)
        return;
    _entries.push_back({&node, std::move(action), 0, 0, false});
    ++node._runningActions;
}

template <class Matches>
void ActionManager::stopFirst(Node& node, const Matches& matches)
{
    const auto found = std::ranges::find_if(
        _entries, [&](const Entry& entry) { return entry.node == &node && matches(*entry.action); });
    if (found != _entries.end())
        drop(*found);
    tidy();
}

void ActionManager::stop(Node& node, const Action* action)
{
    stopFirst(node, [action](const Action& other) { return &other == action; });
}

void ActionManager::stopByTag(Node& node, int tag)
{
    stopFirst(node, [tag](const Action& other) { return other.tag() == tag; });
}

void ActionManager::stopAll(Node& node)
{
    for (Entry& entry : _entries)
        if (entry.node == &node)
            drop(entry);
    tidy();
}

void ActionManager::stopEverything()
{
    for (Entry& entry : _entries)
        if (entry.node)
            drop(entry);
    tidy();
}

void ActionManager::drop(Entry& entry)
{
    entry.action->stop();
    --entry.node->_runningActions;
    entry.node = nullptr; // stays in its place while others are being stepped
}

void ActionManager::tidy()
{
    if (_stepping)
        return;
    // A function of an action may be the last that holds a node, whose end comes back here: by then the list is whole.
    std::vector<RefPtr<Action>> gone;
    for (Entry& entry : _entries)
        if (!entry.node)
            gone.push_back(std::move(entry.action));
    std::erase_if(_entries, [](const Entry& entry) { return entry.node == nullptr; });
}

Action* ActionManager::find(const Node& node, int tag) const
{
    const auto found = std::ranges::find_if(
        _entries, [&](const Entry& entry) { return entry.node == &node && entry.action->tag() == tag; });
    return found == _entries.end() ? nullptr : found->action.get();
}

std::size_t ActionManager::size() const
{
    return static_cast<std::size_t>(std::ranges::count_if(_entries, [](const Entry& e) { return e.node != nullptr; }));
}

void ActionManager::stepTo(std::uint64_t clockMicroseconds)
{
    _stepping = true;
    const std::size_t count = _entries.size(); // what a step adds waits for the next call
    for (std::size_t i = 0; i < count; ++i)
        if (_entries[i].node)
            stepEntry(i, clockMicroseconds);
    _stepping = false;
    tidy();
}

void ActionManager::stepEntry(std::size_t index, std::uint64_t clockMicroseconds)
{
    // Held through the step, in which the node may lose all others that hold it, and the list may grow.
    const RefPtr<Node> node = _entries[index].node;
    const RefPtr<Action> action = _entries[index].action;
    if (!_entries[index].started) {
        _entries[index].started = true;
        _entries[index].startMicroseconds = clockMicroseconds;
        action->start(*node);
    }
    Entry& entry = _entries[index];
    if (clockMicroseconds > entry.startMicroseconds) {
        const auto seconds = static_cast<float>(static_cast<double>(clockMicroseconds - entry.startMicroseconds) / 1e6);
        entry.elapsed = std::max(entry.elapsed, std::min(seconds, action->duration()));
    }
    const bool done = entry.elapsed >= action->duration();
    action->step(*node, entry.elapsed);
    if (done && _entries[index].node)
        drop(_entries[index]);
}

} // namespace tavlo::scene
