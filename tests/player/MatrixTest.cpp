// Frames of another matrix or range against the equations, pixel by pixel.

#include "TavloCommonModule/player/PictureWriter.h"
#include "shared/VlcPointers.h"

#include <tavlo/records/MediaFormat.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>

namespace tavlo::test {
namespace {

struct PlaceOf
{
    int plane, step, offset, halfRows;
};

/// Where brightness, Cb and Cr of a pixel pair are.
struct Layout
{
    AVPixelFormat format;
    quint32 chroma; ///< 0 for one that is no picture's
    std::array<PlaceOf, 3> places;
};

const std::array layouts{
    Layout{AV_PIX_FMT_YUV420P, tavloFourcc("I420"), {{{0, 1, 0, 0}, {1, 1, 0, 1}, {2, 1, 0, 1}}}},
    Layout{AV_PIX_FMT_NV12, tavloFourcc("NV12"), {{{0, 1, 0, 0}, {1, 2, 0, 1}, {1, 2, 1, 1}}}},
    Layout{AV_PIX_FMT_NV21, tavloFourcc("NV21"), {{{0, 1, 0, 0}, {1, 2, 1, 1}, {1, 2, 0, 1}}}},
    Layout{AV_PIX_FMT_UYVY422, tavloFourcc("UYVY"), {{{0, 2, 1, 0}, {0, 4, 0, 0}, {0, 4, 2, 0}}}},
    Layout{AV_PIX_FMT_YUYV422, tavloFourcc("YUY2"), {{{0, 2, 0, 0}, {0, 4, 1, 0}, {0, 4, 3, 0}}}},
    Layout{AV_PIX_FMT_YVYU422, tavloFourcc("YVYU"), {{{0, 2, 0, 0}, {0, 4, 3, 0}, {0, 4, 1, 0}}}},
    Layout{AV_PIX_FMT_YUV422P, 0, {{{0, 1, 0, 0}, {1, 1, 0, 0}, {2, 1, 0, 0}}}},
};

/// A component, without a middle of 128 for chroma. \param x, y  of the pixel
template <class Data, class Pitch>
double valueAt(const Layout& layout, size_t component, int x, int y, const Data& data, const Pitch& pitch)
{
    const PlaceOf& place = layout.places[component];
    const int column = component == 0 ? x : x / 2, row = place.halfRows ? y / 2 : y;
    return data(place.plane)[row * pitch(place.plane) + column * place.step + place.offset] - (component > 0 ? 128 : 0);
}

struct Matrix
{
    AVColorSpace space;
    double red, blue;
};

/// Red, green and blue, 0 to 1 where they are in range.
std::array<double, 3> coloursOf(const Matrix& m, bool full, double y, double cb, double cr)
{
    const double luma = full ? y / 255 : (y - 16) / 219, scale = full ? 255 : 224;
    const double red = luma + cr / scale * (2 - 2 * m.red), blue = luma + cb / scale * (2 - 2 * m.blue);
    return {red, (luma - m.red * red - m.blue * blue) / (1 - m.red - m.blue), blue};
}

/// Y, Cb and Cr of BT.709 and limited range.
std::array<double, 3> expected(const Matrix& m, bool full, double y, double cb, double cr)
{
    const auto [red, green, blue] = coloursOf(m, full, y, cb, cr);
    const double hd = 0.2126 * red + 0.7152 * green + 0.0722 * blue;
    const auto byte = [](double value) { return std::clamp(value, 0.0, 255.0); };
    return {byte(16 + 219 * hd), byte(128 + 224 * (blue - hd) / 1.8556) - 128,
            byte(128 + 224 * (red - hd) / 1.5748) - 128};
}

FramePtr noise(const Layout& layout, const Matrix& matrix, bool full, int width, int height)
{
    FramePtr frame(av_frame_alloc());
    frame->width = width;
    frame->height = height;
    frame->format = layout.format;
    frame->colorspace = matrix.space;
    frame->color_range = full ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
    EXPECT_EQ(av_frame_get_buffer(frame.get(), 0), 0);
    std::mt19937 random(7);
    for (const auto* buffer : {frame->buf[0], frame->buf[1], frame->buf[2]}) {
        if (buffer)
            std::generate(buffer->data, buffer->data + buffer->size, [&] { return static_cast<uint8_t>(random()); });
    }
    return frame;
}

PicturePtr written(const AVFrame& frame, quint32 chroma)
{
    video_format_t format;
    video_format_Setup(&format, chroma, frame.width, frame.height, frame.width, frame.height, 1, 1);
    PicturePtr picture(picture_NewFromFormat(&format));
    PictureWriter writer;
    writer.setChroma(chroma);
    EXPECT_TRUE(writer.write(frame, *picture));
    return picture;
}

double sourceAt(const Layout& from, const AVFrame& frame, size_t component, int x, int y)
{
    return valueAt(
        from, component, x, y, [&](int p) { return frame.data[p]; }, [&](int p) { return frame.linesize[p]; });
}

void expectConverted(const Layout& from, const Layout& to, const Matrix& matrix, bool full, int width, int height)
{
    const FramePtr frame = noise(from, matrix, full, width, height);
    const auto picture = written(*frame, to.chroma);
    const auto source = [&](size_t component, int x, int y) { return sourceAt(from, *frame, component, x, y); };
    const bool joinsRows = !from.places[1].halfRows && to.places[1].halfRows;
    double worst = 0.0;
    for (int i = 0; i < width * height; ++i) {
        const int x = i % width, y = i / width;
        const double cb = source(1, x, y), cr = source(2, x, y);
        const int other = std::min(y ^ 1, height - 1); // the row that shares its chroma
        auto wanted = expected(matrix, full, 0, joinsRows ? (cb + source(1, x, other)) / 2 : cb,
                               joinsRows ? (cr + source(2, x, other)) / 2 : cr);
        wanted[0] = expected(matrix, full, source(0, x, y), cb, cr)[0];
        for (size_t component = 0; component < 3; ++component) {
            const double made = valueAt(
                to, component, x, y, [&](int p) { return picture->p[p].p_pixels; },
                [&](int p) { return picture->p[p].i_pitch; });
            worst = std::max(worst, std::abs(made - wanted[component]));
        }
    }
    EXPECT_LT(worst, 0.55) << "of a step, and half a one is rounding";
}

void expectColours(const Layout& from, const Matrix& matrix, bool full, int width, int height)
{
    const FramePtr frame = noise(from, matrix, full, width, height);
    const auto picture = written(*frame, tavloFourcc("RGBA"));
    double worst = 0.0;
    for (int i = 0; i < width * height; ++i) {
        const int x = i % width, y = i / width;
        const uint8_t* const pixel = picture->p[0].p_pixels + y * picture->p[0].i_pitch + 4 * x;
        const auto source = [&](size_t component) { return sourceAt(from, *frame, component, x, y); };
        const auto wanted = coloursOf(matrix, full, source(0), source(1), source(2));
        for (size_t c = 0; c < 3; ++c)
            worst = std::max(worst, std::abs(pixel[c] - std::clamp(wanted[c] * 255, 0.0, 255.0)));
        EXPECT_EQ(pixel[3], 255);
    }
    EXPECT_LT(worst, 0.55) << "of a step, and half a one is rounding";
}

constexpr std::array matrices{Matrix{AVCOL_SPC_SMPTE170M, 0.299, 0.114}, Matrix{AVCOL_SPC_BT2020_NCL, 0.2627, 0.0593},
                              Matrix{AVCOL_SPC_BT709, 0.2126, 0.0722}};

TEST(PlayerMatrix, EveryLayoutAndRangeBecomesColoursAndEachLayoutOfTheDrawing)
{
    for (const Matrix& matrix : matrices)
        for (const bool full : {false, true})
            for (const Layout& from : layouts) {
                SCOPED_TRACE(testing::Message() << matrix.space << (full ? " full " : " limited ") << from.format);
                const bool planar = from.places[0].step == 1; // takes half a pair of pixels
                expectColours(from, matrix, full, 38, 10);
                if (planar)
                    expectColours(from, matrix, full, 33, 7);
                for (const Layout& to : layouts) {
                    if (to.chroma == 0)
                        continue;
                    SCOPED_TRACE(testing::Message() << " to " << to.format);
                    expectConverted(from, to, matrix, full, 38, 10);
                    if (planar && to.places[0].step == 1)
                        expectConverted(from, to, matrix, full, 33, 7);
                }
            }
}

} // namespace
} // namespace tavlo::test
