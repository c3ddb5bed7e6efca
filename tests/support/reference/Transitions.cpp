#include "support/reference/Transitions.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace tavlo::reference {

namespace {

constexpr Vector centre{0.5, 0.5};
constexpr double halfDiagonal = 0.70710678;
constexpr double fuzzy = 0.01;

bool isInside(Vector uv) { return uv.x >= 0 && uv.x <= 1 && uv.y >= 0 && uv.y <= 1; }

Colour orTransparent(const Picture& picture, Vector uv) { return isInside(uv) ? picture.at(uv) : Colour{}; }

/// What the shader works with, after its position and its pictures were exchanged.
struct Scene
{
    int kind;
    double p;
    const Picture& old;
    const Picture& fresh;
    const TransitionImages& images;
    Vector uv;

    /// What an image gives for deciding or displacing.
    Colour look(const Picture& image, Vector at) const
    {
        return image.at(at) + Colour{images.error.x, images.error.y, images.error.x, 0};
    }

    double r() const { return length(uv - centre); }
    Vector dir() const { return r() > 0 ? (uv - centre) / r() : Vector{1, 0}; }
};

double softEdge(double distance) { return clamped((distance + fuzzy) / (2 * fuzzy)); }

Colour lineReveal(const Scene& s, Vector from, Vector to, Vector normal)
{
    const Vector n = normal / length(normal);
    return lerp(s.fresh.at(s.uv), s.old.at(s.uv), softEdge(dot(n, s.uv - lerp(from, to, s.p))));
}

/// The old picture is torn in two along the middle line; `n` points across it.
Colour openFromMiddle(const Scene& s, Vector n, double place)
{
    const bool far = place > 0.5;
    const double edge = far ? 0.5 + s.p / 2 : 0.5 - s.p / 2;
    const double t = softEdge(dot(n, s.uv - Vector{edge, edge}));
    return far ? lerp(s.fresh.at(s.uv), s.old.at(s.uv), t) : lerp(s.old.at(s.uv), s.fresh.at(s.uv), t);
}

Colour blood(const Scene& s)
{
    const double o = std::min(s.p + s.p * s.look(s.images.checkerboard, {s.uv.x, s.images.randomSeed}).r, 1.0);
    const Vector moved{s.uv.x, s.uv.y - o};
    return moved.y > 0 ? s.old.at(moved) : s.fresh.at(frac(moved));
}

Colour erase(const Scene& s)
{
    switch (s.kind) {
    case 1:
    case 2:
        return lineReveal(s, {1, 0}, {0, 0}, {1, 0});
    case 3:
    case 4:
        return lineReveal(s, {0, 1}, {0, 0}, {0, 1});
    case 5:
    case 7:
        return lineReveal(s, {1, 1}, {0, 0}, {1, 1});
    case 6:
    case 8:
        return lineReveal(s, {0, 1}, {1, 0}, {-1, 1});
    case 9:
        return openFromMiddle(s, {0, 1}, s.uv.y);
    case 10:
        return openFromMiddle(s, {1, 0}, s.uv.x);
    case 13: {
        const double radius = -fuzzy + s.p * (halfDiagonal + 2 * fuzzy);
        return lerp(s.fresh.at(s.uv), s.old.at(s.uv), softEdge(s.r() - radius));
    }
    case 18:
        return frac(5 * s.uv.y) < s.p ? s.fresh.at(s.uv) : s.old.at(s.uv);
    case 19:
        return blood(s);
    default:
        return lerp(s.fresh.at(s.uv), s.old.at(s.uv), s.images.mask.at(s.uv).r);
    }
}

Colour fade(const Scene& s)
{
    if (s.kind == 22)
        return lerp(s.old.at(s.uv), s.fresh.at(s.uv), s.p);
    const double o = -s.look(s.images.clouds, {s.uv.x / 5, s.images.randomSeed}).r;
    const Colour dropping = orTransparent(s.old, {s.uv.x, s.uv.y + o * s.p});
    return dropping.a <= 0 ? s.fresh.at(s.uv) : lerp(dropping, s.fresh.at(s.uv), s.p);
}

Colour glide(const Scene& s)
{
    constexpr std::array<Vector, 8> ways{{{1, 0}, {-1, 0}, {0, 1}, {0, -1}, {1, 1}, {-1, 1}, {-1, -1}, {1, -1}}};
    const Vector w = s.uv + ways[static_cast<std::size_t>((s.kind - 25) % 8)] * s.p;
    if (isInside(w))
        return s.fresh.at(w);
    return s.kind >= 41 ? s.old.at(frac(w)) : s.old.at(s.uv);
}

/// Maps a box around the middle to the whole picture.
Colour boxed(const Scene& s, double size, const Picture& inner, const Picture& outer)
{
    const double low = 0.5 - size / 2, high = 0.5 + size / 2;
    if (s.uv.x > low && s.uv.x < high && s.uv.y > low && s.uv.y < high)
        return inner.at((s.uv - Vector{low, low}) / size);
    return outer.at(s.uv);
}

Colour stretch(const Scene& s)
{
    const double q = 1 - s.p;
    const Vector uv = s.uv;
    switch (s.kind) {
    case 46:
        return uv.x < s.p ? s.fresh.at({uv.x / s.p, uv.y}) : s.old.at({(uv.x - s.p) / q, uv.y});
    case 47:
        return uv.x < q ? s.old.at({uv.x / q, uv.y}) : s.fresh.at({(uv.x - q) / s.p, uv.y});
    case 48:
        return uv.y < s.p ? s.fresh.at({uv.x, uv.y / s.p}) : s.old.at({uv.x, (uv.y - s.p) / q});
    case 49:
        return uv.y < q ? s.old.at({uv.x, uv.y / q}) : s.fresh.at({uv.x, (uv.y - q) / s.p});
    case 50:
        return boxed(s, s.p, s.fresh, s.old);
    default:
        return boxed(s, q, s.old, s.fresh);
    }
}

/// The old picture is treated first, the new one last, and both around the middle.
template <class Treat>
Colour phased(const Scene& s, double a, double b, Treat treat)
{
    if (s.p < 0.4)
        return treat(s.old, a);
    if (s.p > 0.6)
        return treat(s.fresh, b);
    return lerp(treat(s.old, a), treat(s.fresh, b), (s.p - 0.4) / 0.2);
}

template <class Treat>
Colour phased(const Scene& s, double amount, Treat treat)
{
    return phased(s, amount * (s.p / 0.5), amount * (1 - (s.p - 0.4) / 0.6), treat);
}

template <class Sample>
Colour mean(int count, Sample sample)
{
    Colour sum;
    for (int i = 0; i < count; ++i)
        sum = sum + sample(i);
    return sum * (1.0 / count);
}

Colour circularBlur(const Scene& s)
{
    const Picture& table = s.images.sincosatan;
    const double angle = s.look(table, (s.dir() + Vector{1, 1}) / 2).b;
    const Colour turned = mean(7, [&](int i) {
        const double at = frac(angle - i * 0.005 * s.p - 0.5);
        const Colour entry = s.look(table, {at, at});
        return s.old.at(Vector{entry.r * 2 - 1, entry.g * 2 - 1} * s.r() + centre);
    });
    return lerp(turned, s.fresh.at(s.uv), s.p);
}

Colour pixelate(const Scene& s)
{
    const double sp = s.p < 0.5 ? 1 - 2 * s.p : 2 * (s.p - 0.5);
    const double pixels = 5 + 1000 * sp * sp;
    const Vector at{std::round(s.uv.x * pixels) / pixels, std::round(s.uv.y * pixels) / pixels};
    return lerp(s.old.at(at), s.fresh.at(at), clamped((s.p - 0.4) / 0.2));
}

Colour poissonBlur(const Picture& picture, Vector uv, double a)
{
    constexpr std::array<Vector, 12> disk{{{-0.326212, -0.40581},
                                           {-0.840144, -0.07358},
                                           {-0.695914, 0.457137},
                                           {-0.203345, 0.620716},
                                           {0.96234, -0.194983},
                                           {0.473434, -0.480026},
                                           {0.519456, 0.767022},
                                           {0.185461, -0.893124},
                                           {0.507431, 0.064425},
                                           {0.89642, 0.412458},
                                           {-0.32194, -0.932615},
                                           {-0.791559, -0.59771}}};
    Colour sum = picture.at(uv);
    for (const Vector tap : disk)
        sum = sum + picture.at(uv + tap / 400 * a);
    return sum * (1.0 / 13);
}

Colour sharpen(const Picture& picture, Vector uv, double a)
{
    const Vector offset{1.0 / 800, 1.0 / 600};
    const Colour here = picture.at(uv);
    Colour sum = here + picture.at(uv - offset) * a + picture.at(uv + offset) * -a;
    sum.a = here.a;
    return sum;
}

Colour blur(const Scene& s)
{
    const Vector uv = s.uv;
    switch (s.kind) {
    case 53:
        return circularBlur(s);
    case 54: {
        const Colour rays = mean(24, [&](int i) { return s.old.at(uv - (uv - centre) * (0.02 * s.p * i)); });
        return lerp(rays, s.fresh.at(uv), s.p);
    }
    case 55:
        return pixelate(s);
    case 56: {
        const double angle = 60 * 0.0174533;
        return phased(s, 0.01, [&](const Picture& picture, double a) {
            return mean(16, [&](int i) { return picture.at(uv - Vector{std::cos(angle), std::sin(angle)} * (a * i)); });
        });
    }
    case 57:
        return phased(s, 10, [&](const Picture& picture, double a) { return poissonBlur(picture, uv, a); });
    case 58:
        return phased(s, 2, [&](const Picture& picture, double a) { return sharpen(picture, uv, a); });
    case 59:
        return phased(s, 3, [&](const Picture& picture, double a) {
            const Vector u = uv - centre;
            const double f = dot(u, u) * dot(u, u);
            return mean(17, [&](int i) { return picture.at(u * (1 - f * a * i / 30) + centre); });
        });
    default:
        return phased(s, 0.2, [&](const Picture& picture, double a) {
            const Vector focus{0.9, 0.6};
            return mean(15, [&](int i) { return picture.at((uv - focus) * (1 + a * i / 14) + focus); });
        });
    }
}

double angleOf(Vector dir) { return std::atan2(dir.y, dir.x); }

double turnOf(Vector dir) { return (angleOf(dir) + 3.141592) / (2 * 3.141592); }

Colour bandedSwirl(const Scene& s)
{
    const double angle = angleOf(s.dir()) + std::sin(s.r() * 50) * (std::numbers::pi / 4) * s.p;
    const Vector at = Vector{std::cos(angle), std::sin(angle)} * s.r() + centre;
    return lerp(s.old.at(frac(at)), s.fresh.at(s.uv), s.p);
}

Colour circleStretch(const Scene& s)
{
    const double radius = halfDiagonal * s.p;
    const Vector dir = s.dir();
    const double e = std::max(std::abs(dir.x), std::abs(dir.y));
    if (s.r() < radius)
        return s.fresh.at(lerp(centre, centre + dir * (e / 2), s.r() / std::min(radius, e / 2)));
    const Vector rim = centre + dir * radius;
    return s.old.at(lerp(centre, centre + dir * e, length(s.uv - rim) / (e - radius)));
}

Colour crumble(const Scene& s)
{
    const Colour cloud = s.look(s.images.clouds, {s.uv.x / 5, frac(s.uv.y / 5 + std::min(0.9, s.images.randomSeed))});
    const double q = 2 * s.p > 1 ? 2 - 2 * s.p : 2 * s.p;
    const Vector at = frac(s.uv + Vector{cloud.r * 2 - 1, cloud.g * 2 - 1} * q);
    return lerp(s.old.at(at), s.fresh.at(at), s.p);
}

Colour radialWiggle(const Scene& s)
{
    const double v = frac(s.p / 3 + s.r() / 5 + s.images.randomSeed);
    const double o = s.look(s.images.clouds, {turnOf(s.dir()), v}).r * 2 - 1;
    const double o1 = 2 * o * std::min(0.3, s.p) * s.r();
    const double o2 = 2 * o * std::min(0.3, 1 - s.p) * s.r();
    return lerp(s.old.at(frac(centre + s.dir() * (s.r() + o1))), s.fresh.at(frac(centre + s.dir() * (s.r() + o2))),
                s.p);
}

Colour ripple(const Scene& s)
{
    const double wave = std::cos(20 * s.r() - 10 * s.p);
    const Vector at1 = centre + s.dir() * (s.r() + s.p * wave * 0.05);
    const Vector at2 = centre + s.dir() * (s.r() + (1 - s.p) * wave * 0.05);
    return lerp(s.old.at(at1), s.fresh.at(at2), s.p);
}

Colour magnify(const Scene& s)
{
    const Vector away = s.uv - centre;
    const double d = length({away.x, away.y / 1.5});
    const double step = clamped((d - 0.2) / (0.64 - 0.2));
    const double ratio = step * step * (3 - 2 * step);
    return phased(s, 1 + 4 * (s.p / 0.5), 1 + 4 * (1 - (s.p - 0.4) / 0.6),
                  [&](const Picture& picture, double a) { return picture.at(lerp(centre + away / a, s.uv, ratio)); });
}

Colour distortion(const Scene& s)
{
    const TransitionImages& images = s.images;
    switch (s.kind) {
    case 62:
        return bandedSwirl(s);
    case 63:
        return circleStretch(s);
    case 64: {
        const double cloud = s.look(images.clouds, s.uv).r;
        const double a = s.p < 0.5 ? lerp(0.0, cloud, s.p / 0.5) : lerp(cloud, 1.0, (s.p - 0.5) / 0.5);
        return a < 0.5 ? s.old.at(s.uv) : s.fresh.at(s.uv);
    }
    case 65:
        return crumble(s);
    case 66: {
        const Vector at = frac(s.uv + Vector{images.randomSeed, images.randomSeed});
        return s.look(images.noise, at).r > s.p ? s.old.at(s.uv) : s.fresh.at(s.uv);
    }
    case 67:
        return radialWiggle(s);
    case 68: {
        const double cloud = s.look(images.clouds, {turnOf(s.dir()), frac(images.randomSeed + s.p / 5)}).r;
        return s.r() < halfDiagonal * s.p + s.p * cloud ? s.fresh.at(s.uv) : s.old.at(s.uv);
    }
    case 69:
        return ripple(s);
    case 70: {
        const Vector at = s.uv + Vector{0.1 * s.p * std::sin(20 * s.uv.y + 14 * s.p), 0};
        return lerp(orTransparent(s.old, at), s.fresh.at(s.uv), s.p);
    }
    case 71:
        return magnify(s);
    default:
        return s.old.at(s.uv);
    }
}

Colour mostBright(const Scene& s)
{
    Colour kept;
    double brightest = 1 + s.images.error.x;
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 3; ++x) {
            const Colour c = s.old.at(s.uv + Vector{x - 1.0, y - 1.0} * (0.01 * s.p));
            const double brightness = c.r + 1.1 * c.g + 0.9 * c.b;
            if (brightness > brightest) {
                brightest = brightness;
                kept = c;
            }
        }
    }
    return lerp(kept, s.fresh.at(s.uv), s.p);
}

