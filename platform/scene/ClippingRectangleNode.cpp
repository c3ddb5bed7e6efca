#include "scene/ClippingRectangleNode.h"

#include "scene/Renderer.h"

namespace tavlo::scene {

RefPtr<ClippingRectangleNode> ClippingRectangleNode::create(Director& director)
{
    return makeRef<ClippingRectangleNode>(director);
}

void ClippingRectangleNode::visit(Renderer& renderer, const VisitState& parent)
{
    if (!isVisible())
        return;
    const VisitState own = enter(parent);
    if (_enabled)
        renderer.pushClip(boundsOf(own.transform, _region));
    visitChildrenAndSelf(renderer, own);
    if (_enabled)
        renderer.popClip();
}

} // namespace tavlo::scene
