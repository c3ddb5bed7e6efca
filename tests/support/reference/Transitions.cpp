#include "support/reference/Transitions.h"

#include <map>
#include <numbers>
#include <set>

namespace tavlo::reference {

namespace {

constexpr Vector centre{0.5, 0.5};
constexpr double halfDiagonal = 0.70710678;
constexpr double fuzzy = 0.01;

double frac(double a) { return a - std::floor(a); }
Vector frac(Vector a) { return {frac(a.x), frac(a.y)}; }

bool isInside(Vector uv) { return uv.x >= 0 && uv.x <= 1 && uv.y >= 0 && uv.y <= 1; }

Rgba orTransparent(const Picture& picture, Vector uv) { return isInside(uv) ? picture.at(uv) : Rgba{}; }

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
    Rgba look(const Picture& image, Vector at) const
    {
        return image.at(at) + Rgba{images.error.x, images.error.y, images.error.x, 0};
    }
    double cloud(double u, double v) const { return look(images.clouds, {u, v})[0]; }

    double r() const { return length(uv - centre); }
    Vector dir() const { return r() > 0 ? (uv - centre) / r() : Vector{1, 0}; }

    Rgba mixed(double t) const { return lerp(old.at(uv), fresh.at(uv), t); }
    Rgba cut(bool isFresh) const { return isFresh ? fresh.at(uv) : old.at(uv); }
    Rgba warped(Vector oldAt, Vector freshAt, double t) const { return lerp(old.at(oldAt), fresh.at(freshAt), t); }
    Rgba warped(Vector oldAt) const { return warped(oldAt, uv, p); }
};

using Formula = Rgba (*)(const Scene&);

double softEdge(double distance) { return unit((distance + fuzzy) / (2 * fuzzy)); }

double across(Vector n, Vector way) { return n.x * way.x + n.y * way.y; }

Rgba lineReveal(const Scene& s, Vector from, Vector to, Vector normal)
{
    return s.mixed(1 - softEdge(across(normal / length(normal), s.uv - lerp(from, to, s.p))));
}

Rgba fromTheLeft(const Scene& s) { return lineReveal(s, {1, 0}, {0, 0}, {1, 0}); }
Rgba fromTheTop(const Scene& s) { return lineReveal(s, {0, 1}, {0, 0}, {0, 1}); }
Rgba fromTopLeft(const Scene& s) { return lineReveal(s, {1, 1}, {0, 0}, {1, 1}); }
Rgba fromTopRight(const Scene& s) { return lineReveal(s, {0, 1}, {1, 0}, {-1, 1}); }

/// The old picture is torn in two along the middle line; `n` points across it.
Rgba openFromMiddle(const Scene& s, Vector n)
{
    const bool far = across(n, s.uv) > 0.5;
    const double edge = far ? 0.5 + s.p / 2 : 0.5 - s.p / 2;
    const double t = softEdge(across(n, s.uv - Vector{edge, edge}));
    return s.mixed(far ? 1 - t : t);
}

Rgba blood(const Scene& s)
{
    const double o = std::min(s.p + s.p * s.look(s.images.checkerboard, {s.uv.x, s.images.randomSeed})[0], 1.0);
    const Vector moved{s.uv.x, s.uv.y - o};
    return moved.y > 0 ? s.old.at(moved) : s.fresh.at(frac(moved));
}

Rgba masked(const Scene& s) { return s.mixed(1 - s.images.mask.at(s.uv)[0]); }

Rgba droppingFade(const Scene& s)
{
    const Rgba dropping = orTransparent(s.old, {s.uv.x, s.uv.y - s.p * s.cloud(s.uv.x / 5, s.images.randomSeed)});
    return dropping[3] <= 0 ? s.fresh.at(s.uv) : lerp(dropping, s.fresh.at(s.uv), s.p);
}

Rgba glide(const Scene& s)
{
    constexpr std::array<Vector, 8> ways{{{1, 0}, {-1, 0}, {0, 1}, {0, -1}, {1, 1}, {-1, 1}, {-1, -1}, {1, -1}}};
    const Vector w = s.uv + ways[(s.kind - 25) % 8] * s.p;
    if (isInside(w))
        return s.fresh.at(w);
    return s.old.at(s.kind >= 41 ? frac(w) : s.uv);
}

/// Two pictures side by side, each as wide as it gets.
Rgba beside(double place, double first, double across, bool isWide, const Picture& before, const Picture& after)
{
    const bool isFirst = place < first;
    const double at = isFirst ? place / first : (place - first) / (1 - first);
    return (isFirst ? before : after).at(isWide ? Vector{at, across} : Vector{across, at});
}

/// Maps a box around the middle to the whole picture.
Rgba boxed(const Scene& s, double size, const Picture& inner, const Picture& outer)
{
    const double low = 0.5 - size / 2, high = 0.5 + size / 2;
    if (s.uv.x > low && s.uv.x < high && s.uv.y > low && s.uv.y < high)
        return inner.at((s.uv - Vector{low, low}) / size);
    return outer.at(s.uv);
}

/// The old picture is treated first, the new one last, and both around the middle.
template <class Treat>
Rgba phased(const Scene& s, double a, double b, Treat treat)
{
    if (s.p < 0.4)
        return treat(s.old, a);
    if (s.p > 0.6)
        return treat(s.fresh, b);
    return lerp(treat(s.old, a), treat(s.fresh, b), (s.p - 0.4) / 0.2);
}

template <class Treat>
Rgba phased(const Scene& s, double amount, Treat treat)
{
    return phased(s, amount * (s.p / 0.5), amount * (1 - (s.p - 0.4) / 0.6), treat);
}

template <class Sample>
Rgba mean(int count, Sample sample)
{
    Rgba sum{};
    for (int i = 0; i < count; ++i)
        sum = sum + sample(i);
    return sum * (1.0 / count);
}

Rgba circularBlur(const Scene& s)
{
    const double angle = s.look(s.images.sincosatan, (s.dir() + Vector{1, 1}) / 2)[2];
    const Rgba turned = mean(7, [&](int i) {
        const double at = frac(angle - i * 0.005 * s.p - 0.5);
        const Rgba entry = s.look(s.images.sincosatan, {at, at});
        return s.old.at(Vector{entry[0] * 2 - 1, entry[1] * 2 - 1} * s.r() + centre);
    });
    return lerp(turned, s.fresh.at(s.uv), s.p);
}

Rgba raysBlur(const Scene& s)
{
    const Rgba rays = mean(24, [&](int i) { return s.old.at(s.uv - (s.uv - centre) * (0.02 * s.p * i)); });
    return lerp(rays, s.fresh.at(s.uv), s.p);
}

Rgba pixelate(const Scene& s)
{
    const double sp = 2 * std::abs(s.p - 0.5);
    const double pixels = 5 + 1000 * sp * sp;
    const Vector at{std::round(s.uv.x * pixels) / pixels, std::round(s.uv.y * pixels) / pixels};
    return s.warped(at, at, unit((s.p - 0.4) / 0.2));
}

Rgba lineBlur(const Scene& s)
{
    const Vector way{std::cos(60 * 0.0174533), std::sin(60 * 0.0174533)};
    return phased(s, 0.01, [&](const Picture& picture, double a) {
        return mean(16, [&](int i) { return picture.at(s.uv - way * (a * i)); });
    });
}

Rgba poissonBlur(const Scene& s)
{
    constexpr std::array<double, 26> disk{0,        0,         -0.326212, -0.40581,  -0.840144, -0.07358, -0.695914,
                                          0.457137, -0.203345, 0.620716,  0.96234,   -0.194983, 0.473434, -0.480026,
                                          0.519456, 0.767022,  0.185461,  -0.893124, 0.507431,  0.064425, 0.89642,
                                          0.412458, -0.32194,  -0.932615, -0.791559, -0.59771};
    return phased(s, 10, [&](const Picture& picture, double a) {
        return mean(13, [&](int i) { return picture.at(s.uv + Vector{disk[2 * i], disk[2 * i + 1]} / 400 * a); });
    });
}

Rgba sharpen(const Scene& s)
{
    return phased(s, 2, [&](const Picture& picture, double a) {
        const Vector offset{1.0 / 800, 1.0 / 600};
        const Rgba here = picture.at(s.uv);
        Rgba sum = here + picture.at(s.uv - offset) * a + picture.at(s.uv + offset) * -a;
        sum[3] = here[3];
        return sum;
    });
}

Rgba bulgeBlur(const Scene& s)
{
    return phased(s, 3, [&](const Picture& picture, double a) {
        const Vector u = s.uv - centre;
        const double f = std::pow(length(u), 4);
        return mean(17, [&](int i) { return picture.at(u * (1 - f * a * i / 30) + centre); });
    });
}

Rgba zoomBlur(const Scene& s)
{
    return phased(s, 0.2, [&](const Picture& picture, double a) {
        const Vector focus{0.9, 0.6};
        return mean(15, [&](int i) { return picture.at((s.uv - focus) * (1 + a * i / 14) + focus); });
    });
}

double angleOf(Vector dir) { return std::atan2(dir.y, dir.x); }

double turnOf(Vector dir) { return (angleOf(dir) + 3.141592) / (2 * 3.141592); }

Rgba bandedSwirl(const Scene& s)
{
    const double angle = angleOf(s.dir()) + std::sin(s.r() * 50) * (std::numbers::pi / 4) * s.p;
    return s.warped(frac(Vector{std::cos(angle), std::sin(angle)} * s.r() + centre));
}

Rgba circleStretch(const Scene& s)
{
    const double radius = halfDiagonal * s.p;
    const Vector dir = s.dir();
    const double e = std::max(std::abs(dir.x), std::abs(dir.y));
    if (s.r() < radius)
        return s.fresh.at(lerp(centre, centre + dir * (e / 2), s.r() / std::min(radius, e / 2)));
    const Vector rim = centre + dir * radius;
    return s.old.at(lerp(centre, centre + dir * e, length(s.uv - rim) / (e - radius)));
}

Rgba cloudReveal(const Scene& s)
{
    const double cloud = s.cloud(s.uv.x, s.uv.y);
    const double a = s.p < 0.5 ? std::lerp(0.0, cloud, s.p / 0.5) : std::lerp(cloud, 1.0, (s.p - 0.5) / 0.5);
    return s.cut(a >= 0.5);
}

Rgba crumble(const Scene& s)
{
    const Rgba cloud = s.look(s.images.clouds, {s.uv.x / 5, frac(s.uv.y / 5 + std::min(0.9, s.images.randomSeed))});
    const double q = 2 * s.p > 1 ? 2 - 2 * s.p : 2 * s.p;
    const Vector at = frac(s.uv + Vector{cloud[0] * 2 - 1, cloud[1] * 2 - 1} * q);
    return s.warped(at, at, s.p);
}

Rgba dissolve(const Scene& s)
{
    return s.cut(s.look(s.images.noise, frac(s.uv + Vector{1, 1} * s.images.randomSeed))[0] <= s.p);
}

Rgba radialWiggle(const Scene& s)
{
    const double o = s.cloud(turnOf(s.dir()), frac(s.p / 3 + s.r() / 5 + s.images.randomSeed)) * 2 - 1;
    const auto at = [&](double p) { return frac(centre + s.dir() * (s.r() + 2 * o * std::min(0.3, p) * s.r())); };
    return s.warped(at(s.p), at(1 - s.p), s.p);
}

Rgba cloudCircle(const Scene& s)
{
    const double cloud = s.cloud(turnOf(s.dir()), frac(s.images.randomSeed + s.p / 5));
    return s.cut(s.r() < halfDiagonal * s.p + s.p * cloud);
}

Rgba ripple(const Scene& s)
{
    const double wave = std::cos(20 * s.r() - 10 * s.p);
    const auto at = [&](double p) { return centre + s.dir() * (s.r() + p * wave * 0.05); };
    return s.warped(at(s.p), at(1 - s.p), s.p);
}

Rgba wave(const Scene& s)
{
    const Vector at = s.uv + Vector{0.1 * s.p * std::sin(20 * s.uv.y + 14 * s.p), 0};
    return lerp(orTransparent(s.old, at), s.fresh.at(s.uv), s.p);
}

Rgba magnify(const Scene& s)
{
    const Vector away = s.uv - centre;
    const double step = unit((length({away.x, away.y / 1.5}) - 0.2) / (0.64 - 0.2));
    const double ratio = step * step * (3 - 2 * step);
    return phased(s, 1 + 4 * (s.p / 0.5), 1 + 4 * (1 - (s.p - 0.4) / 0.6),
                  [&](const Picture& picture, double a) { return picture.at(lerp(centre + away / a, s.uv, ratio)); });
}

Rgba mostBright(const Scene& s)
{
    Rgba kept{};
    double brightest = 1 + s.images.error.x;
    for (int i = 0; i < 12; ++i) {
        const Rgba c = s.old.at(s.uv + Vector{i % 3 - 1.0, i / 3 - 1.0} * (0.01 * s.p));
        const double brightness = c[0] + 1.1 * c[1] + 0.9 * c[2];
        if (brightness > brightest) {
            brightest = brightness;
            kept = c;
        }
    }
    return lerp(kept, s.fresh.at(s.uv), s.p);
}

Rgba brightExtract(const Scene& s)
{
    return phased(s, 1, [&](const Picture& picture, double a) {
        Rgba c = picture.at(s.uv);
        if (c[3] <= 0)
            return Rgba{};
        for (int i = 0; i < 3; ++i)
            c[i] = unit((c[i] / c[3] + s.images.error.x - a) / (1 - a)) * c[3];
        return c;
    });
}

Rgba negative(const Scene& s)
{
    return phased(s, 1, [&](const Picture& picture, double) {
        const Rgba c = picture.at(s.uv);
        return Rgba{c[3] - c[0], c[3] - c[1], c[3] - c[2], c[3]};
    });
}

/// A pattern of what is whole.
template <class Pattern>
Rgba whereWhole(const Scene& s, Pattern pattern)
{
    return phased(s, 2048, [&](const Picture& picture, double a) {
        const double value = pattern((2048 - a) * 0.5), d = std::round(value) - value;
        return d * d < 0.1 ? picture.at(s.uv) : Rgba{};
    });
}

Rgba textureMap(const Scene& s)
{
    return phased(s, 5, [&](const Picture& picture, double a) {
        const Rgba map = s.look(picture, frac(s.uv));
        return picture.at(frac(s.uv + Vector{map[0] * a - a / 8, map[1] * a - a / 8}));
    });
}

Formula formulaOf(int kind)
{
    static const std::map<int, Formula> formulas{
        {1, fromTheLeft},
        {2, fromTheLeft},
        {3, fromTheTop},
        {4, fromTheTop},
        {5, fromTopLeft},
        {6, fromTopRight},
        {7, fromTopLeft},
        {8, fromTopRight},
        {9,
         [](const Scene& s) {
             return openFromMiddle(s, {0, 1});
         }},
        {10,
         [](const Scene& s) {
             return openFromMiddle(s, {1, 0});
         }},
        {13, [](const Scene& s) { return s.mixed(1 - softEdge(s.r() + fuzzy - s.p * (halfDiagonal + 2 * fuzzy))); }},
        {18, [](const Scene& s) { return s.cut(frac(5 * s.uv.y) < s.p); }},
        {19, blood},
        {22, [](const Scene& s) { return s.mixed(s.p); }},
        {23, droppingFade},
        {46, [](const Scene& s) { return beside(s.uv.x, s.p, s.uv.y, true, s.fresh, s.old); }},
        {47, [](const Scene& s) { return beside(s.uv.x, 1 - s.p, s.uv.y, true, s.old, s.fresh); }},
        {48, [](const Scene& s) { return beside(s.uv.y, s.p, s.uv.x, false, s.fresh, s.old); }},
        {49, [](const Scene& s) { return beside(s.uv.y, 1 - s.p, s.uv.x, false, s.old, s.fresh); }},
        {50, [](const Scene& s) { return boxed(s, s.p, s.fresh, s.old); }},
        {51, [](const Scene& s) { return boxed(s, 1 - s.p, s.old, s.fresh); }},
        {53, circularBlur},
        {54, raysBlur},
        {55, pixelate},
        {56, lineBlur},
        {57, poissonBlur},
        {58, sharpen},
        {59, bulgeBlur},
        {60, zoomBlur},
        {62, bandedSwirl},
        {63, circleStretch},
        {64, cloudReveal},
        {65, crumble},
        {66, dissolve},
        {67, radialWiggle},
        {68, cloudCircle},
        {69, ripple},
        {70, wave},
        {71, magnify},
        {72, [](const Scene& s) { return s.old.at(s.uv); }},
        {74, mostBright},
        {75, brightExtract},
        {76, negative},
        {77, [](const Scene& s) { return whereWhole(s, [&](double a) { return s.uv.x * a * s.uv.y * a; }); }},
        {78, [](const Scene& s) { return whereWhole(s, [&](double a) { return s.uv.y * a; }); }},
        {79, textureMap},
    };
    const auto found = formulas.find(kind);
    if (found != formulas.end())
        return found->second;
    if (kind >= 81)
        return [](const Scene& s) { return s.cut(s.look(s.images.luma, s.uv)[0] <= s.p); };
    return kind >= 25 ? glide : masked;
}

bool isInverted(int kind)
{
    return kind == 1 || kind == 3 || kind == 5 || kind == 6 || (kind >= 25 && kind <= 32) || (kind >= 41 && kind <= 44);
}

bool isSwapped(int kind)
{
    static const std::set<int> erases{2, 4, 7, 8, 12, 14, 15, 16, 17, 20};
    return erases.contains(kind) || (kind >= 33 && kind <= 40);
}

} // namespace

Rgba transition(int kind, double position, const Picture& outgoing, const Picture& incoming,
                const TransitionImages& images, Vector uv)
{
    const Picture& old = isSwapped(kind) ? incoming : outgoing;
    const Picture& fresh = isSwapped(kind) ? outgoing : incoming;
    const double p = isInverted(kind) ? 1 - position : position;
    return p <= 0 ? old.at(uv) : formulaOf(kind)({kind, p, old, fresh, images, uv});
}

} // namespace tavlo::reference