/// `error` as the images' one.
Colour brightExtract(Colour c, double a, double error)
{
    if (c.a <= 0)
        return {};
    const auto one = [&](double v) { return clamped((v / c.a + error - a) / (1 - a)) * c.a; };
    return {one(c.r), one(c.g), one(c.b), c.a};
}

Colour whereWhole(const Picture& picture, Vector uv, double s)
{
    const double d = std::round(s) - s;
    return d * d < 0.1 ? picture.at(uv) : Colour{};
}

Colour textureMap(const Scene& s, const Picture& picture, double a)
{
    const Vector uv = s.uv;
    const Colour map = s.look(picture, frac(uv));
    return picture.at(frac(uv + Vector{map.r * a - a / 8, map.g * a - a / 8}));
}

Colour color(const Scene& s)
{
    const Vector uv = s.uv;
    switch (s.kind) {
    case 74:
        return mostBright(s);
    case 75:
        return phased(
            s, 1, [&](const Picture& picture, double a) { return brightExtract(picture.at(uv), a, s.images.error.x); });
    case 76:
        return phased(s, 1, [&](const Picture& picture, double) {
            const Colour c = picture.at(uv);
            return Colour{c.a - c.r, c.a - c.g, c.a - c.b, c.a};
        });
    case 77:
        return phased(s, 2048, [&](const Picture& picture, double a) {
            const Vector v = uv * ((2048 - a) * 0.5);
            return whereWhole(picture, uv, v.x * v.y);
        });
    case 78:
        return phased(s, 2048, [&](const Picture& picture, double a) {
            return whereWhole(picture, uv, uv.y * (2048 - a) * 0.5);
        });
    default:
        return phased(s, 5, [&](const Picture& picture, double a) { return textureMap(s, picture, a); });
    }
}

