#include "scene/Action.h"

#include "scene/Node.h"

#include <algorithm>
#include <numeric>

namespace tavlo::scene {

void MoveTo::start(Node& node)
{
    Action::start(node);
    _from = node.position();
}

void MoveTo::step(Node& node, float elapsed)
{
    const float part = duration() > 0 ? elapsed / duration() : 1;
    node.setPosition(part >= 1 ? _to : _from + (_to - _from) * part);
}

void CallFunc::step(Node&, float)
{
    if (_call)
        _call();
}

void CallFuncN::step(Node& node, float)
{
    if (_call)
        _call(node);
}

namespace {

// In the order in which `Sequence::step` adds them up, so that both come to the same float.
float totalDuration(const std::vector<RefPtr<Action>>& parts)
{
    return std::accumulate(parts.begin(), parts.end(), 0.0F,
                           [](float sum, const RefPtr<Action>& part) { return sum + part->duration(); });
}

} // namespace

RefPtr<Sequence> Sequence::create(std::vector<RefPtr<Action>> parts)
{
    std::erase(parts, nullptr);
    return makeRef<Sequence>(std::move(parts));
}

Sequence::Sequence(std::vector<RefPtr<Action>> parts) : Action(totalDuration(parts)), _parts(std::move(parts)) {}

void Sequence::start(Node& node)
{
    Action::start(node);
    _current = 0;
    _currentStart = 0;
    _currentStarted = false;
}

void Sequence::stop()
{
    Action::stop();
    if (_current < _parts.size())
        _parts[_current]->stop();
}

void Sequence::step(Node& node, float elapsed)
{
    while (_current < _parts.size()) {
        Action& part = *_parts[_current];
        if (!_currentStarted)
            part.start(node);
        _currentStarted = true;
        part.step(node, std::min(elapsed - _currentStart, part.duration()));
        if (isStopped() || elapsed < _currentStart + part.duration())
            return;
        _currentStart += part.duration();
        _currentStarted = false;
        ++_current;
    }
}

} // namespace tavlo::scene
