#include "drawing/DrawTest.h"

#include "drawing/KeyLoop.h"
#include "drawing/PictureChroma.h"

namespace tavlo::test {
namespace {

using namespace reference;
using Process = tagTavloPresentPictureFilterParam;

constexpr int width = 37, height = 23;

Process crop(float left, float top, float right, float bottom)
{
    Process process;
    process.rectCropParam = {1, {left, top, right, bottom}};
    return process;
}

Process adjust(float contrast, float brightness, float hue, float saturation)
{
    Process process;
    process.colorAdjustParam = {1, contrast, brightness, hue, saturation};
    return process;
}

Process chromaKey(float similarity, float smoothness, float spill)
{
    Process process;
    process.chromaKeyParam = {1, 0xff20c040, similarity, smoothness, spill, {0.28F, 0.27F}};
    return process;
}

Process lumaKey(float threshold, float tolerance, float softness)
{
    Process process;
    process.lumaKeyParam = {1, threshold, tolerance, softness};
    return process;
}

/// Both, part by part.
Process operator+(Process a, const Process& b)
{
    if (b.rectCropParam.enable)
        a.rectCropParam = b.rectCropParam;
    if (b.colorAdjustParam.enable)
        a.colorAdjustParam = b.colorAdjustParam;
    if (b.chromaKeyParam.enable)
        a.chromaKeyParam = b.chromaKeyParam;
    if (b.lumaKeyParam.enable)
        a.lumaKeyParam = b.lumaKeyParam;
    return a;
}

const Process someCrop = crop(0.1F, 0.22F, 0.83F, 0.71F), someAdjust = adjust(0.2F, -0.07F, 75, 0.6F);
const Process someChromaKey = chromaKey(0.15F, 0.6F, 0.8F), someLumaKey = lumaKey(0.3F, 0.2F, 0.5F);

class DrawProcessGL : public DrawTest
{
public:
    /// Draws with the process over a blank and over a filled target, upright and turned.
    void expectSame(const Process& process, double tolerance = 1)
    {
        const Picture picture = testPicture(width, height);
        for (const int turn : {0, 1, 2}) {
            const Input input = plain(picture, turn == 1, turn == 2);
            for (const bool clears : {true, false}) {
                SCOPED_TRACE(testing::Message()
                             << "turn " << turn << ", clears " << clears << ", hue " << process.colorAdjustParam.hue
                             << ", contrast " << process.colorAdjustParam.contrast << ", chroma key "
                             << process.chromaKeyParam.similarity << ", luma key " << process.lumaKeyParam.threshold);
                Picture expected(width, height);
                const Draw target = makeFilled(width, height, expected);
                if (clears)
                    expected = Picture(width, height);
                draw(expected, input, fitted(picture.size(), picture.size()), &process);
                drawPlain(*target, input, &process, clears);
                // the software renderer blends in bytes
                EXPECT_TRUE(isSame(result(*target), expected, clears ? tolerance : tolerance + 1));
            }
        }
    }
};

TEST_F(DrawProcessGL, CropCutsInThePlaceOfTheOutput)
{
    Process off = crop(0.4F, 0.4F, 0.6F, 0.6F);
    off.rectCropParam.enable = 0;
    for (const Process& process :
         {someCrop, crop(0, 0, 1, 1), crop(0.6F, 0, 0.4F, 1), off}) // of the third nothing is left
        expectSame(process);
}

TEST_F(DrawProcessGL, AdjustsColours)
{
    for (const float hue : {0.0F, 37.0F, 120.0F, 240.0F, 360.0F})
        expectSame(adjust(0, 0, hue, 1));
    for (const float part : {-1.0F, -0.4F, 0.35F, 1.0F}) {
        expectSame(adjust(part, 0, 0, 1));
        expectSame(adjust(0, part, 0, 1));
    }
    for (const Process& process : {adjust(0, 0, 0, 0), adjust(0, 0, 0, 0.45F), adjust(0.3F, 0.1F, 200, 0.7F)})
        expectSame(process);
}

/// Turning by a third goes from red to green, which a rotation the other way round would not.
TEST_F(DrawProcessGL, HueTurnsRedIntoGreen)
{
    const Process process = adjust(0, 0, 120, 1);
    const Draw target = makeDraw(3, 3);
    drawPlain(*target, plain(Picture(3, 3, Rgba{1, 0, 0, 1})), &process);
    EXPECT_TRUE(isSame(result(*target), Picture(3, 3, Rgba{0, 1, 0, 1}), 1));
}

TEST_F(DrawProcessGL, KeysByColourAndByLuma)
{
    for (const Process& process :
         {chromaKey(0.15F, 0.3F, 0.4F), chromaKey(0.3F, 0.4F, 0.2F), chromaKey(0, 1, 1), lumaKey(0.5F, 0.1F, 0.2F),
          lumaKey(0.2F, 0.3F, 0.4F), lumaKey(0.9F, 0.05F, 0), lumaKey(0.4F, 0, 0.6F)})
        expectSame(process);
}

/// With no smoothness, what is outside the key keeps its alpha and what is inside loses it.
TEST_F(DrawProcessGL, KeyWithoutSmoothnessIsHard)
{
    Picture halves(8, 2, stored({0.1, 0.8, 0.2, 0.7}));
    for (int i = 0; i < 8; ++i)
        halves.at(4 + i % 4, i / 4) = stored({0.9, 0.2, 0.3, 0.7});
    for (const float spill : {0.0F, 0.3F}) {
        const Process process = chromaKey(0.2F, 0, spill);
        Picture expected(8, 2);
        draw(expected, plain(halves), fitted({8, 2}, {8, 2}), &process);
        ASSERT_EQ(expected.at(0, 0)[3], 0);
        ASSERT_GT(expected.at(7, 0)[3], 0.4);
        const Draw target = makeDraw(8, 2);
        drawPlain(*target, plain(halves), &process);
        EXPECT_TRUE(isSame(result(*target), expected, 1));
    }
}

/// The luma key sets alpha, even where the chroma key took it away, and leaves it outside its band.
TEST_F(DrawProcessGL, AllPartsTogether)
{
    const Process keyed = chromaKey(0.15F, 0.3F, 0.4F);
    expectSame(someCrop + someAdjust + keyed + lumaKey(0.5F, 0.1F, 0.2F), 2);
    expectSame(keyed + lumaKey(0.5F, 0.05F, 0.15F), 2);
}

class KeyedSourceGL : public DrawTest
{
public:
    /// Each pass rounds to bytes, and the next key makes the difference larger.
    static constexpr double rounding = 4;