Colour lumas(const Scene& s) { return s.look(s.images.luma, s.uv).r <= s.p ? s.fresh.at(s.uv) : s.old.at(s.uv); }

bool isInverted(int kind)
{
    return kind == 1 || kind == 3 || kind == 5 || kind == 6 || (kind >= 25 && kind <= 32) || (kind >= 41 && kind <= 44);
}

bool isSwapped(int kind)
{
    constexpr std::array erases{2, 4, 7, 8, 12, 14, 15, 16, 17, 20};
    return std::find(erases.begin(), erases.end(), kind) != erases.end() || (kind >= 33 && kind <= 40);
}

} // namespace

Colour transition(int kind, double position, const Picture& outgoing, const Picture& incoming,
                  const TransitionImages& images, Vector uv)
{
    const bool swapped = isSwapped(kind);
    const Scene scene{kind,
                      isInverted(kind) ? 1 - position : position,
                      swapped ? incoming : outgoing,
                      swapped ? outgoing : incoming,
                      images,
                      uv};
    if (scene.p <= 0)
        return scene.old.at(uv);
    if (kind <= 20)
        return erase(scene);
    if (kind <= 23)
        return fade(scene);
    if (kind <= 44)
        return glide(scene);
    if (kind <= 51)
        return stretch(scene);
    if (kind <= 60)
        return blur(scene);
    if (kind <= 72)
        return distortion(scene);
    if (kind <= 79)
        return color(scene);
    return lumas(scene);
}

} // namespace tavlo::reference
