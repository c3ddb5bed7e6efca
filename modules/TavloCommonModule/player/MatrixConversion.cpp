#include "TavloCommonModule/player/MatrixConversion.h"

#include "shared/ChromaFormats.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

// The compiler makes vector code of the loops below (see CMakeLists.txt), once for any processor of the kind and once for
// those that work on eight pixels at a time.
#define TAVLO_INLINE [[gnu::always_inline]] inline

namespace tavlo {
namespace {

constexpr int bits = 14; // behind the point
constexpr int half = 1 << (bits - 1);

/// How brightness and chroma lie in memory.
enum class Packing
{
    Planes,
    Pairs,  ///< of both chroma components, in a plane of their own
    Words,  ///< of two pixels: two brightnesses and their chroma
    Colours ///< red, green, blue and an alpha of 255; to write alone
};

struct Layout
{
    AVPixelFormat format;
    Packing packing;
    bool halfRows;         ///< a row of chroma belongs to two of brightness
    int luma, firstChroma; ///< bits in front of these in a word or pair
    constexpr int secondChroma() const { return packing == Packing::Pairs ? 8 - firstChroma : firstChroma ^ 16; }
};

constexpr std::array layouts{
    Layout{AV_PIX_FMT_YUV420P, Packing::Planes, true, 0, 0},  Layout{AV_PIX_FMT_YUVJ420P, Packing::Planes, true, 0, 0},
    Layout{AV_PIX_FMT_YUV422P, Packing::Planes, false, 0, 0}, Layout{AV_PIX_FMT_YUVJ422P, Packing::Planes, false, 0, 0},
    Layout{AV_PIX_FMT_NV12, Packing::Pairs, true, 0, 0},      Layout{AV_PIX_FMT_NV21, Packing::Pairs, true, 0, 8},
    Layout{AV_PIX_FMT_UYVY422, Packing::Words, false, 8, 0},  Layout{AV_PIX_FMT_YUYV422, Packing::Words, false, 0, 8},
    Layout{AV_PIX_FMT_YVYU422, Packing::Words, false, 0, 24}, Layout{AV_PIX_FMT_RGBA, Packing::Colours, false, 0, 0},
};

const Layout* layoutOf(AVPixelFormat format)
{
    const auto* const found = std::ranges::find(layouts, format, &Layout::format);
    return found != layouts.end() ? found : nullptr;
}

/// With `bits` behind the point.
struct Factors
{
    qint32 gain, base;     ///< of brightness
    qint32 lumaCb, lumaCr; ///< what chroma adds to it
    qint32 cbCb, cbCr;     ///< of the first component
    qint32 crCb, crCr;     ///< of the second
};

/// With `bits` behind the point: what a step of brightness and one of chroma add to a colour.
struct ColourFactors
{
    qint32 gain, base;
    qint32 redCr, greenCb, greenCr, blueCb;
};

qint32 fixed(double value) { return static_cast<qint32>(std::lround(value * (1 << bits))); }

/// From the equations of Rec. ITU-R BT.709, items 3.2 to 3.4, which the other matrices share but for the two shares:
/// Y = kr R + kg G + kb B, Cb = (B - Y) / (2 - 2 kb), Cr = (R - Y) / (2 - 2 kr).
Factors factorsOf(MatrixConversion::Matrix from, bool fullRange)
{
    constexpr MatrixConversion::Matrix to{0.2126, 0.0722};
    const double lumaScale = fullRange ? 219.0 / 255 : 1.0, chromaScale = fullRange ? 224.0 / 255 : 1.0;
    const double fromGreen = 1 - from.red - from.blue, toGreen = 1 - to.red - to.blue;
    Factors factors{};
    factors.gain = fixed(lumaScale);
    factors.base = (16 << bits) + half - (fullRange ? 0 : 16 * factors.gain);
    // One component of chroma alone, at 1, and without brightness.
    const auto solve = [&](double r, double b, qint32& luma, qint32& cb, qint32& cr) {
        const double g = -(from.red * r + from.blue * b) / fromGreen;
        const double y = to.red * r + toGreen * g + to.blue * b;
        luma = fixed(y * chromaScale * 219 / 224);
        cb = fixed((b - y) / (2 - 2 * to.blue) * chromaScale);
        cr = fixed((r - y) / (2 - 2 * to.red) * chromaScale);
    };
    solve(0, 2 - 2 * from.blue, factors.lumaCb, factors.cbCb, factors.crCb);
    solve(2 - 2 * from.red, 0, factors.lumaCr, factors.cbCr, factors.crCr);
    return factors;
}

/// The same equations, solved for the colours.
ColourFactors colourFactorsOf(MatrixConversion::Matrix from, bool fullRange)
{
    const double lumaScale = fullRange ? 1.0 : 255.0 / 219, chromaScale = fullRange ? 1.0 : 255.0 / 224;
    const double cr = (2 - 2 * from.red) * chromaScale, cb = (2 - 2 * from.blue) * chromaScale;
    const double green = 1 - from.red - from.blue;
    ColourFactors factors{};
    factors.gain = fixed(lumaScale);
    factors.base = half - (fullRange ? 0 : 16 * factors.gain);
    factors.redCr = fixed(cr);
    factors.blueCb = fixed(cb);
    factors.greenCr = fixed(-from.red * cr / green);
    factors.greenCb = fixed(-from.blue * cb / green);
    return factors;
}

TAVLO_INLINE quint8 clamped(qint32 value) { return static_cast<quint8>(std::clamp(value >> bits, 0, 255)); }

template <class Word>
TAVLO_INLINE Word wordAt(const quint8* bytes, int number)
{
    Word word;
    std::memcpy(&word, bytes + static_cast<ptrdiff_t>(sizeof(Word)) * number, sizeof(Word));
    return word;
}

/// Chroma without its middle out of words that hold both components.
template <class Word>
TAVLO_INLINE void splitChroma(const quint8* source, const Layout& layout, qint16* cb, qint16* cr, int count)
{
    const int first = layout.firstChroma, second = layout.secondChroma();
    for (int x = 0; x < count; ++x) {
        const quint32 word = wordAt<Word>(source, x);
        cb[x] = static_cast<qint16>(static_cast<int>(word >> first & 0xff) - 128);
        cr[x] = static_cast<qint16>(static_cast<int>(word >> second & 0xff) - 128);
    }
}

TAVLO_INLINE void addBrightness(Factors f, const qint16* cb, const qint16* cr, qint32* added, int count)
{
    for (int x = 0; x < count; ++x)
        added[x] = f.base + f.lumaCb * cb[x] + f.lumaCr * cr[x];
}

/// \param added  for each two pixels
TAVLO_INLINE void lumaRow(Factors f, const quint8* source, const qint32* added, quint8* target, int width)
{
    const int pairs = width / 2;
    for (int x = 0; x < pairs; ++x) {
        target[2 * x] = clamped(f.gain * source[2 * x] + added[x]);
        target[2 * x + 1] = clamped(f.gain * source[2 * x + 1] + added[x]);
    }
    if (width % 2 != 0)
        target[width - 1] = clamped(f.gain * source[width - 1] + added[pairs]);
}

TAVLO_INLINE void addColours(ColourFactors f, const qint16* cb, const qint16* cr, qint32* red, qint32* green,
                             qint32* blue, int count)
{
    for (int x = 0; x < count; ++x) {
        red[x] = f.base + f.redCr * cr[x];
        green[x] = f.base + f.greenCb * cb[x] + f.greenCr * cr[x];
        blue[x] = f.base + f.blueCb * cb[x];
    }
}

TAVLO_INLINE void putColour(qint32 luma, qint32 red, qint32 green, qint32 blue, quint8* target)
{
    const auto part = [luma](qint32 added) { return static_cast<quint32>(std::clamp((luma + added) >> bits, 0, 255)); };
    const quint32 word = part(red) | part(green) << 8 | part(blue) << 16 | 0xff000000;
    std::memcpy(target, &word, sizeof(word));
}

/// \param red, green, blue  what chroma adds to these, for each two pixels
TAVLO_INLINE void colourRow(ColourFactors f, const quint8* source, const qint32* red, const qint32* green,
                            const qint32* blue, quint8* target, int width)
{
    const int pairs = width / 2;
    for (int x = 0; x < pairs; ++x) {
        putColour(f.gain * source[2 * x], red[x], green[x], blue[x], target + 8 * x);
        putColour(f.gain * source[2 * x + 1], red[x], green[x], blue[x], target + 8 * x + 4);
    }
    if (width % 2 != 0)
        putColour(f.gain * source[width - 1], red[pairs], green[pairs], blue[pairs], target + 8 * pairs);
}

/// \param shift  1 where the input is the sum of two rows
TAVLO_INLINE void chromaRow(Factors f, const qint16* cb, const qint16* cr, quint8* first, quint8* second, int count,
                            int shift)
{
    const qint32 middle = ((128 << bits) + half) << shift;
    for (int x = 0; x < count; ++x) {
        first[x] = clamped((middle + f.cbCb * cb[x] + f.cbCr * cr[x]) >> shift);
        second[x] = clamped((middle + f.crCb * cb[x] + f.crCr * cr[x]) >> shift);
    }
}

TAVLO_INLINE void joinPairs(const Layout& layout, const quint8* cb, const quint8* cr, quint8* target, int count)
{
    for (int x = 0; x < count; ++x) {
        const auto pair = static_cast<quint16>(cb[x] << layout.firstChroma | cr[x] << layout.secondChroma());
        std::memcpy(target + 2 * x, &pair, sizeof(pair));
    }
}

TAVLO_INLINE void joinWords(const Layout& layout, const quint8* luma, const quint8* cb, const quint8* cr,
                            quint8* target, int count)
{
    const int first = layout.firstChroma, second = layout.secondChroma(), bright = layout.luma;
    for (int x = 0; x < count; ++x) {
        const quint32 word = quint32{luma[2 * x]} << bright | quint32{luma[2 * x + 1]} << (bright + 16) |
                             quint32{cb[x]} << first | quint32{cr[x]} << second;
        std::memcpy(target + 4 * x, &word, sizeof(word));
    }
}

/// A picture's planes, brightness first, then the chroma components in this order.
struct Target
{
    std::array<quint8*, 3> data;
    std::array<ptrdiff_t, 3> pitch;
    int chromaRows; ///< that there is room for
};

/// The rows at work.
struct Scratch
{
    qint16 *cb, *cr;       ///< of the row that is read
    qint16 *cbSum, *crSum; ///< of two rows
    qint32* added;         ///< to brightness, or to the colours, each behind the other
    quint8 *luma, *first, *second, *joined;
};

struct Job
{
    const AVFrame& frame;
    const Layout& from;
    const Layout& to;
    Factors factors;
    ColourFactors colours;
    Target target;
    Scratch scratch;
};

TAVLO_INLINE void readChroma(const Job& job, int row, int count)
{
    const auto line = [&](int plane) { return job.frame.data[plane] + ptrdiff_t{row} * job.frame.linesize[plane]; };
    const Scratch& s = job.scratch;
    switch (job.from.packing) {
    case Packing::Planes: {
        const quint8 *const first = line(1), *const second = line(2);
        for (int x = 0; x < count; ++x) {
            s.cb[x] = static_cast<qint16>(first[x] - 128);
            s.cr[x] = static_cast<qint16>(second[x] - 128);
        }
        break;
    }
    case Packing::Pairs:
        splitChroma<quint16>(line(1), job.from, s.cb, s.cr, count);
        break;
    case Packing::Words:
        splitChroma<quint32>(line(0), job.from, s.cb, s.cr, count);
        break;
    case Packing::Colours:
        break;
    }
}

/// Brightness of a row of the frame, taken out of its words.
TAVLO_INLINE const quint8* readLuma(const Job& job, int row, int width)
{
    const quint8* const line = job.frame.data[0] + ptrdiff_t{row} * job.frame.linesize[0];
    if (job.from.packing != Packing::Words)
        return line;
    quint8* const luma = job.scratch.joined;
    const int place = job.from.luma / 8;
    for (int x = 0; x < width; ++x)
        luma[x] = line[2 * x + place];
    return luma;
}

/// What is a row's in memory may be shorter than its chroma, where the width is odd.
TAVLO_INLINE void writeChroma(const Job& job, int row, const qint16* cb, const qint16* cr, int count, int shift)
{
    const Scratch& s = job.scratch;
    const Target& target = job.target;
    if (row >= target.chromaRows)
        return;
    chromaRow(job.factors, cb, cr, s.first, s.second, count, shift);
    const auto copy = [&](size_t plane, const quint8* bytes, int length) {
        std::memcpy(target.data[plane] + row * target.pitch[plane], bytes,
                    static_cast<size_t>(std::min<ptrdiff_t>(length, target.pitch[plane])));
    };
    if (job.to.packing == Packing::Pairs) {
        joinPairs(job.to, s.first, s.second, s.joined, count);
        copy(1, s.joined, 2 * count);
    } else {
        copy(1, s.first, count);
        copy(2, s.second, count);
    }
}

/// What becomes of a row's chroma.
TAVLO_INLINE void passChroma(const Job& job, int y, int count)
{
    const Scratch& s = job.scratch;
    const bool isLast = y + 1 == job.frame.height;
    if (job.from.halfRows) {
        if (y % 2 == 0)
            writeChroma(job, y / 2, s.cb, s.cr, count, 0);
    } else if (y % 2 == 0 && !isLast) {
        std::swap_ranges(s.cb, s.cb + count, s.cbSum);
        std::swap_ranges(s.cr, s.cr + count, s.crSum);
    } else if (y % 2 == 0) {
        writeChroma(job, y / 2, s.cb, s.cr, count, 0);
    } else {
        for (int x = 0; x < count; ++x) {
            s.cbSum[x] = static_cast<qint16>(s.cbSum[x] + s.cb[x]);
            s.crSum[x] = static_cast<qint16>(s.crSum[x] + s.cr[x]);
        }
        writeChroma(job, y / 2, s.cbSum, s.crSum, count, 1);
    }
}

TAVLO_INLINE void runColours(const Job& job)
{
    const Scratch& s = job.scratch;
    const int width = job.frame.width, count = (width + 1) / 2;
    qint32 *const red = s.added, *const green = red + count, *const blue = green + count;
    for (int y = 0; y < job.frame.height; ++y) {
        if (!job.from.halfRows || y % 2 == 0) {
            readChroma(job, job.from.halfRows ? y / 2 : y, count);
            addColours(job.colours, s.cb, s.cr, red, green, blue, count);
        }
        colourRow(job.colours, readLuma(job, y, width), red, green, blue, job.target.data[0] + y * job.target.pitch[0],
                  width);
    }
}

TAVLO_INLINE void run(const Job& job)
{
    if (job.to.packing == Packing::Colours)
        return runColours(job);
    const Scratch& s = job.scratch;
    const int width = job.frame.width, count = (width + 1) / 2;
    for (int y = 0; y < job.frame.height; ++y) {
        if (!job.from.halfRows || y % 2 == 0) {
            readChroma(job, job.from.halfRows ? y / 2 : y, count);
            addBrightness(job.factors, s.cb, s.cr, s.added, count);
        }
        const quint8* const luma = readLuma(job, y, width);
        quint8* const line = job.target.data[0] + y * job.target.pitch[0];
        if (job.to.packing == Packing::Words) {
            lumaRow(job.factors, luma, s.added, s.luma, width);
            chromaRow(job.factors, s.cb, s.cr, s.first, s.second, count, 0);
            joinWords(job.to, s.luma, s.first, s.second, line, count);
        } else {
            lumaRow(job.factors, luma, s.added, line, width);
            passChroma(job, y, count);
        }
    }
}

void runAnywhere(const Job& job) { run(job); }

#ifdef __x86_64__
[[gnu::target("avx2")]] void runEight(const Job& job) { run(job); }

auto* chooseRun() { return __builtin_cpu_supports("avx2") ? &runEight : &runAnywhere; }
#else
auto* chooseRun() { return &runAnywhere; }
#endif

Target targetOf(const picture_t& picture, quint32 chroma, int height)
{
    Target target{};
    const bool swapped = hasSwappedPlanes(chroma);
    for (int i = 0; i < std::min(picture.i_planes, 3); ++i) {
        const auto place = static_cast<size_t>(swapped && i > 0 ? 3 - i : i);
        target.data[place] = picture.p[i].p_pixels;
        target.pitch[place] = picture.p[i].i_pitch;
    }
    // Planes of a texture lie one behind the other, with room for half the rows and no more.
    if (picture.i_planes > 1)
        target.chromaRows = std::min(picture.p_sys ? height / 2 : (height + 1) / 2, picture.p[1].i_lines);
    return target;
}

} // namespace

bool MatrixConversion::canConvert(const AVFrame& frame, quint32 chroma)
{
    const Layout* const from = layoutOf(static_cast<AVPixelFormat>(frame.format));
    const Layout* const to = layoutOf(pixelFormatOfChroma(chroma));
    const auto isWhole = [&](const Layout* layout) {
        return layout && (layout->packing != Packing::Words || frame.width % 2 == 0);
    };
    return isWhole(from) && isWhole(to) && from->packing != Packing::Colours;
}

void MatrixConversion::convert(const AVFrame& frame, Matrix matrix, bool fullRange, picture_t& picture, quint32 chroma)
{
    static auto* const chosen = chooseRun();
    const auto count = static_cast<size_t>(frame.width + 1) / 2;
    _chroma.resize(4 * count);
    _added.resize(3 * count);
    _bytes.resize(6 * count + 2);
    const Scratch scratch{_chroma.data(),
                          _chroma.data() + count,
                          _chroma.data() + 2 * count,
                          _chroma.data() + 3 * count,
                          _added.data(),
                          _bytes.data(),
                          _bytes.data() + 2 * count,
                          _bytes.data() + 3 * count,
                          _bytes.data() + 4 * count};
    chosen({frame, *layoutOf(static_cast<AVPixelFormat>(frame.format)), *layoutOf(pixelFormatOfChroma(chroma)),
            factorsOf(matrix, fullRange), colourFactorsOf(matrix, fullRange), targetOf(picture, chroma, frame.height),
            scratch});
}

} // namespace tavlo
