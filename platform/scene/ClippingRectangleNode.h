#pragma once

#include "scene/Node.h"

namespace tavlo::scene {

/// Shows its children only within a rectangle of its own pixels. Within a clipped node it clips further. A rotated
/// rectangle clips to the upright one around it. Frame thread.
class ClippingRectangleNode : public Node
{
public:
    static RefPtr<ClippingRectangleNode> create(Director& director);
    explicit ClippingRectangleNode(Director& director) : Node(director) {}
    std::string_view className() const override { return "ClippingRectangleNode"; }

    void setClippingRegion(const Rect& region) { _region = region; }
    const Rect& clippingRegion() const { return _region; }

    /// As made: on.
    void setClippingEnabled(bool enabled) { _enabled = enabled; }
    bool isClippingEnabled() const { return _enabled; }

    void visit(Renderer& renderer, const VisitState& parent) override;

private:
    Rect _region;
    bool _enabled = true;
};

} // namespace tavlo::scene
