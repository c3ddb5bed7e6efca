#include "output/Nv12Rows.h"

#include <algorithm>

// The compiler makes vector code of the loops below (see CMakeLists.txt), once for any processor of the kind and once for
// those that work on eight pixels at a time.
#define TAVLO_INLINE [[gnu::always_inline]] inline

namespace tavlo {

namespace {

constexpr int bits = 15; // behind the point

constexpr qint32 fixed(double value) { return static_cast<qint32>(value * (1 << bits) + (value < 0 ? -0.5 : 0.5)); }

// Rec. ITU-R BT.709, items 3.2 to 3.4: Y = 0.2126 R + 0.7152 G + 0.0722 B as 16..235, Cb = (B - Y) / 1.8556 and
// Cr = (R - Y) / 1.5748 as 16..240. What greys have of chroma is nothing, so green has the rest of it.
constexpr double lumaScale = 219.0 / 255, blueScale = 224.0 / 255 / 1.8556, redScale = 224.0 / 255 / 1.5748;
constexpr qint32 yR = fixed(0.2126 * lumaScale), yG = fixed(0.7152 * lumaScale), yB = fixed(0.0722 * lumaScale);
constexpr qint32 uR = fixed(-0.2126 * blueScale), uB = fixed(0.9278 * blueScale), uG = -uR - uB;
constexpr qint32 vR = fixed(0.7874 * redScale), vB = fixed(-0.0722 * redScale), vG = -vR - vB;

/// A pixel's components, first to third.
TAVLO_INLINE qint32 component(quint32 pixel, int number) { return static_cast<qint32>(pixel >> (8 * number) & 0xff); }

template <bool blueFirst>
TAVLO_INLINE void lumaRow(const quint32* source, quint8* luma, int width)
{
    constexpr int red = blueFirst ? 2 : 0, blue = 2 - red;
    for (int x = 0; x < width; ++x) {
        const quint32 pixel = source[x];
        const qint32 sum = yR * component(pixel, red) + yG * component(pixel, 1) + yB * component(pixel, blue);
        luma[x] = static_cast<quint8>((sum + (16 << bits) + (1 << (bits - 1))) >> bits);
    }
}

/// The mean of two rows' pairs. \param next  how far a pair's second pixel is: 1, or 0 at an odd end
template <bool blueFirst>
TAVLO_INLINE void chromaRow(const quint32* upper, const quint32* lower, quint16* chroma, int count, int next)
{
    constexpr int red = blueFirst ? 2 : 0, blue = 2 - red;
    for (int x = 0; x < count; ++x) {
        const quint32 a = upper[2 * x], b = upper[2 * x + next], c = lower[2 * x], d = lower[2 * x + next];
        const auto sum = [&](int number) {
            return component(a, number) + component(b, number) + component(c, number) + component(d, number);
        };
        const qint32 r = sum(red), g = sum(1), b4 = sum(blue); // four times the means
        constexpr qint32 middle = (128 << (bits + 2)) + (1 << (bits + 1));
        const qint32 u = (uR * r + uG * g + uB * b4 + middle) >> (bits + 2);
        const qint32 v = (vR * r + vG * g + vB * b4 + middle) >> (bits + 2);
        chroma[x] = static_cast<quint16>(u | v << 8); // bytes of a little-endian machine
    }
}

struct Picture
{
    const quint8* source;
    ptrdiff_t pitch;
    int width, height;
    quint8* luma;
    ptrdiff_t lumaPitch;
    quint8* chroma;
    ptrdiff_t chromaPitch;
};

template <bool blueFirst>
TAVLO_INLINE void convert(const Picture& picture)
{
    const auto row = [&](int y) { return reinterpret_cast<const quint32*>(picture.source + y * picture.pitch); };
    const int pairs = picture.width / 2;
    for (int y = 0; y < picture.height; y += 2) {
        const quint32* const upper = row(y);
        const quint32* const lower = row(std::min(y + 1, picture.height - 1));
        lumaRow<blueFirst>(upper, picture.luma + y * picture.lumaPitch, picture.width);
        if (y + 1 < picture.height)
            lumaRow<blueFirst>(lower, picture.luma + (y + 1) * picture.lumaPitch, picture.width);
        auto* const chroma = reinterpret_cast<quint16*>(picture.chroma + y / 2 * picture.chromaPitch);
        chromaRow<blueFirst>(upper, lower, chroma, pairs, 1);
        if (picture.width % 2 != 0)
            chromaRow<blueFirst>(upper + 2 * pairs, lower + 2 * pairs, chroma + pairs, 1, 0);
    }
}

using Convert = void (*)(const Picture& picture);

template <bool blueFirst>
void convertAnywhere(const Picture& picture)
{
    convert<blueFirst>(picture);
}

#ifdef __x86_64__
template <bool blueFirst>
[[gnu::target("avx2")]] void convertEight(const Picture& picture)
{
    convert<blueFirst>(picture);
}

template <bool blueFirst>
Convert choose()
{
    return __builtin_cpu_supports("avx2") ? &convertEight<blueFirst> : &convertAnywhere<blueFirst>;
}
#else
template <bool blueFirst>
Convert choose()
{
    return &convertAnywhere<blueFirst>;
}
#endif

} // namespace

void convertToNv12(const RgbPixels& source, int width, int height, quint8* luma, ptrdiff_t lumaPitch, quint8* chroma,
                   ptrdiff_t chromaPitch)
{
    static const Convert redFirst = choose<false>(), blueFirst = choose<true>();
    const Picture picture{source.data, source.pitch, width, height, luma, lumaPitch, chroma, chromaPitch};
    (source.blueFirst ? blueFirst : redFirst)(picture);
}

} // namespace tavlo
