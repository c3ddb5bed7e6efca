#include "drawing/DrawTest.h"

#include "support/LogCapture.h"

#include <array>
#include <functional>

namespace tavlo::test {
namespace {

using namespace reference;
using graphics::Format;

using Display = tagTavloShowDisplayItemInfo;

class DrawPlacementGL : public DrawTest
{
public:
    /// Places pictures of three shapes over a filled target.
    void expectSame(const Display& display, int fitMode)
    {
        for (const QSizeF size : {QSizeF(40, 24), QSizeF(9, 31), QSizeF(53, 17)}) {
            const Picture picture = testPicture(int(size.width()), int(size.height()));
            for (const bool clears : {true, false}) {
                SCOPED_TRACE(testing::Message() << size.width() << " wide, turned by " << display.rotation << ", fit "
                                                << fitMode << ", clears " << clears);
                const Input input = plain(picture, clears, !clears);
                Picture expected(40, 24);
                const Draw target = makeFilled(40, 24, expected);
                if (clears)
                    expected = Picture(40, 24);
                const Placement where = placed(display, fitMode, size, expected.size());
                draw(expected, input, where);
                target->drawPicturePlaced(RV32, upload(picture), size, {}, display, fitMode, clears, input.flip,
                                          input.mirror);
                EXPECT_TRUE(isSame(result(*target), expected, 2, where));
            }
        }
    }
};

TEST_F(DrawPlacementGL, FitsScalesAndMoves)
{
    for (const int fitMode : {0, 1, 2, 7, -1}) {
        expectSame({{1, 1}, {0, 0}, 0, 1, {}}, fitMode);
        expectSame({{0.5, 0.8}, {0.1, -0.2}, 0, 0.3F, {}}, fitMode);
        expectSame({{2, 2}, {0, 0}, 0, 1, {}}, fitMode);
        expectSame({{-0.7, 0.6}, {-0.3, 0.15}, 0, 1, {}}, fitMode);
    }
}

TEST_F(DrawPlacementGL, TurnsAboutTheMiddleOfTheLeftEdge)
{
    for (const float degrees : {90.0F, -30.0F, 17.0F, 180.0F})
        for (const int fitMode : {0, 1, 2})
            expectSame({{0.4, 0.5}, {0.12, 0.07}, degrees, 1, {}}, fitMode);
}

/// The final rectangle counts alone, but for the rotation.
TEST_F(DrawPlacementGL, TakesItsFinalRectangle)
{
    expectSame({{0.4, 3}, {0.5, 0.5}, 0, 1, {3, 2, 20.5, 9.25}}, 2);
    expectSame({{0.4, 3}, {0.5, 0.5}, 25, 1, {8, 5, 20, 9}}, 0);
    expectSame({{1, 1}, {0, 0}, 0, 1, {-6, -4, 60, 40}}, 1);
    expectSame({{0.5, 0.5}, {0, 0}, 0, 1, {8, 5, 0, 9}}, 1); // an empty one doesn't count
    expectSame({{0.5, 0.5}, {0, 0}, 0, 1, {8, 5, 20, -9}}, 1);
}

class DrawGL : public DrawTest
{};

TEST_F(DrawGL, KeepsTheAspectInTheTargetsMiddle)
{
    for (const QSizeF target : {QSizeF(48, 27), QSizeF(27, 48), QSizeF(31, 31)}) {
        for (const QSizeF source : {QSizeF(16, 9), QSizeF(9, 16), QSizeF(20, 20), QSizeF(64, 3), QSizeF(1, 40)}) {
            SCOPED_TRACE(testing::Message() << source.width() << " wide in " << target.width());
            const Input input = plain(testPicture(int(source.width()), int(source.height())));
            const Placement where = fitted(source, target);
            for (const bool clears : {true, false}) {
                Picture expected;
                const Draw canvas = makeFilled(int(target.width()), int(target.height()), expected);
                canvas->clearColor = {0.2F, 0.4F, 0.6F, 0.8F};
                if (clears)
                    expected =
                        Picture(expected.width, expected.height, {51 / 255., 102 / 255., 153 / 255., 204 / 255.});
                draw(expected, input, where);
                drawPlain(*canvas, input, nullptr, clears);
                EXPECT_TRUE(isSame(result(*canvas), expected, 2, where));
            }
        }
    }
}

/// Alpha of the target is squared where nothing is drawn over it: a blank picture is a picture.
TEST_F(DrawGL, NoPictureDrawsATransparentOne)
{
    for (const std::uint32_t chroma : {RV32, I420, YUY2}) {
        Picture expected(9, 5);
        const Draw target = makeFilled(9, 5, expected);
        draw(expected, plain(Picture(9, 5)), fitted({9, 5}, {9, 5}));
        target->drawPicture(chroma, nullptr, QSizeF(9, 5), {}, nullptr, false, false, false);
        EXPECT_TRUE(isSame(result(*target), expected, 1));
        target->drawPicture(chroma, nullptr, QSizeF(9, 5), {}, nullptr, true, true, true);
        EXPECT_TRUE(isSame(result(*target), Picture(9, 5), 0));
    }
}

TEST_F(DrawGL, GreyIsOpaqueOnAClearedTarget)
{
    const Picture picture = testPicture(20, 9);
    Picture expected(20, 20);
    const Draw target = makeFilled(20, 20, expected);
    target->clearColor = {1, 0, 0, 1};
    target->drawGray(upload(picture), picture.size());
    drawGray(expected, picture, {1, 0, 0, 1});
    EXPECT_TRUE(isSame(result(*target), expected, 1, fitted(picture.size(), expected.size())));
}

/// Opaque layouts, pictures that fill the target and such that do not may take different ways; the target's own alpha
/// and colours come through the same.
TEST_F(DrawGL, DrawsLayoutsOverWhatIsThere)
{
    const Shape shape = shapeOf(NV12, 20, 10);
    const auto bytes = pattern(20, 15, 9);
    const Input input{NV12, Picture(shape.width, shape.height, bytes), 20, 10, shape.u, shape.v, false, false};
    tagTavloPresentPictureFilterParam cropped;
    cropped.rectCropParam = {1, {0.23F, 0.23F, 0.77F, 0.77F}};
    for (const int height : {10, 16}) {
        for (const auto* process : std::initializer_list<tagTavloPresentPictureFilterParam*>{nullptr, &cropped}) {
            Picture expected;
            const Draw canvas = makeFilled(20, height, expected);
            draw(expected, input, fitted({20, 10}, expected.size()), process);
            canvas->drawPicture(NV12, upload(shape.width, shape.height, 1, bytes), QSizeF(20, 10), {shape.u, shape.v},
                                process, false, false, false);
            EXPECT_TRUE(isSame(result(*canvas), expected, 1));
        }
    }
}

TEST_F(DrawGL, LeavesTheContextAsItFoundIt)
{
    const graphics::TexturePtr other = makeTarget(4, 4);
    const graphics::TexturePtr depth = makeTexture(Format::D24_UNORM_S8_UINT, 4, 4, graphics::Usage::Default, true);
    const auto layout = std::make_shared<graphics::InputLayout>();
    const graphics::TexturePtr picture = upload(testPicture(8, 6));
    const Draw first = makeDraw(8, 6), second = makeDraw(8, 6);
    const Display display{{0.5, 0.5}, {0, 0}, 0, 1, {}};
    tagTavloPresentPictureFilterParam keys;
    keys.lumaKeyParam.enable = keys.chromaKeyParam.enable = 1;
    const QSizeF size(8, 6);
    const std::array<std::function<void()>, 4> draws{
        [&] { first->drawPicture(RV32, picture, size, {}, nullptr, true, false, false); },
        [&] { first->drawPicturePlaced(RV32, picture, size, {}, display, 0, false, false, false); },
        [&] { first->drawGray(picture, size); },
        [&] { drawKeyedSource(*first, *second, RV32, picture, size, {}, keys, true, false); },
    };
    for (const auto& drawOnce : draws) {
        context->setRenderTarget(other, depth);
        context->setInputLayout(layout);
        drawOnce();
        EXPECT_EQ(context->renderTarget(), other);
        EXPECT_EQ(context->depthTarget(), depth);
        EXPECT_EQ(context->inputLayout(), layout);
        EXPECT_EQ(picture.use_count(), 1) << "the picture is still bound";
        context->clearState();
    }
}

TEST_F(DrawGL, DrawsNothingWhileUnmade)
{
    const graphics::TexturePtr picture = upload(testPicture(8, 6));
    const auto drawAll = [&](TavloDrawDX11& draw) {
        draw.clear();
        draw.drawPicture(RV32, picture, QSizeF(8, 6), {}, nullptr, true, false, false);
        draw.drawPicturePlaced(RV32, picture, QSizeF(8, 6), {}, {}, 0, true, false, false);
        draw.drawGray(picture, QSizeF(8, 6));
        EXPECT_FALSE(draw.isMade());
        EXPECT_EQ(draw.targetResource(), nullptr);
    };
    const LogCapture log;
    TavloDrawDX11 never;
    EXPECT_FALSE(never.create(resources.get(), nullptr, device, context, {}, QSizeF(0, 7)));
    EXPECT_EQ(log.count("failed to CreateTexture2D "), 1);
    drawAll(never);
    never.destroy();

    const Draw gone = makeDraw(8, 6);
    const graphics::TexturePtr target = gone->targetResource();
    gone->destroy();
    gone->destroy();
    drawAll(*gone);
    EXPECT_EQ(target.use_count(), 1);
}

/// A target that was handed in is drawn into, and stays with its owner.
TEST_F(DrawGL, TakesTargetsOfOthersAndOfOtherFormats)
{
    const Picture picture = testPicture(13, 7);
    const graphics::TexturePtr target = makeTarget(13, 7);
    {
        TavloDrawDX11 draw;
        ASSERT_TRUE(draw.create(resources.get(), target, device, context, target->desc(), QSizeF(13, 7)));
        drawPlain(draw, plain(picture));
        EXPECT_EQ(draw.targetResource(), target);
        Picture expected(13, 7);
        reference::draw(expected, plain(picture), fitted(picture.size(), picture.size()));
        EXPECT_TRUE(isSame(result(draw), expected, 1));
    }
    EXPECT_EQ(target.use_count(), 1);

    const Draw red = makeDraw(13, 7, Format::R8_UNORM);
    drawPlain(*red, plain(picture));
    const Picture drawn = result(*red);
    for (std::size_t i = 0; i < picture.texels.size(); ++i)
        EXPECT_NEAR(drawn.texels[i][0], picture.texels[i][0] * picture.texels[i][3], 1.01 / 255);
}

} // namespace
} // namespace tavlo::test
