#include "support/reference/Picture.h"

#include <algorithm>
#include <cmath>

namespace tavlo::reference {

double dot(Vector a, Vector b) { return a.x * b.x + a.y * b.y; }
double length(Vector a) { return std::hypot(a.x, a.y); }
double frac(double a) { return a - std::floor(a); }
Vector frac(Vector a) { return {frac(a.x), frac(a.y)}; }
double clamped(double a) { return std::clamp(a, 0.0, 1.0); }
double lerp(double a, double b, double t) { return a + (b - a) * t; }
Vector lerp(Vector a, Vector b, double t) { return a + (b - a) * t; }
Colour lerp(Colour a, Colour b, double t) { return a * (1 - t) + b * t; }

Colour Picture::texel(int x, int y) const
{
    if (bytes.empty())
        return {};
    x = std::clamp(x, 0, width - 1);
    y = std::clamp(y, 0, height - 1);
    const std::uint8_t* place =
        bytes.data() +
        (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)) * 4;
    return {place[0] / 255.0, place[1] / 255.0, place[2] / 255.0, place[3] / 255.0};
}

Colour Picture::at(Vector uv) const
{
    // Far outside is as good as just outside, and fits an int.
    const double x = std::clamp(uv.x * width - 0.5, -1.0, width + 1.0);
    const double y = std::clamp(uv.y * height - 0.5, -1.0, height + 1.0);
    const int left = static_cast<int>(std::floor(x));
    const int top = static_cast<int>(std::floor(y));
    const Colour above = lerp(texel(left, top), texel(left + 1, top), x - left);
    const Colour below = lerp(texel(left, top + 1), texel(left + 1, top + 1), x - left);
    return lerp(above, below, y - top);
}

} // namespace tavlo::reference
