#pragma once

#include <cstdint>

// Coordinates: the origin is the left bottom, x to the right, y up, in pixels of the target that is drawn into.

namespace tavlo::scene {

struct Vec2
{
    float x = 0, y = 0;
    bool operator==(const Vec2&) const = default;
};

constexpr Vec2 operator+(Vec2 a, Vec2 b) { return {a.x + b.x, a.y + b.y}; }
constexpr Vec2 operator-(Vec2 a, Vec2 b) { return {a.x - b.x, a.y - b.y}; }
constexpr Vec2 operator*(Vec2 a, float factor) { return {a.x * factor, a.y * factor}; }
float length(Vec2 vector);

struct Vec3
{
    float x = 0, y = 0, z = 0;
    bool operator==(const Vec3&) const = default;
};

struct Size
{
    float width = 0, height = 0;
    bool operator==(const Size&) const = default;
};

struct Rect
{
    float x = 0, y = 0; ///< left bottom
    float width = 0, height = 0;

    float minX() const { return x; }
    float minY() const { return y; }
    float maxX() const { return x + width; }
    float maxY() const { return y + height; }
    Vec2 middle() const { return {x + width / 2, y + height / 2}; }
    Size size() const { return {width, height}; }

    /// The left and lower edge belong to it, the right and upper one do not: of two that touch, one holds a point.
    bool contains(Vec2 point) const { return point.x >= x && point.x < maxX() && point.y >= y && point.y < maxY(); }

    bool operator==(const Rect&) const = default;
};

/// x' = a·x + c·y + tx, y' = b·x + d·y + ty
struct Affine
{
    float a = 1, b = 0, c = 0, d = 1, tx = 0, ty = 0;

    Vec2 operator()(Vec2 point) const { return {a * point.x + c * point.y + tx, b * point.x + d * point.y + ty}; }
    bool isTranslation() const { return a == 1 && b == 0 && c == 0 && d == 1; }
    bool keepsAxes() const { return b == 0 && c == 0; }
    bool operator==(const Affine&) const = default;

    /// All zeros for one that has no inverse: everything then lands on the origin.
    Affine inverse() const;
};

/// First `inner`, then `outer`.
Affine operator*(const Affine& outer, const Affine& inner);

/// The smallest upright rectangle around the transformed one.
Rect boundsOf(const Affine& transform, const Rect& rect);

/// 0 to 255 each.
struct Color3B
{
    std::uint8_t r = 0, g = 0, b = 0;
    bool operator==(const Color3B&) const = default;
};

/// 0 to 255 each, colour not multiplied by alpha.
struct Color4B
{
    std::uint8_t r = 0, g = 0, b = 0, a = 0;
    bool operator==(const Color4B&) const = default;
};

/// 0 to 1 each, colour not multiplied by alpha.
struct Color4F
{
    float r = 0, g = 0, b = 0, a = 0;
    bool operator==(const Color4F&) const = default;
};

inline constexpr Color3B white{255, 255, 255};

/// a · b / 255, rounded: exact for 0 and 255.
constexpr std::uint8_t multiply(std::uint8_t a, std::uint8_t b)
{
    return static_cast<std::uint8_t>((a * b + 127) / 255);
}
constexpr Color3B multiply(Color3B a, Color3B b)
{
    return {multiply(a.r, b.r), multiply(a.g, b.g), multiply(a.b, b.b)};
}

/// Rounded and held to 0..255.
Color4B toBytes(const Color4F& color);

} // namespace tavlo::scene
