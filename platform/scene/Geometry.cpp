#include "scene/Geometry.h"

#include <algorithm>
#include <cmath>

namespace tavlo::scene {

float length(Vec2 vector) { return std::hypot(vector.x, vector.y); }

Affine operator*(const Affine& outer, const Affine& inner)
{
    return {outer.a * inner.a + outer.c * inner.b,
            outer.b * inner.a + outer.d * inner.b,
            outer.a * inner.c + outer.c * inner.d,
            outer.b * inner.c + outer.d * inner.d,
            outer.a * inner.tx + outer.c * inner.ty + outer.tx,
            outer.b * inner.tx + outer.d * inner.ty + outer.ty};
}

Affine Affine::inverse() const
{
    const float determinant = a * d - b * c;
    if (determinant == 0)
        return {0, 0, 0, 0, 0, 0};
    return {d / determinant,
            -b / determinant,
            -c / determinant,
            a / determinant,
            (c * ty - d * tx) / determinant,
            (b * tx - a * ty) / determinant};
}

Rect boundsOf(const Affine& transform, const Rect& rect)
{
    const Vec2 corners[]{transform({rect.x, rect.y}), transform({rect.maxX(), rect.y}),
                         transform({rect.maxX(), rect.maxY()}), transform({rect.x, rect.maxY()})};
    const auto [left, right] = std::ranges::minmax(corners, {}, &Vec2::x);
    const auto [bottom, top] = std::ranges::minmax(corners, {}, &Vec2::y);
    return {left.x, bottom.y, right.x - left.x, top.y - bottom.y};
}

Color4B toBytes(const Color4F& color)
{
    const auto byte = [](float value) {
        return static_cast<std::uint8_t>(std::lround(std::clamp(value, 0.0F, 1.0F) * 255));
    };
    return {byte(color.r), byte(color.g), byte(color.b), byte(color.a)};
}

} // namespace tavlo::scene
