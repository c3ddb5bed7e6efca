#include "scene/Node.h"

#include "graphics/Log.h"
#include "scene/ActionManager.h"
#include "scene/EventDispatcher.h"
#include "scene/Renderer.h"

#include <algorithm>

namespace tavlo::scene {

Node::Node(Director& director) : _director(&director) {}

Node::~Node()
{
    if (_runningActions > 0)
        _director->actionManager().stopAll(*this);
    if (_listeners > 0)
        _director->eventDispatcher().removeEventListenersForTarget(this);
    for (const RefPtr<Node>& child : _children)
        child->_parent = nullptr;
}

void Node::addChild(RefPtr<Node> child, int zOrder)
{
    if (!child || child->_parent || isBelow(*child)) {
        graphics::logFailure("addChild of a node that has a parent, or of none");
        return;
    }
    child->_parent = this;
    child->_zOrder = zOrder;
    insertSorted(std::move(child));
}

bool Node::isBelow(const Node& other) const
{
    const Node* above = this;
    while (above && above != &other)
        above = above->_parent;
    return above != nullptr;
}

void Node::insertSorted(RefPtr<Node> child)
{
    const auto place =
        std::ranges::upper_bound(_children, child->_zOrder, {}, [](const auto& c) { return c->_zOrder; });
    _children.insert(place, std::move(child));
}

void Node::setZOrder(int zOrder)
{
    _zOrder = zOrder;
    if (!_parent)
        return;
    std::vector<RefPtr<Node>>& siblings = _parent->_children;
    const auto place = std::ranges::find(siblings, this, &RefPtr<Node>::get);
    RefPtr<Node> self = std::move(*place);
    siblings.erase(place);
    _parent->insertSorted(std::move(self));
}

void Node::takeOut(std::size_t index, bool cleanUp)
{
    const auto place = _children.begin() + static_cast<std::ptrdiff_t>(index);
    const RefPtr<Node> child = std::move(*place);
    _children.erase(place);
    child->_parent = nullptr;
    if (cleanUp)
        child->cleanUp();
}

void Node::removeChild(Node* child, bool cleanUp)
{
    if (!child || child->_parent != this)
        return;
    const auto place = std::ranges::find(_children, child, &RefPtr<Node>::get);
    takeOut(static_cast<std::size_t>(place - _children.begin()), cleanUp);
}

void Node::removeFromParent(bool cleanUp)
{
    if (_parent)
        _parent->removeChild(this, cleanUp);
}

void Node::removeAllChildren(bool cleanUp)
{
    while (!_children.empty())
        takeOut(_children.size() - 1, cleanUp);
}

Node* Node::childByName(std::string_view name) const
{
    const auto found = std::ranges::find_if(_children, [name](const auto& child) { return child->_name == name; });
    return found == _children.end() ? nullptr : found->get();
}

bool Node::enumerateDescendants(const std::function<bool(Node&)>& callback)
{
    const std::vector<RefPtr<Node>> children = _children; // the callback may change the tree
    return std::ranges::all_of(children, [&callback](const RefPtr<Node>& child) {
        return child->enumerateDescendants(callback) && callback(*child);
    });
}

void Node::cleanUp()
{
    stopAllActions();
    if (_listeners > 0)
        _director->eventDispatcher().removeEventListenersForTarget(this);
    for (const RefPtr<Node>& child : _children)
        child->cleanUp();
}

void Node::runAction(RefPtr<Action> action) { _director->actionManager().add(*this, std::move(action)); }
void Node::stopAction(Action* action) { _director->actionManager().stop(*this, action); }
void Node::stopActionByTag(int tag) { _director->actionManager().stopByTag(*this, tag); }

void Node::stopAllActions()
{
    if (_runningActions > 0)
        _director->actionManager().stopAll(*this);
}

Action* Node::actionByTag(int tag) const { return _director->actionManager().find(*this, tag); }

void Node::visit(Renderer& renderer, const VisitState& parent)
{
    if (_visible)
        visitChildrenAndSelf(renderer, enter(parent));
}

VisitState Node::enter(const VisitState& parent)
{
    _displayedOpacity = multiply(parent.opacity, _opacity);
    _displayedColor = multiply(parent.color, _color);
    return {parent.transform * nodeToParentTransform(), _cascadeColor ? _displayedColor : white,
            _cascadeOpacity ? _displayedOpacity : std::uint8_t{255}};
}

void Node::markDrawn(Renderer& renderer)
{
    _drawIndex = renderer.nextDrawIndex();
    _drawnFrame = renderer.frame();
}

void Node::visitChildrenAndSelf(Renderer& renderer, const VisitState& own)
{
    auto child = _children.begin();
    for (; child != _children.end() && (*child)->_zOrder < 0; ++child)
        (*child)->visit(renderer, own);
    markDrawn(renderer);
    draw(renderer, own.transform);
    for (; child != _children.end(); ++child)
        (*child)->visit(renderer, own);
}

void Node::draw(Renderer&, const Affine&) {}

} // namespace tavlo::scene
