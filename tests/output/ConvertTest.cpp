// Pictures in memory against the formulas of BT.709, of odd sizes, with noise that shows every pixel that is displaced.

#include "output/PictureConverter.h"
#include "shared/VlcPointers.h"

#include <tavlo/records/MediaFormat.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>

namespace {

using namespace tavlo;

constexpr int width = 43, height = 21;
using Color = std::array<double, 3>;

class Noise
{
public:
    Noise(quint32 chroma, bool blueFirst, int lines = height)
        : picture(picture_New(chroma, width, lines, 1, 1)), _blueFirst(blueFirst)
    {
        std::minstd_rand random(9);
        const plane_t& plane = picture->p[0];
        std::generate_n(plane.p_pixels, plane.i_pitch * plane.i_lines, [&] { return static_cast<quint8>(random()); });
    }

    /// The mean of some pixels, red first; those beyond the edge are those at the edge.
    Color mean(int x, int y, int columns, int rows) const
    {
        Color sum{};
        for (int i = 0; i < columns * rows; ++i) {
            const plane_t& plane = picture->p[0];
            const int row = std::min(y + i / columns, plane.i_visible_lines - 1),
                      column = std::min(x + i % columns, width - 1);
            const quint8* const pixel = plane.p_pixels + row * plane.i_pitch + 4 * column;
            for (size_t c = 0; c < 3; ++c)
                sum[c] += pixel[_blueFirst ? 2 - c : c] / static_cast<double>(columns * rows);
        }
        return sum;
    }

    const PicturePtr picture;

private:
    const bool _blueFirst;
};

/// As BT.601 has it, which UYVY of few lines is.
double asOldLuma(const Color& color)
{
    return 16 + (0.299 * color[0] + 0.587 * color[1] + 0.114 * color[2]) * 219 / 255;
}

double luma(const Color& color) { return 0.2126 * color[0] + 0.7152 * color[1] + 0.0722 * color[2]; }
double asLuma(const Color& color) { return 16 + luma(color) * 219 / 255; }
double asBlue(const Color& color) { return 128 + (color[2] - luma(color)) / 1.8556 * 224 / 255; }
double asRed(const Color& color) { return 128 + (color[0] - luma(color)) / 1.5748 * 224 / 255; }

quint8 at(const picture_t& picture, int plane, int x, int y)
{
    return picture.p[plane].p_pixels[y * picture.p[plane].i_pitch + x];
}

TEST(PictureConverter, MakesNv12OfBothOrdersToHalfAStep)
{
    for (const bool blueFirst : {false, true})
        for (const bool flip : {false, true}) {
            const quint32 chroma = tavloFourcc(blueFirst ? "BGRA" : "RGBA");
            const Noise noise(chroma, blueFirst);
            const PicturePtr result(picture_New(tavloFourcc("NV12"), width + 1, height + 1, 1, 1)); // whole pairs
            PictureConverter converter;
            ASSERT_TRUE(converter.open(chroma, tavloFourcc("NV12"), width, height));
            converter.convert(noise.picture.get(), result.get(), flip);
            double worst = 0;
            for (int y = 0; y < height; ++y)
                for (int x = 0; x < width; ++x) {
                    const Color color = noise.mean(x, flip ? height - 1 - y : y, 1, 1);
                    worst = std::max(worst, std::abs(at(*result, 0, x, y) - asLuma(color)));
                }
            EXPECT_LT(worst, 0.51) << "luma" << blueFirst << flip;
            worst = 0;
            for (int y = 0; y < height && !flip;
                 y += 2) // turned over, the pairs of rows are others where these are odd
                for (int x = 0; x < width; x += 2) {
                    const Color color = noise.mean(x, y, 2, 2);
                    worst = std::max(worst, std::abs(at(*result, 1, x, y / 2) - asBlue(color)));
                    worst = std::max(worst, std::abs(at(*result, 1, x + 1, y / 2) - asRed(color)));
                }
            EXPECT_LT(worst, 0.51) << "chroma" << blueFirst << flip;
        }
}

/// The two matrices differ by more than what rounding does.
TEST(PictureConverter, MakesUyvyByTheMatrixOfItsSizeAndMovesNothingToTheSide)
{
    for (const int lines : {576, 720}) {
        const Noise noise(tavloFourcc("RGBA"), false, lines);
        const PicturePtr result(picture_New(tavloFourcc("UYVY"), width + 1, lines, 1, 1));
        PictureConverter converter;
        ASSERT_TRUE(converter.open(tavloFourcc("RGBA"), tavloFourcc("UYVY"), width, lines));
        converter.convert(noise.picture.get(), result.get(), true);
        double worst = 0;
        for (int y = 0; y < lines; ++y)
            for (int x = 0; x < width; ++x) {
                const Color color = noise.mean(x, lines - 1 - y, 1, 1);
                const double expected = lines < 720 ? asOldLuma(color) : asLuma(color);
                worst = std::max(worst, std::abs(at(*result, 0, 2 * x + 1, y) - expected));
            }
        EXPECT_LT(worst, 2) << lines;
    }
}

} // namespace
