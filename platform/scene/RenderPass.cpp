#include "scene/RenderPass.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace tavlo::scene {

namespace {

constexpr std::size_t vertexLimit = std::numeric_limits<std::uint16_t>::max() + std::size_t{1};
constexpr float edge = 0.01F; // pixels: what rounding may miss of the target

// Everything from the pixel whose middle is inside to the last such one, as draws fill pixels.
Rect wholePixels(const Rect& area)
{
    const float left = std::ceil(area.minX() - 0.5F), bottom = std::ceil(area.minY() - 0.5F);
    return {left, bottom, std::ceil(area.maxX() - 0.5F) - left, std::ceil(area.maxY() - 0.5F) - bottom};
}

Rect common(const Rect& a, const Rect& b)
{
    const float left = std::max(a.minX(), b.minX()), bottom = std::max(a.minY(), b.minY());
    return {left, bottom, std::max(0.0F, std::min(a.maxX(), b.maxX()) - left),
            std::max(0.0F, std::min(a.maxY(), b.maxY()) - bottom)};
}

Rect boundsOf(std::span<const Vertex> vertices)
{
    Vec2 low = vertices[0].position, high = low;
    for (const Vertex& vertex : vertices) {
        low = {std::min(low.x, vertex.position.x), std::min(low.y, vertex.position.y)};
        high = {std::max(high.x, vertex.position.x), std::max(high.y, vertex.position.y)};
    }
    return {low.x, low.y, high.x - low.x, high.y - low.y};
}

bool touches(const Rect& a, const Rect& b)
{
    return a.minX() < b.maxX() && b.minX() < a.maxX() && a.minY() < b.maxY() && b.minY() < a.maxY();
}

// Both premultiplied.
Color4F over(Color4B top, const Color4F& bottom)
{
    const float rest = 1 - static_cast<float>(top.a) / 255;
    return {static_cast<float>(top.r) / 255 + bottom.r * rest, static_cast<float>(top.g) / 255 + bottom.g * rest,
            static_cast<float>(top.b) / 255 + bottom.b * rest, static_cast<float>(top.a) / 255 + bottom.a * rest};
}

Color4B tinted(Color4B own, Color3B color, std::uint8_t opacity)
{
    return premultiplied(multiply({own.r, own.g, own.b}, color), multiply(own.a, opacity));
}

bool isOf(const Batch& batch, const BatchKind& kind)
{
    return !batch.command && batch.program == kind.program && batch.blend == kind.blend &&
           batch.sampler == kind.sampler && batch.texture == kind.texture && batch.state == kind.state;
}

} // namespace

void RenderPass::begin(const graphics::TexturePtr& target, bool bottomRowFirst, const std::optional<Color4F>& clear)
{
    _target = target;
    _size = {static_cast<float>(target->desc().width), static_cast<float>(target->desc().height)};
    _bottomRowFirst = bottomRowFirst;
    _covered = false;
    _clear.reset();
    if (clear)
        _clear = Color4F{clear->r * clear->a, clear->g * clear->a, clear->b * clear->a, clear->a};
    _clips.clear();
    _vertices.clear();
    _indices.clear();
    _batches.clear();
}

void RenderPass::release()
{
    _target.reset();
    _batches.clear();
}

void RenderPass::pushClip(const Rect& area) { _clips.push_back(common(wholePixels(area), clipArea())); }
void RenderPass::popClip() { _clips.pop_back(); }
Rect RenderPass::clipArea() const { return _clips.empty() ? Rect{0, 0, _size.width, _size.height} : _clips.back(); }

std::optional<graphics::Viewport> RenderPass::clipRows() const
{
    if (_clips.empty())
        return std::nullopt;
    const Rect& clip = _clips.back();
    const float firstRow = _bottomRowFirst ? clip.minY() : _size.height - clip.maxY();
    return graphics::Viewport{static_cast<int>(clip.x), static_cast<int>(firstRow), static_cast<int>(clip.width),
                              static_cast<int>(clip.height)};
}

bool RenderPass::covers(std::span<const Vertex, 4> corners) const
{
    const Vec2 low = corners[0].position, high = corners[2].position;
    return low.x <= edge && low.y <= edge && high.x >= _size.width - edge && high.y >= _size.height - edge &&
           corners[1].position == Vec2{high.x, low.y} && corners[3].position == Vec2{low.x, high.y};
}

bool RenderPass::becomes(const BatchKind& kind) const
{
    if (!kind.isPicture || _bottomRowFirst)
        return false;
    const graphics::TextureDesc &source = kind.texture->desc(), &target = _target->desc();
    return source.width == target.width && source.height == target.height && source.format == target.format;
}

bool RenderPass::addQuad(BatchKind kind, std::span<const Vertex, 4> corners)
{
    if (!touches(boundsOf(corners), clipArea()))
        return false;
    const bool coversFirst = _batches.empty() && _clips.empty() && !kind.state && covers(corners);
    if (_clear && !_covered && coversFirst) {
        if (kind.program == PlainProgram::Solid) {
            _clear = over(corners[0].color, *_clear);
            return true;
        }
        _covered = true;
        if (kind.blend == BatchBlend::Over)
            kind.blend = BatchBlend::OverClear;
    }
    Batch& batch = batchFor(kind, corners.size());
    batch.isCopy = coversFirst && becomes(kind); // a quad that joins it is drawn, and the first with it
    const auto base = static_cast<std::uint16_t>(_vertices.size() - batch.baseVertex);
    _vertices.insert(_vertices.end(), corners.begin(), corners.end());
    for (const int step : {0, 1, 2, 0, 2, 3})
        _indices.push_back(static_cast<std::uint16_t>(base + step));
    batch.indexCount += 6;
    return true;
}

void RenderPass::addTriangles(const Affine& transform, std::span<const Vertex> vertices,
                              std::span<const std::uint16_t> indices, Color3B color, std::uint8_t opacity)
{
    if (indices.empty() || vertices.size() > vertexLimit)
        return;
    static const graphics::TexturePtr none;
    Batch& batch = batchFor({none}, vertices.size());
    const auto base = static_cast<std::uint16_t>(_vertices.size() - batch.baseVertex);
    for (const Vertex& vertex : vertices)
        _vertices.push_back({transform(vertex.position), {}, tinted(vertex.color, color, opacity)});
    for (const std::uint16_t index : indices)
        _indices.push_back(static_cast<std::uint16_t>(base + index));
    batch.indexCount += static_cast<std::uint32_t>(indices.size());
}

void RenderPass::addCommand(CustomCommand& command)
{
    Batch batch;
    batch.command = &command;
    batch.baseVertex = _batches.empty() ? 0 : _batches.back().baseVertex;
    _batches.push_back(std::move(batch));
}

Batch& RenderPass::batchFor(const BatchKind& kind, std::size_t vertexCount)
{
    const std::optional<graphics::Viewport> clip = clipRows();
    std::uint32_t base = _batches.empty() ? 0 : _batches.back().baseVertex;
    const bool hasRoom = _vertices.size() - base + vertexCount <= vertexLimit;
    if (!hasRoom)
        base = static_cast<std::uint32_t>(_vertices.size());
    if (hasRoom && !_batches.empty() && isOf(_batches.back(), kind) && _batches.back().clip == clip)
        return _batches.back();
    _batches.push_back({nullptr, kind.program, kind.blend, kind.sampler, kind.texture, kind.state, clip,
                        static_cast<std::uint32_t>(_indices.size()), 0, base});
    return _batches.back();
}

} // namespace tavlo::scene
