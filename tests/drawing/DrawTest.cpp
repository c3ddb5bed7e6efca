#include "drawing/DrawTest.h"

#include <algorithm>
#include <cmath>

namespace tavlo::test {

using namespace graphics;
using reference::Picture;

namespace {

constexpr double edgeWidth = 0.01; // pixels

std::vector<std::uint8_t> bytesOf(const Picture& picture)
{
    std::vector<std::uint8_t> bytes;
    for (const reference::Rgba& texel : picture.texels)
        for (const double value : texel)
            bytes.push_back(std::uint8_t(std::lround(value * 255)));
    return bytes;
}

} // namespace

void DrawTest::SetUp()
{
    GraphicsTest::SetUp();
    ASSERT_TRUE(_cache.isValid());
    resources.reset(new TavloGraphicsRes);
    ASSERT_TRUE(resources->create(ITavloGraphicsRes::WithoutImages, device, context, _cache.path() + QLatin1Char('/')));
}

DrawTest::Draw DrawTest::makeDraw(int width, int height, Format format)
{
    auto draw = std::make_unique<TavloDrawDX11>();
    TextureDesc desc;
    desc.format = format;
    EXPECT_TRUE(draw->create(resources.get(), nullptr, device, context, desc, QSizeF(width, height)));
    return draw;
}

TexturePtr DrawTest::upload(int width, int height, int channels, std::span<const std::uint8_t> packed)
{
    const Format format = channels == 1 ? Format::R8_UNORM : Format::R8G8B8A8_UNORM;
    TexturePtr texture = makeTexture(format, width, height, Usage::Dynamic);
    EXPECT_TRUE(texture && write(*context, texture, packed));
    return texture;
}

TexturePtr DrawTest::upload(const Picture& picture)
{
    return upload(picture.width, picture.height, 4, bytesOf(picture));
}

Picture DrawTest::result(const TavloDrawDX11& draw)
{
    const TexturePtr& target = draw.targetResource();
    const std::vector<std::uint8_t> bytes = readBack(*device, *context, target);
    EXPECT_FALSE(bytes.empty());
    return {int(target->desc().width), int(target->desc().height), bytes};
}

DrawTest::Draw DrawTest::makeFilled(int width, int height, Picture& filled)
{
    filled = testPicture(width, height, 5);
    const auto bytes = bytesOf(filled);
    Draw draw = makeDraw(width, height);
    const Box all{0, 0, std::uint32_t(width), std::uint32_t(height)};
    EXPECT_TRUE(context->updateSubresource(*draw->targetResource(), all, bytes.data(), all.width * 4));
    return draw;
}

void DrawTest::drawPlain(TavloDrawDX11& draw, const reference::Input& input,
                         const tagTavloPresentPictureFilterParam* process, bool clearFirst)
{
    draw.drawPicture(input.chroma, upload(input.texture), input.texture.size(), {}, process, clearFirst, input.flip,
                     input.mirror);
}

Picture testPicture(int width, int height, int seed)
{
    Picture picture(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const auto step = [=](int right, int down, int from) { return (x * right + y * down + from) % 256; };
            picture.at(x, y) = {step(7, 3, 40 * seed) / 255.0, step(2, 11, 90 + 70 * seed) / 255.0,
                                step(5, 6, 180 + 25 * seed) / 255.0, (50 + step(13, 29, 31 * seed) * 5 / 8) / 255.0};
        }
    }
    return picture;
}

testing::AssertionResult isSame(const Picture& drawn, const Picture& expected, double tolerance,
                                const std::optional<reference::Placement>& edges)
{
    if (drawn.width != expected.width || drawn.height != expected.height)
        return testing::AssertionFailure() << "another size: " << drawn.width << " x " << drawn.height;
    auto failure = testing::AssertionFailure();
    int count = 0, compared = 0;
    for (int y = 0; y < drawn.height; ++y) {
        for (int x = 0; x < drawn.width; ++x) {
            if (edges && edges->distanceToEdge({x + 0.5, y + 0.5}) < edgeWidth)
                continue;
            ++compared;
            const reference::Rgba &is = drawn.at(x, y), &should = expected.at(x, y);
            double worst = 0;
            for (std::size_t c = 0; c < 4; ++c)
                worst = std::max(worst, std::abs(is[c] - should[c]) * 255);
            if (worst < tolerance + 0.01)
                continue;
            if (++count <= 5) {
                failure << "\n" << x << ", " << y << ":";
                for (std::size_t c = 0; c < 4; ++c)
                    failure << " " << is[c] * 255 << "/" << should[c] * 255;
            }
        }
    }
    if (count > 0)
        return failure << "\n" << count << " of " << compared << " pixels differ (drawn/expected)";
    if (compared == 0)
        return failure << "nothing was compared";
    return testing::AssertionSuccess();
}

} // namespace tavlo::test
