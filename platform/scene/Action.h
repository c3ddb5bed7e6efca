#pragma once

#include "scene/Geometry.h"
#include "scene/Ref.h"

#include <functional>
#include <vector>

namespace tavlo::scene {

class Node;

/// Something that a node does over time. An action runs on one node at a time and may run again when it is done. It
/// begins with the first frame after `runAction`, which shows it at its start. Frame thread.
class Action : public Ref
{
public:
    static constexpr int noTag = -1;

    int tag() const { return _tag; }
    void setTag(int tag) { _tag = tag; }

    float duration() const { return _duration; } ///< seconds, 0 or more

    /// For who runs it: takes the node as it stands.
    virtual void start(Node&) { _stopped = false; }

    /// No more steps follow. May be called from within a step.
    virtual void stop() { _stopped = true; }

    /// `elapsed` seconds after the start, never more than the duration and never less than before; the last call has the
    /// duration.
    virtual void step(Node& node, float elapsed) = 0;

protected:
    explicit Action(float seconds) : _duration(seconds > 0 ? seconds : 0) {}

    bool isStopped() const { return _stopped; }

private:
    const float _duration;
    bool _stopped = false;
    int _tag = noTag;
};

/// Moves to a place, at one speed.
class MoveTo : public Action
{
public:
    static RefPtr<MoveTo> create(float seconds, Vec2 target) { return makeRef<MoveTo>(seconds, target); }
    MoveTo(float seconds, Vec2 target) : Action(seconds), _to(target) {}
    void start(Node& node) override;
    void step(Node& node, float elapsed) override;

private:
    Vec2 _from;
    const Vec2 _to;
};

/// Calls a function once.
class CallFunc : public Action
{
public:
    static RefPtr<CallFunc> create(std::function<void()> call) { return makeRef<CallFunc>(std::move(call)); }
    explicit CallFunc(std::function<void()> call) : Action(0), _call(std::move(call)) {}
    void step(Node& node, float elapsed) override;

private:
    const std::function<void()> _call;
};

/// The same, with the node that it runs on.
class CallFuncN : public Action
{
public:
    static RefPtr<CallFuncN> create(std::function<void(Node&)> call) { return makeRef<CallFuncN>(std::move(call)); }
    explicit CallFuncN(std::function<void(Node&)> call) : Action(0), _call(std::move(call)) {}
    void step(Node& node, float elapsed) override;

private:
    const std::function<void(Node&)> _call;
};

/// One after the other. Time that one leaves over goes to the next.
class Sequence : public Action
{
public:
    static RefPtr<Sequence> create(std::vector<RefPtr<Action>> parts);
    explicit Sequence(std::vector<RefPtr<Action>> parts);
    void start(Node& node) override;
    void stop() override;
    void step(Node& node, float elapsed) override;

private:
    const std::vector<RefPtr<Action>> _parts;
    std::size_t _current = 0;
    float _currentStart = 0; ///< seconds after the start of the sequence
    bool _currentStarted = false;
};

} // namespace tavlo::scene
