#include "scene/Node.h"

#include <cmath>
#include <numbers>

namespace tavlo::scene {

void Node::setPosition(Vec2 position)
{
    _position = position;
    markTransformDirty();
}

void Node::setAnchorPoint(Vec2 anchor)
{
    _anchor = anchor;
    markTransformDirty();
}

void Node::setIgnoreAnchorPointForPosition(bool ignore)
{
    _ignoreAnchor = ignore;
    markTransformDirty();
}

void Node::setContentSize(Size size)
{
    _contentSize = size;
    markTransformDirty();
}

void Node::setScale3D(const Vec3& scale)
{
    _scale = scale;
    markTransformDirty();
}

void Node::setRotation(float degrees)
{
    _rotation = degrees;
    markTransformDirty();
}

const Affine& Node::nodeToParentTransform() const
{
    if (!_transformDirty)
        return _transform;
    const Size size = contentSize();
    const Vec2 pivot{_anchor.x * size.width, _anchor.y * size.height};
    const Vec2 stand = _ignoreAnchor ? _position + pivot : _position;
    const float angle = -_rotation * std::numbers::pi_v<float> / 180; // clockwise, with y up
    const float sine = _rotation == 0 ? 0 : std::sin(angle);
    const float cosine = _rotation == 0 ? 1 : std::cos(angle);
    _transform = {cosine * _scale.x, sine * _scale.x, -sine * _scale.y, cosine * _scale.y, 0, 0};
    const Vec2 moved = _transform(pivot);
    _transform.tx = stand.x - moved.x;
    _transform.ty = stand.y - moved.y;
    _transformDirty = false;
    return _transform;
}

Affine Node::nodeToWorldTransform() const
{
    Affine transform = nodeToParentTransform();
    for (const Node* above = _parent; above && !above->isTarget(); above = above->_parent)
        transform = above->nodeToParentTransform() * transform;
    return transform;
}

Rect Node::boundingBox() const
{
    const Size size = contentSize();
    return boundsOf(nodeToParentTransform(), {0, 0, size.width, size.height});
}

} // namespace tavlo::scene
