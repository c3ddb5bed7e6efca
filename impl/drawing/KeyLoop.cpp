#include "drawing/KeyLoop.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

// The compiler makes vector code of the loops below (see CMakeLists.txt), once for any processor of the kind and once for
// those that work on eight pixels at a time.
#define TAVLO_INLINE [[gnu::always_inline]] inline

namespace tavlo {

namespace {

/// From 0 at the base to 1 at the width, to the power of 1.5; a width of 0 is a hard edge.
struct Ramp
{
    explicit Ramp(float width) : slope(width == 0.0F ? 1e9F : 1.0F / width), begin(width == 0.0F ? 1.0F : 0.0F) {}

    TAVLO_INLINE float at(float base) const
    {
        const float part = std::min(std::max(base * slope + begin, 0.0F), 1.0F);
        return part * std::sqrt(part);
    }

    float slope, begin;
};

struct Job
{
    quint8* pixels;
    qsizetype pitch;
    int width, height;
    float u, v, similarity; ///< of the key
    Ramp alpha, colour;
    std::array<float, 4> cleared; ///< red, green, blue as bytes, alpha squared
    std::array<float*, 3> rows;   ///< of distances, each of width + 2
};

TAVLO_INLINE quint32 pixelAt(const quint8* line, int x)
{
    quint32 pixel;
    std::memcpy(&pixel, line + 4 * x, sizeof(pixel));
    return pixel;
}

TAVLO_INLINE float part(quint32 pixel, int shift)
{
    return static_cast<float>(static_cast<qint32>(pixel >> shift & 0xff));
}

/// Of each pixel's chroma from the key's. The pixels at the ends count as their neighbours outside.
TAVLO_INLINE void measureRow(const Job& job, int y, float* row)
{
    constexpr float byte = 1.0F / 255.0F;
    const quint8* const line = job.pixels + job.pitch * std::min(y, job.height - 1);
    const float u = 0.501961F - job.u, v = 0.501961F - job.v;
    for (int x = 0; x < job.width; ++x) {
        const quint32 pixel = pixelAt(line, x);
        const float r = part(pixel, 0) * byte, g = part(pixel, 8) * byte, b = part(pixel, 16) * byte;
        const float du = -0.100644F * r - 0.338572F * g + 0.439216F * b + u;
        const float dv = 0.439216F * r - 0.398942F * g - 0.040274F * b + v;
        row[x + 1] = std::sqrt(du * du + dv * dv);
    }
    row[0] = row[1];
    row[job.width + 1] = row[job.width];
}

TAVLO_INLINE quint32 byteOf(float value) { return static_cast<quint32>(static_cast<qint32>(value + 0.5F)); }

TAVLO_INLINE void keyRow(const Job& job, int y, const float* above, const float* here, const float* below)
{
    quint8* const line = job.pixels + job.pitch * y;
    for (int x = 0; x < job.width; ++x) {
        const float sum = above[x] + above[x + 1] + above[x + 2] + here[x] + here[x + 1] + here[x + 2] + below[x] +
                          below[x + 1] + below[x + 2];
        const float base = sum * (1.0F / 9.0F) - job.similarity;
        const float alpha = job.alpha.at(base), kept = job.colour.at(base), rest = 1.0F - alpha;
        const quint32 pixel = pixelAt(line, x);
        const float r = part(pixel, 0), g = part(pixel, 8), b = part(pixel, 16);
        const float grey = 0.2126F * r + 0.7152F * g + 0.0722F * b;
        const auto shown = [&](float colour, float cleared) {
            return byteOf((grey + (colour - grey) * kept) * alpha + cleared * rest);
        };
        const quint32 keyed = shown(r, job.cleared[0]) | shown(g, job.cleared[1]) << 8 |
                              shown(b, job.cleared[2]) << 16 |
                              byteOf(255.0F * std::min(alpha * alpha + job.cleared[3], 1.0F)) << 24;
        std::memcpy(line + 4 * x, &keyed, sizeof(keyed));
    }
}

TAVLO_INLINE void runRows(const Job& job)
{
    float *above = job.rows[0], *here = job.rows[1], *below = job.rows[2];
    measureRow(job, 0, here);
    std::copy_n(here, job.width + 2, above);
    for (int y = 0; y < job.height; ++y) {
        measureRow(job, y + 1, below); // of colours that are no longer there when the row after is keyed
        keyRow(job, y, above, here, below);
        float* const oldest = above;
        above = here;
        here = below;
        below = oldest;
    }
}

void runAnywhere(const Job& job) { runRows(job); }

#ifdef __x86_64__
[[gnu::target("avx2,fma")]] void runEight(const Job& job) { runRows(job); }

auto* chooseRun() { return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") ? &runEight : &runAnywhere; }
#else
auto* chooseRun() { return &runAnywhere; }
#endif

} // namespace

void KeyLoop::run(quint8* pixels, qsizetype pitch, const LoneKey& lone)
{
    static auto* const chosen = chooseRun();
    const int width = lone.size.width(), height = lone.size.height();
    if (width <= 0 || height <= 0)
        return;
    const auto row = static_cast<std::size_t>(width) + 2;
    _distances.resize(3 * row);
    float* const distances = _distances.data();
    const tagTavloPresentPictureChromaKey& key = lone.key;
    const auto colour = [&](std::size_t i) { return 255.0F * std::clamp(lone.cleared[i], 0.0F, 1.0F); };
    chosen({pixels,
            pitch,
            width,
            height,
            key.chroma_key[0],
            key.chroma_key[1],
            key.similarity,
            Ramp(key.smoothness),
            Ramp(key.spill),
            {colour(0), colour(1), colour(2), lone.cleared[3] * lone.cleared[3]},
            {distances, distances + row, distances + 2 * row}});
}

} // namespace tavlo
