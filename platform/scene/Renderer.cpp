#include "scene/Renderer.h"

#include "scene/Director.h"

#include <cassert>
#include <cmath>

namespace tavlo::scene {

using graphics::Sampler;

namespace {

constexpr float worthOwnDraw = 128 * 128; // pixels: below, a draw of its own costs more than what it saves

bool isWhole(float value) { return value == std::round(value); }

Vec2 texelsOf(const graphics::Texture& texture)
{
    return {static_cast<float>(texture.desc().width), static_cast<float>(texture.desc().height)};
}

// Whether every pixel shows one texel, where filtering changes nothing and costs most of the draw.
bool isPixelExact(const Affine& transform, const Rect& rect, const TexturePart& part, const graphics::Texture& texture)
{
    if (!transform.isTranslation() || !isWhole(rect.x + transform.tx) || !isWhole(rect.y + transform.ty))
        return false;
    const Vec2 texels = texelsOf(texture);
    const Vec2 first{part.leftTop.x * texels.x, part.leftTop.y * texels.y};
    const Vec2 size{std::abs(part.rightBottom.x - part.leftTop.x) * texels.x,
                    std::abs(part.rightBottom.y - part.leftTop.y) * texels.y};
    return isWhole(first.x) && isWhole(first.y) && size == Vec2{rect.width, rect.height};
}

bool isUntinted(Color4B tint) { return tint.r == 255 && tint.g == 255 && tint.b == 255 && tint.a == 255; }

PlainProgram programFor(const Paint& paint, Color4B tint, bool large)
{
    if (!paint.texture)
        return PlainProgram::Solid;
    switch (paint.alpha) {
    case TextureAlpha::Straight:
        return PlainProgram::Straight;
    case TextureAlpha::Ignored:
    case TextureAlpha::Opaque:
        return large && isUntinted(tint) ? PlainProgram::Copy : PlainProgram::Opaque;
    case TextureAlpha::Premultiplied:
        break;
    }
    return PlainProgram::Premultiplied;
}

bool isOpaque(const Paint& paint, Color4B tint)
{
    const bool unread = paint.alpha == TextureAlpha::Ignored || paint.alpha == TextureAlpha::Opaque;
    return !paint.state && tint.a == 255 && (!paint.texture || unread);
}

bool isWholeUpright(const TexturePart& part) { return part.leftTop == Vec2{0, 0} && part.rightBottom == Vec2{1, 1}; }

} // namespace

Renderer::Renderer(Director& director) : _director(director) {}
Renderer::~Renderer() = default;

void Renderer::beginFrame()
{
    ++_frame;
    _drawIndex = 0;
    _statistics = {};
}

void Renderer::beginTarget(const graphics::TexturePtr& target, bool bottomRowFirst, const std::optional<Color4F>& clear)
{
    if (_usedPasses == _passes.size())
        _passes.push_back(std::make_unique<RenderPass>());
    _pass = _passes[_usedPasses++].get();
    _pass->begin(target, bottomRowFirst, clear);
    _open.push_back(_pass);
}

void Renderer::endTarget()
{
    assert(!_open.empty());
    _order.push_back(_open.back());
    leaveTarget();
}

void Renderer::dropTarget()
{
    assert(!_open.empty());
    _open.back()->release();
    leaveTarget();
}

void Renderer::leaveTarget()
{
    _open.pop_back();
    _pass = _open.empty() ? nullptr : _open.back();
}

void Renderer::drawQuad(const Affine& transform, const Rect& rect, const TexturePart& part, Color4B tint,
                        const Paint& paint)
{
    if (tint.a == 0 && !paint.state)
        return;
    const bool large = rect.width * rect.height >= worthOwnDraw;
    BatchKind kind{paint.texture, programFor(paint, tint, large)};
    kind.state = paint.state;
    if (isOpaque(paint, tint))
        kind.blend = BatchBlend::Replace;
    if (large && paint.texture && isPixelExact(transform, rect, part, *paint.texture))
        kind.sampler = Sampler::NearestClamp;
    kind.isPicture = kind.sampler == Sampler::NearestClamp && kind.program == PlainProgram::Copy && !paint.state &&
                     paint.alpha == TextureAlpha::Opaque && isWholeUpright(part);
    const Vec2 low = part.leftTop, high = part.rightBottom;
    const Vertex corners[]{{transform({rect.x, rect.y}), {low.x, high.y}, tint},
                           {transform({rect.maxX(), rect.y}), {high.x, high.y}, tint},
                           {transform({rect.maxX(), rect.maxY()}), {high.x, low.y}, tint},
                           {transform({rect.x, rect.maxY()}), {low.x, low.y}, tint}};
    _pass->addQuad(kind, corners);
}

void Renderer::drawTriangles(const Affine& transform, std::span<const Vertex> vertices,
                             std::span<const std::uint16_t> indices, Color3B color, std::uint8_t opacity)
{
    if (opacity != 0)
        _pass->addTriangles(transform, vertices, indices, color, opacity);
}

void Renderer::addCommand(CustomCommand& command) { _pass->addCommand(command); }
void Renderer::pushClip(const Rect& area) { _pass->pushClip(area); }
void Renderer::popClip() { _pass->popClip(); }

} // namespace tavlo::scene
