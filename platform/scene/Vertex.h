#pragma once

#include "scene/Geometry.h"

namespace tavlo::scene {

/// A corner of what is drawn.
struct Vertex
{
    Vec2 position; ///< pixels of the target, y up
    Vec2 uv;       ///< 0, 0 is the left top of the texture
    Color4B color; ///< multiplies the texture; colour multiplied by alpha
};
static_assert(sizeof(Vertex) == 20);

/// The colour of a vertex: colour times opacity, multiplied by alpha.
constexpr Color4B premultiplied(Color3B color, std::uint8_t alpha)
{
    return {multiply(color.r, alpha), multiply(color.g, alpha), multiply(color.b, alpha), alpha};
}

} // namespace tavlo::scene
