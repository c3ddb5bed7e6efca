#pragma once

#include <cstdint>
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
double dot(Vector a, Vector b);
double length(Vector a);
Vector frac(Vector a);

struct Colour
{
    double r = 0, g = 0, b = 0, a = 0;
};

inline Colour operator+(Colour p, Colour q) { return {p.r + q.r, p.g + q.g, p.b + q.b, p.a + q.a}; }
inline Colour operator*(Colour p, double s) { return {p.r * s, p.g * s, p.b * s, p.a * s}; }

double frac(double a);
double clamped(double a); ///< to 0..1
double lerp(double a, double b, double t);
Vector lerp(Vector a, Vector b, double t);
Colour lerp(Colour a, Colour b, double t);

/// A picture in memory, RGBA, 8 bits each, top row first, sampled as a texture with linear filter and clamped
/// addressing. An empty one gives zeros.
struct Picture
{
    int width = 0, height = 0;
    std::vector<std::uint8_t> bytes; ///< width · height · 4

    Colour texel(int x, int y) const; ///< 0..1; outside: the nearest inside
    Colour at(Vector uv) const;
};

} // namespace tavlo::reference
