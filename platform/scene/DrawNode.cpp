#include "scene/DrawNode.h"

#include "graphics/Log.h"
#include "scene/Renderer.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace tavlo::scene {

namespace {

constexpr std::size_t vertexLimit = std::numeric_limits<std::uint16_t>::max();

bool isUpright(Vec2 p1, Vec2 p2, Vec2 p3, Vec2 p4)
{
    return (p1.y == p2.y && p2.x == p3.x && p3.y == p4.y && p4.x == p1.x) ||
           (p1.x == p2.x && p2.y == p3.y && p3.x == p4.x && p4.y == p1.y);
}

} // namespace

RefPtr<DrawNode> DrawNode::create(Director& director, float lineWidth)
{
    return makeRef<DrawNode>(director, lineWidth);
}

DrawNode::DrawNode(Director& director, float lineWidth) : Node(director), _lineWidth(lineWidth) {}

void DrawNode::clear()
{
    _vertices.clear();
    _indices.clear();
}

bool DrawNode::hasRoom(std::size_t vertices) const
{
    if (_vertices.size() + vertices <= vertexLimit)
        return true;
    graphics::logFailure("a draw node is full");
    return false;
}

void DrawNode::addVertex(Vec2 point, Color4B color) { _vertices.push_back({point, {}, color}); }

void DrawNode::addQuad(Vec2 a, Vec2 b, Vec2 c, Vec2 d, Color4B color)
{
    if (!hasRoom(4))
        return;
    const auto first = static_cast<std::uint16_t>(_vertices.size());
    for (const Vec2 corner : {a, b, c, d})
        addVertex(corner, color);
    for (const int step : {0, 1, 2, 0, 2, 3})
        _indices.push_back(static_cast<std::uint16_t>(first + step));
}

void DrawNode::drawLine(Vec2 from, Vec2 to, const Color4F& color)
{
    const float distance = length(to - from);
    if (distance == 0)
        return;
    const Vec2 along = (to - from) * (_lineWidth / 2 / distance);
    const Vec2 aside{-along.y, along.x};
    addQuad(from - aside, to - aside, to + aside, from + aside, toBytes(color));
}

void DrawNode::drawRect(Vec2 corner, Vec2 opposite, const Color4F& color)
{
    const float left = std::min(corner.x, opposite.x), right = std::max(corner.x, opposite.x);
    const float bottom = std::min(corner.y, opposite.y), top = std::max(corner.y, opposite.y);
    const float width = std::min(_lineWidth, right - left), height = std::min(_lineWidth, top - bottom);
    drawSolidRect({left, bottom}, {right, bottom + height}, color);
    drawSolidRect({left, top - height}, {right, top}, color);
    drawSolidRect({left, bottom + height}, {left + width, top - height}, color);
    drawSolidRect({right - width, bottom + height}, {right, top - height}, color);
}

void DrawNode::drawRect(Vec2 p1, Vec2 p2, Vec2 p3, Vec2 p4, const Color4F& color)
{
    if (isUpright(p1, p2, p3, p4)) {
        drawRect(p1, p3, color);
        return;
    }
    drawLine(p1, p2, color);
    drawLine(p2, p3, color);
    drawLine(p3, p4, color);
    drawLine(p4, p1, color);
}

void DrawNode::drawSolidRect(Vec2 corner, Vec2 opposite, const Color4F& color)
{
    if (corner.x == opposite.x || corner.y == opposite.y)
        return;
    addQuad(corner, {opposite.x, corner.y}, opposite, {corner.x, opposite.y}, toBytes(color));
}

void DrawNode::drawDot(Vec2 middle, float radius, const Color4F& color)
{
    // Sides so many that none leaves the circle by more than a tenth of a pixel.
    const float sagitta = std::min(0.1F / std::max(radius, 0.1F), 1.0F);
    const int sides = std::max(8, static_cast<int>(std::ceil(std::numbers::pi_v<float> / std::acos(1 - sagitta))));
    if (radius <= 0 || !hasRoom(static_cast<std::size_t>(sides)))
        return;
    const auto first = static_cast<std::uint16_t>(_vertices.size());
    for (int i = 0; i < sides; ++i) {
        const float angle = 2 * std::numbers::pi_v<float> * static_cast<float>(i) / static_cast<float>(sides);
        addVertex({middle.x + radius * std::cos(angle), middle.y + radius * std::sin(angle)}, toBytes(color));
    }
    for (int i = 2; i < sides; ++i)
        for (const int corner : {0, i - 1, i})
            _indices.push_back(static_cast<std::uint16_t>(first + corner));
}

void DrawNode::draw(Renderer& renderer, const Affine& transform)
{
    renderer.drawTriangles(transform, _vertices, _indices, displayedColor(), displayedOpacity());
}

} // namespace tavlo::scene
