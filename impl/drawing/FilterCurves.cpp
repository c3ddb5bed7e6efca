#include "drawing/FilterCurves.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tavlo {
namespace {

constexpr int inputs = 256;
constexpr size_t pointCount = 5;

enum CurveChannel
{
    Red,
    Green,
    Blue,
    Alpha,
    Rgb, ///< red, green and blue alike
};

/// A point that a curve goes through: what becomes of the value `in`.
struct ControlPoint
{
    quint8 in;
    quint8 out;
};

/// One curve. Its points rise from the value 0 to the value 255.
struct Curve
{
    int slot;
    int row;
    CurveChannel channel;
    ControlPoint points[pointCount];
};

constexpr std::array<int, lastFilterCurveSlot - firstFilterCurveSlot + 1> rowCounts{2, 2, 1, 1, 1, 2, 2, 3, 2, 2};

// One curve on a line. A channel without a line stays as it is; alpha without one is opaque.
// resources/generate/preview.py reads this table, and shows what comes of a change.
constexpr Curve curves[] = {
    // sunrise: a light, fresh middle; an edge that sinks into blue-green
    {38, 0, Red, {{0, 6}, {64, 82}, {128, 168}, {192, 234}, {255, 255}}},
    {38, 0, Green, {{0, 4}, {64, 66}, {128, 138}, {192, 194}, {255, 230}}},
    {38, 0, Blue, {{0, 22}, {64, 76}, {128, 134}, {192, 190}, {255, 238}}},
    {38, 1, Red, {{0, 0}, {64, 44}, {128, 112}, {192, 190}, {255, 246}}},
    {38, 1, Green, {{0, 4}, {64, 52}, {128, 114}, {192, 182}, {255, 224}}},
    {38, 1, Blue, {{0, 30}, {64, 76}, {128, 130}, {192, 190}, {255, 238}}},
    // sunset: red and gold in the middle; then, in alpha, less light for all. Row 1 holds that second curve alone
    {39, 0, Red, {{0, 10}, {64, 86}, {128, 166}, {192, 226}, {255, 255}}},
    {39, 0, Green, {{0, 2}, {64, 60}, {128, 128}, {192, 194}, {255, 246}}},
    {39, 0, Blue, {{0, 24}, {64, 66}, {128, 110}, {192, 152}, {255, 204}}},
    {39, 0, Alpha, {{0, 0}, {64, 46}, {128, 106}, {192, 180}, {255, 250}}},
    {39, 1, Rgb, {{0, 0}, {64, 46}, {128, 106}, {192, 180}, {255, 250}}},
    {39, 1, Alpha, {{0, 0}, {64, 46}, {128, 106}, {192, 180}, {255, 250}}},
    // healthy: all channels go through red, then through green: a lift, then a little firmness
    {40, 0, Red, {{0, 0}, {64, 70}, {128, 140}, {192, 204}, {255, 255}}},
    {40, 0, Green, {{0, 0}, {64, 58}, {128, 128}, {192, 200}, {255, 255}}},
    // sweets: sugar pink above, lilac below
    {41, 0, Red, {{0, 22}, {64, 84}, {128, 152}, {192, 212}, {255, 255}}},
    {41, 0, Green, {{0, 8}, {64, 64}, {128, 132}, {192, 196}, {255, 248}}},
    {41, 0, Blue, {{0, 34}, {64, 90}, {128, 148}, {192, 204}, {255, 250}}},
    // romance: soft and rosy, blacks faded to plum
    {42, 0, Red, {{0, 34}, {64, 96}, {128, 162}, {192, 218}, {255, 254}}},
    {42, 0, Green, {{0, 18}, {64, 72}, {128, 134}, {192, 194}, {255, 242}}},
    {42, 0, Blue, {{0, 40}, {64, 88}, {128, 142}, {192, 192}, {255, 236}}},
    // warm: amber all over; where the light leaks in, a faded blue print
    {43, 0, Red, {{0, 8}, {64, 78}, {128, 152}, {192, 214}, {255, 255}}},
    {43, 0, Green, {{0, 4}, {64, 66}, {128, 134}, {192, 198}, {255, 250}}},
    {43, 0, Blue, {{0, 6}, {64, 54}, {128, 110}, {192, 168}, {255, 222}}},
    {43, 1, Red, {{0, 12}, {64, 70}, {128, 134}, {192, 198}, {255, 246}}},
    {43, 1, Green, {{0, 14}, {64, 68}, {128, 132}, {192, 194}, {255, 242}}},
    {43, 1, Blue, {{0, 44}, {64, 88}, {128, 134}, {192, 182}, {255, 226}}},
    // antique: first the dyes fade, then the paper yellows
    {44, 0, Red, {{0, 24}, {64, 82}, {128, 146}, {192, 206}, {255, 248}}},
    {44, 0, Green, {{0, 20}, {64, 74}, {128, 134}, {192, 194}, {255, 240}}},
    {44, 0, Blue, {{0, 30}, {64, 72}, {128, 118}, {192, 166}, {255, 212}}},
    {44, 1, Red, {{0, 8}, {64, 58}, {128, 132}, {192, 208}, {255, 254}}},
    {44, 1, Green, {{0, 6}, {64, 54}, {128, 124}, {192, 198}, {255, 246}}},
    {44, 1, Blue, {{0, 10}, {64, 52}, {128, 110}, {192, 172}, {255, 222}}},
    // calm: even light; a cool middle; mist over it
    {45, 0, Red, {{0, 14}, {64, 72}, {128, 134}, {192, 194}, {255, 248}}},
    {45, 0, Green, {{0, 16}, {64, 76}, {128, 140}, {192, 200}, {255, 250}}},
    {45, 0, Blue, {{0, 24}, {64, 82}, {128, 142}, {192, 198}, {255, 246}}},
    {45, 1, Red, {{0, 4}, {64, 62}, {128, 128}, {192, 190}, {255, 248}}},
    {45, 1, Green, {{0, 6}, {64, 66}, {128, 132}, {192, 198}, {255, 252}}},
    {45, 1, Blue, {{0, 14}, {64, 76}, {128, 140}, {192, 202}, {255, 252}}},
    {45, 2, Red, {{0, 62}, {64, 106}, {128, 154}, {192, 204}, {255, 244}}},
    {45, 2, Green, {{0, 68}, {64, 112}, {128, 160}, {192, 208}, {255, 248}}},
    {45, 2, Blue, {{0, 78}, {64, 120}, {128, 166}, {192, 212}, {255, 250}}},
    // latte: milk first, then coffee
    {46, 0, Rgb, {{0, 20}, {64, 84}, {128, 150}, {192, 210}, {255, 252}}},
    {46, 1, Red, {{0, 14}, {64, 74}, {128, 142}, {192, 206}, {255, 254}}},
    {46, 1, Green, {{0, 8}, {64, 58}, {128, 120}, {192, 188}, {255, 246}}},
    {46, 1, Blue, {{0, 6}, {64, 50}, {128, 110}, {192, 178}, {255, 238}}},
    // cool: firm first, then blue
    {47, 0, Rgb, {{0, 0}, {64, 56}, {128, 130}, {192, 204}, {255, 255}}},
    {47, 1, Red, {{0, 2}, {64, 52}, {128, 114}, {192, 180}, {255, 242}}},
    {47, 1, Green, {{0, 8}, {64, 66}, {128, 132}, {192, 198}, {255, 252}}},
    {47, 1, Blue, {{0, 28}, {64, 88}, {128, 154}, {192, 214}, {255, 255}}},
};

/// Makes the slopes at the two ends of a rising segment small enough that the cubic between them never turns back
/// (Fritsch and Carlson, 1980): as multiples of the segment's own slope they stay within a circle of radius 3.
void limitSlopes(double secant, double& begin, double& end)
{
    if (secant == 0) {
        begin = end = 0;
        return;
    }
    const double length = std::hypot(begin, end) / secant;
    if (length > 3) {
        begin *= 3 / length;
        end *= 3 / length;
    }
}

std::array<double, pointCount> slopesAt(const ControlPoint (&points)[pointCount])
{
    constexpr size_t segments = pointCount - 1;
    std::array<double, segments> secants{};
    for (size_t i = 0; i < segments; ++i)
        secants[i] = double(points[i + 1].out - points[i].out) / (points[i + 1].in - points[i].in);

    std::array<double, pointCount> slopes{};
    slopes[0] = secants[0];
    slopes[segments] = secants[segments - 1];
    for (size_t i = 1; i < segments; ++i)
        slopes[i] = (secants[i - 1] + secants[i]) / 2;
    for (size_t i = 0; i < segments; ++i)
        limitSlopes(secants[i], slopes[i], slopes[i + 1]);
    return slopes;
}

/// The cubic between two points with the given slopes there (Hermite's form), at value x.
double between(ControlPoint from, ControlPoint to, double slopeFrom, double slopeTo, int x)
{
    const double width = to.in - from.in;
    const double t = (x - from.in) / width;
    const double s = 1 - t;
    return s * s * ((1 + 2 * t) * from.out + t * width * slopeFrom) +
           t * t * ((1 + 2 * s) * to.out - s * width * slopeTo);
}

std::array<quint8, inputs> evaluate(const Curve& curve)
{
    const auto& points = curve.points;
    const auto slopes = slopesAt(points);
    std::array<quint8, inputs> values{};
    size_t segment = 0;
    for (int x = 0; x < inputs; ++x) {
        if (x > points[segment + 1].in)
            ++segment;
        const double value = between(points[segment], points[segment + 1], slopes[segment], slopes[segment + 1], x);
        values[size_t(x)] = quint8(std::lround(std::clamp(value, 0.0, 255.0)));
    }
    return values;
}

std::vector<quint8> unchanged(int rows)
{
    std::vector<quint8> pixels;
    pixels.reserve(size_t(rows) * inputs * 4);
    for (int row = 0; row < rows; ++row) {
        for (int x = 0; x < inputs; ++x)
            pixels.insert(pixels.end(), {quint8(x), quint8(x), quint8(x), 255});
    }
    return pixels;
}

void write(const Curve& curve, std::vector<quint8>& pixels)
{
    const auto values = evaluate(curve);
    const int first = curve.channel == Rgb ? Red : curve.channel;
    const int last = curve.channel == Rgb ? Blue : curve.channel;
    for (size_t x = 0; x < inputs; ++x) {
        quint8* pixel = &pixels[(size_t(curve.row) * inputs + x) * 4];
        std::fill(pixel + first, pixel + last + 1, values[x]);
    }
}

} // namespace

int filterCurveRows(int slot)
{
    const bool known = slot >= firstFilterCurveSlot && slot <= lastFilterCurveSlot;
    return known ? rowCounts[size_t(slot - firstFilterCurveSlot)] : 0;
}

std::vector<quint8> makeFilterCurve(int slot)
{
    auto pixels = unchanged(filterCurveRows(slot));
    for (const Curve& curve : curves) {
        if (curve.slot == slot)
            write(curve, pixels);
    }
    return pixels;
}

} // namespace tavlo
