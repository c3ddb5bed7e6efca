#pragma once

#include "scene/Action.h"

#include <cstdint>
#include <vector>

namespace tavlo::scene {

/// Runs the actions of all nodes of a director. Frame thread.
class ActionManager
{
public:
    void add(Node& node, RefPtr<Action> action);
    void stop(Node& node, const Action* action);
    void stopByTag(Node& node, int tag);
    void stopAll(Node& node);
    void stopEverything();
    Action* find(const Node& node, int tag) const;
    std::size_t size() const;

    /// Brings every action to that time. A function that an action calls may start and stop any action, of any node;
    /// what it starts begins with the next call.
    void stepTo(std::uint64_t clockMicroseconds);

private:
    struct Entry
    {
        Node* node; ///< null: stopped
        RefPtr<Action> action;
        std::uint64_t startMicroseconds;
        float elapsed; ///< seconds, at the last step
        bool started;
    };

    template <class Matches>
    void stopFirst(Node& node, const Matches& matches);
    void stepEntry(std::size_t index, std::uint64_t clockMicroseconds);
    void drop(Entry& entry);
    void tidy();

    std::vector<Entry> _entries; ///< in the order of their adding
    bool _stepping = false;
};

} // namespace tavlo::scene
