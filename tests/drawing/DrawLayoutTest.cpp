#include "drawing/DrawTest.h"

#include "drawing/PictureChroma.h"

#include <array>

namespace tavlo::test {
namespace {

using namespace reference;

struct LayoutName
{
    std::uint32_t chroma;
    const char* name;
};

constexpr std::array layouts{LayoutName{I420, "I420"},      LayoutName{YV12, "YV12"}, LayoutName{NV12, "NV12"},
                             LayoutName{NV21, "NV21"},      LayoutName{YUY2, "YUY2"}, LayoutName{YVYU, "YVYU"},
                             LayoutName{UYVY, "UYVY"},      LayoutName{VYUY, "VYUY"}, LayoutName{RV32, "RV32"},
                             LayoutName{chromaRgbx, "RGBX"}};
constexpr std::array<std::array<int, 2>, 7> sizes{{{1, 1}, {2, 2}, {7, 5}, {16, 9}, {9, 16}, {33, 17}, {64, 36}}};

class DrawLayoutGL : public DrawTest, public testing::WithParamInterface<LayoutName>
{
public:
    Input makeInput(int width, int height, bool flip, bool mirror)
    {
        const Shape shape = shapeOf(GetParam().chroma, width, height);
        _bytes = pattern(shape.width * shape.channels, shape.height, width);
        for (std::size_t i = 3; GetParam().chroma == chromaRgbx && i < _bytes.size(); i += 4)
            _bytes[i] = 255;
        const Picture texture(shape.width, shape.height, _bytes);
        return {GetParam().chroma, texture, width, height, shape.u, shape.v, flip, mirror};
    }

    void expectSame(const Input& input, int targetWidth, int targetHeight, double tolerance)
    {
        const Draw target = makeDraw(targetWidth, targetHeight);
        const QSizeF size(input.width, input.height);
        const int channels = shapeOf(input.chroma, input.width, input.height).channels;
        const auto texture = upload(input.texture.width, input.texture.height, channels, _bytes);
        target->drawPicture(input.chroma, texture, size, {input.u, input.v}, nullptr, true, input.flip, input.mirror);
        Picture expected(targetWidth, targetHeight);
        draw(expected, input, fitted(size, expected.size()));
        EXPECT_TRUE(isSame(result(*target), expected, tolerance));
    }

private:
    std::vector<std::uint8_t> _bytes;
};

/// Random bytes, so that a plane, a row or a component taken for another cannot pass.
TEST_P(DrawLayoutGL, IsReadTexelByTexel)
{
    for (const auto& [width, height] : sizes) {
        for (const int turn : {0, 1, 2, 3}) {
            SCOPED_TRACE(testing::Message() << width << " x " << height << ", turn " << turn);
            expectSame(makeInput(width, height, (turn & 1) != 0, (turn & 2) != 0), width, height, 1);
        }
    }
}

/// Three pixels to a texel: texel loads mix no neighbours.
TEST_P(DrawLayoutGL, GrowsToALargerTarget) { expectSame(makeInput(16, 10, false, false), 48, 30, 2); }

INSTANTIATE_TEST_SUITE_P(Layouts, DrawLayoutGL, testing::ValuesIn(layouts),
                         [](const auto& tested) { return tested.param.name; });

} // namespace
} // namespace tavlo::test
