#pragma once

#include "scene/Director.h"
#include "scene/Geometry.h"
#include "scene/Ref.h"

#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tavlo::scene {

class Action;
class EventDispatcher;
class ActionManager;

/// What a node hands down while the tree is drawn.
struct VisitState
{
    Affine transform; ///< from the parent to the target that is drawn into
    Color3B color = white;
    std::uint8_t opacity = 255;
};

/// A place in the scene, with children that move, fade and go with it.
///
/// A node draws its children of negative z order, then itself, then the others, each group in ascending z order and,
/// within one order, in the order of their adding. Frame thread.
class Node : public Ref
{
public:
    static RefPtr<Node> create(Director& director) { return makeRef<Node>(director); }
    explicit Node(Director& director);
    ~Node() override;

    Director& director() const { return *_director; }

    /// The kind of node as scene files name it, such as "TavloCLabel".
    virtual std::string_view className() const { return "Node"; }

    // The tree

    /// Adds a node that has no parent yet; one that has stays where it is, and so does one that this node is below.
    void addChild(RefPtr<Node> child, int zOrder = 0);

    /// Lets go of a child; of a node that is none, nothing happens. With clean-up the actions of the child and of all
    /// below it end, and their listeners are removed.
    void removeChild(Node* child, bool cleanUp = true);
    void removeFromParent(bool cleanUp = true);
    void removeAllChildren(bool cleanUp = true);

    Node* parent() const { return _parent; }
    std::span<const RefPtr<Node>> children() const { return _children; } ///< in the order of drawing

    int zOrder() const { return _zOrder; }
    void setZOrder(int zOrder); ///< moves it behind the others of that order

    const std::string& name() const { return _name; }
    void setName(std::string name) { _name = std::move(name); }
    Node* childByName(std::string_view name) const; ///< of the children alone; the first one drawn

    /// Calls for every node below this one, children before their parents; ends when the callback returns false.
    bool enumerateDescendants(const std::function<bool(Node&)>& callback);

    int tag() const { return _tag; }
    void setTag(int tag) { _tag = tag; }

    // Where it stands, in its parent's pixels

    Vec2 position() const { return _position; }
    virtual void setPosition(Vec2 position);
    void setPosition(float x, float y) { setPosition(Vec2{x, y}); }
    void setPositionX(float x) { setPosition({x, _position.y}); }
    void setPositionY(float y) { setPosition({_position.x, y}); }

    /// The point of the content that stands at the position and that scale and rotation turn around: 0, 0 is the left
    /// bottom of the content size, 1, 1 the right top.
    Vec2 anchorPoint() const { return _anchor; }
    void setAnchorPoint(Vec2 anchor);

    /// Whether the left bottom stands at the position whatever the anchor is; the anchor is then only the pivot.
    bool ignoresAnchorForPosition() const { return _ignoreAnchor; }
    void setIgnoreAnchorPointForPosition(bool ignore);

    virtual Size contentSize() const { return _contentSize; }
    virtual void setContentSize(Size size);

    float scale() const { return _scale.x; } ///< of the first axis, where they differ
    float scaleX() const { return _scale.x; }
    float scaleY() const { return _scale.y; }
    Vec3 scale3D() const { return _scale; }
    void setScaleX(float scale) { setScale3D({scale, _scale.y, _scale.z}); }
    void setScaleY(float scale) { setScale3D({_scale.x, scale, _scale.z}); }
    void setScale(float scale) { setScale3D({scale, scale, scale}); }
    void setScale(float x, float y) { setScale3D({x, y, _scale.z}); }

    /// The third axis is kept and given back; on a plane it shows nothing.
    void setScale3D(const Vec3& scale);

    float rotation() const { return _rotation; }
    void setRotation(float degrees); ///< clockwise

    /// The content's rectangle in the parent's pixels, upright.
    Rect boundingBox() const;

    const Affine& nodeToParentTransform() const;

    /// To the pixels of the target that the node is drawn into: the view, or the nearest render texture above.
    Affine nodeToWorldTransform() const;
    Vec2 convertToNodeSpace(Vec2 world) const { return nodeToWorldTransform().inverse()(world); }
    Vec2 convertToWorldSpace(Vec2 point) const { return nodeToWorldTransform()(point); }

    // How it looks

    bool isVisible() const { return _visible; }
    void setVisible(bool visible) { _visible = visible; } ///< a hidden one hides all below it

    std::uint8_t opacity() const { return _opacity; }
    virtual void setOpacity(std::uint8_t opacity) { _opacity = opacity; } ///< 255 is solid
    Color3B color() const { return _color; }
    virtual void setColor(Color3B color) { _color = color; } ///< multiplies what is drawn; white leaves it

    /// Whether children take the opacity or the colour over, multiplied with their own. As made: both.
    void setCascadeOpacityEnabled(bool enabled) { _cascadeOpacity = enabled; }
    void setCascadeColorEnabled(bool enabled) { _cascadeColor = enabled; }

    /// With all above it taken in, as the node was drawn last.
    std::uint8_t displayedOpacity() const { return _displayedOpacity; }
    Color3B displayedColor() const { return _displayedColor; }

    // What it does: see Action.h

    /// Runs from the next frame on, until it is done, is stopped, or the node is cleaned up.
    void runAction(RefPtr<Action> action);
    void stopAction(Action* action);
    void stopActionByTag(int tag); ///< the oldest one of that tag
    void stopAllActions();
    Action* actionByTag(int tag) const;
    std::size_t runningActionCount() const { return _runningActions; }

    /// Ends the actions and removes the listeners of the node and all below it.
    virtual void cleanUp();

    /// Draws the tree from here down, if it is visible.
    virtual void visit(Renderer& renderer, const VisitState& parent);

protected:
    /// Draws the node alone. `transform` goes from the node to the target that is drawn into.
    virtual void draw(Renderer& renderer, const Affine& transform);

    /// Takes what is handed down, and gives what the node hands down.
    VisitState enter(const VisitState& parent);

    /// Remembers the place in the order of drawing.
    void markDrawn(Renderer& renderer);

    /// Whether the children are drawn into a target of the node's own.
    virtual bool isTarget() const { return false; }

    /// Children and the node itself, in their order.
    void visitChildrenAndSelf(Renderer& renderer, const VisitState& own);

    void markTransformDirty() { _transformDirty = true; }

private:
    friend class ActionManager;
    friend class EventDispatcher;

    bool isBelow(const Node& other) const; ///< or is it
    void insertSorted(RefPtr<Node> child);
    void takeOut(std::size_t index, bool cleanUp);

    const RefPtr<Director> _director;
    Node* _parent = nullptr;
    std::vector<RefPtr<Node>> _children; ///< sorted by z order
    std::string _name;
    int _zOrder = 0;
    int _tag = -1;

    Vec2 _position;
    Vec2 _anchor;
    Size _contentSize;
    Vec3 _scale{1, 1, 1};
    float _rotation = 0;
    mutable Affine _transform;
    mutable bool _transformDirty = true;
    bool _ignoreAnchor = false;

    bool _visible = true;
    bool _cascadeOpacity = true;
    bool _cascadeColor = true;
    std::uint8_t _opacity = 255;
    std::uint8_t _displayedOpacity = 255;
    Color3B _color = white;
    Color3B _displayedColor = white;

    std::uint32_t _runningActions = 0; ///< for the action manager
    std::uint32_t _listeners = 0;      ///< for the dispatcher
    std::uint32_t _drawIndex = 0;      ///< place in the order of drawing
    std::uint64_t _drawnFrame = ~0ULL; ///< the frame that it was drawn in last; as made, none
};

} // namespace tavlo::scene
