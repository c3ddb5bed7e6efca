#pragma once

#include <QSizeF>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <span>
#include <vector>

namespace tavlo::reference {

struct Vector
{
    double x = 0, y = 0;
};

inline Vector operator+(Vector a, Vector b) { return {a.x + b.x, a.y + b.y}; }
inline Vector operator-(Vector a, Vector b) { return {a.x - b.x, a.y - b.y}; }
inline Vector operator*(Vector a, double s) { return {a.x * s, a.y * s}; }
inline Vector operator/(Vector a, double s) { return {a.x / s, a.y / s}; }
inline double length(Vector a) { return std::hypot(a.x, a.y); }
inline Vector lerp(Vector a, Vector b, double t) { return a + (b - a) * t; }

/// Red, green, blue, alpha, 0 to 1.
using Rgba = std::array<double, 4>;

inline Rgba operator+(Rgba p, const Rgba& q)
{
    std::transform(p.begin(), p.end(), q.begin(), p.begin(), std::plus());
    return p;
}
inline Rgba operator*(const Rgba& p, double s) { return {p[0] * s, p[1] * s, p[2] * s, p[3] * s}; }
inline Rgba lerp(const Rgba& p, const Rgba& q, double t) { return p * (1 - t) + q * t; }

inline double unit(double value) { return std::clamp(value, 0.0, 1.0); }

/// A picture in memory, its top row first.
struct Picture
{
    Picture(int columns = 0, int rows = 0, Rgba fill = {}) : width(columns), height(rows), texels(columns * rows, fill)
    {}

    /// \param bytes  of red alone, opaque, or four a texel, red first
    Picture(int columns, int rows, std::span<const std::uint8_t> bytes);

    Rgba& at(int x, int y) { return texels[y * width + x]; }
    const Rgba& at(int x, int y) const { return texels[y * width + x]; }
    QSizeF size() const { return {double(width), double(height)}; }

    /// As a texture gives it with linear filter and clamped addressing; of no size: zeros.
    Rgba at(Vector uv) const;

    int width, height;
    std::vector<Rgba> texels;
};

} // namespace tavlo::reference