    void expectSame(const Process& process, bool clearFirst, bool flip)
    {
        const Input input = plain(testPicture(31, 29), flip);
        Picture before(width, height);
        const Draw first = makeFilled(width, height, before);
        const Draw second = makeDraw(width, height);
        second->clear({1, 0, 1, 1});
        drawKeyedSource(*first, *second, RV32, upload(input.texture), input.texture.size(), {}, process, clearFirst,
                        flip);
        const Picture expected = reference::drawKeyedSource(before, input, process, clearFirst);
        EXPECT_TRUE(isSame(result(*first), expected, rounding));
    }
};

/// The result stands in the first object whatever passes there were, and nothing of what it held before shows through
/// a pass that clears.
TEST_F(KeyedSourceGL, RunsThePassesInTheirOrder)
{
    for (const int keys : {0, 1, 2, 3}) {
        for (const int rest : {0, 1, 2}) {
            Process process;
            if (rest > 0)
                process = process + someAdjust;
            if (rest > 1)
                process = process + someCrop;
            if (keys & 1)
                process = process + someChromaKey;
            if (keys & 2)
                process = process + someLumaKey;
            for (const int turn : {0, 1, 2, 3}) {
                SCOPED_TRACE(testing::Message() << "keys " << keys << ", rest " << rest << ", turn " << turn);
                process.processParam = {(turn & 1) ? 7U : 0U, (turn & 2) ? 1U : 0U};
                expectSame(process, true, turn == 3);
                expectSame(process, false, turn == 2);
            }
        }
    }
}

/// What stands in for the draw where there is no graphics processor.
TEST_F(KeyedSourceGL, ALoopMakesOfAPictureWhatTheDrawMakes)
{
    for (const graphics::Rgba& cleared : {graphics::Rgba{}, graphics::Rgba{0.2F, 0.5F, 0.8F, 1.0F}}) {
        for (const Process& process :
             {chromaKey(0.15F, 0.3F, 0.4F), chromaKey(0.3F, 0, 0.6F), chromaKey(0.1F, 0.6F, 0)}) {
            SCOPED_TRACE(process.chromaKeyParam.smoothness);
            std::vector<std::uint8_t> bytes = pattern(4 * width, height, 5);
            for (std::size_t i = 3; i < bytes.size(); i += 4)
                bytes[i] = 255;
            const Draw first = makeDraw(width, height), second = makeDraw(width, height);
            first->clearColor = cleared;
            drawKeyedSource(*first, *second, chromaRgbx, upload(width, height, 4, bytes), QSizeF(width, height), {},
                            process, true, false);
            KeyLoop().run(bytes.data(), 4 * width, {QSize(width, height), process.chromaKeyParam, cleared});
            EXPECT_TRUE(isSame(result(*first), Picture(width, height, bytes), 1));
        }
    }
}

/// Keys see colours, not the raw bytes of the source's layout.
TEST_F(KeyedSourceGL, TakesALayout)
{
    const Shape shape = shapeOf(I420, 32, 18);
    const auto bytes = pattern(shape.width, shape.height, 3);
    const Input input{I420, Picture(shape.width, shape.height, bytes), 32, 18, shape.u, shape.v, false, false};
    const Process process = someChromaKey + someLumaKey;
    const Draw first = makeDraw(32, 18), second = makeDraw(32, 18);
    drawKeyedSource(*first, *second, I420, upload(shape.width, shape.height, 1, bytes), QSizeF(32, 18),
                    {shape.u, shape.v}, process, true, false);
    EXPECT_TRUE(isSame(result(*first), reference::drawKeyedSource(Picture(32, 18), input, process, true), rounding));
}

} // namespace
} // namespace tavlo::test
