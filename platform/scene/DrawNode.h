#pragma once

#include "scene/Node.h"
#include "scene/Vertex.h"

#include <vector>

namespace tavlo::scene {

/// Marks: lines, rectangles, dots, in the node's own pixels. They stay until `clear`. Edges are hard: a pixel whose
/// middle is inside is drawn. Frame thread.
class DrawNode : public Node
{
public:
    static RefPtr<DrawNode> create(Director& director, float lineWidth = 1.0F);
    DrawNode(Director& director, float lineWidth);
    std::string_view className() const override { return "DrawNode"; }

    void clear();

    void setLineWidth(float pixels) { _lineWidth = pixels; } ///< of what is drawn from now on
    float lineWidth() const { return _lineWidth; }

    /// A straight line between two points, half of its width on either side, with square ends at the points.
    void drawLine(Vec2 from, Vec2 to, const Color4F& color);

    /// The outline of an upright rectangle, given by two opposite corners. It lies inside the rectangle: outlines of
    /// rectangles that shrink by the line's width fit together without a gap.
    void drawRect(Vec2 corner, Vec2 opposite, const Color4F& color);

    /// An outline through four corners; lies inside when they make up an upright rectangle, else on both sides of the
    /// edges.
    void drawRect(Vec2 p1, Vec2 p2, Vec2 p3, Vec2 p4, const Color4F& color);

    void drawSolidRect(Vec2 corner, Vec2 opposite, const Color4F& color);

    /// A disc.
    void drawDot(Vec2 middle, float radius, const Color4F& color);

    bool isEmpty() const { return _indices.empty(); }

protected:
    void draw(Renderer& renderer, const Affine& transform) override;

private:
    void addQuad(Vec2 a, Vec2 b, Vec2 c, Vec2 d, Color4B color);
    void addVertex(Vec2 point, Color4B color);
    bool hasRoom(std::size_t vertices) const;

    float _lineWidth;
    std::vector<Vertex> _vertices; ///< untransformed, colour not yet tinted
    std::vector<std::uint16_t> _indices;
};

} // namespace tavlo::scene
