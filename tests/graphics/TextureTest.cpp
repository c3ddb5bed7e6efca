#include "graphics/GraphicsTest.h"

#include "support/LogCapture.h"

#include <array>
#include <cstring>
#include <memory>

using namespace tavlo::graphics;
using namespace tavlo::test;

namespace {

/// All of it in every way that pictures take.
class TextureGL : public testing::WithParamInterface<Transfer>, public GraphicsTest
{
public:
    TextureGL() : GraphicsTest(GetParam()) {}

    std::vector<std::uint8_t> read(const TexturePtr& texture) { return readBack(*device, *context, texture); }
};

INSTANTIATE_TEST_SUITE_P(Ways, TextureGL, everyTransfer, transferName);

constexpr Format picturesFormats[] = {
    Format::R8G8B8A8_UNORM,    Format::B8G8R8A8_UNORM, Format::B8G8R8X8_UNORM,     Format::R8_UNORM,
    Format::R8G8_UNORM,        Format::NV12,           Format::R16G16B16A16_FLOAT, Format::R32_FLOAT,
    Format::R10G10B10A2_UNORM, Format::R16_UNORM,      Format::A8_UNORM,
};

// Halves and floats of random bytes may be no numbers, which a device need not keep bit by bit.
std::vector<std::uint8_t> contentFor(Format format, std::uint32_t width, std::uint32_t height, std::uint32_t seed)
{
    const std::uint32_t bytes = formatBytes(format);
    std::vector<std::uint8_t> content = pattern(width * bytes, formatRows(format, height), seed);
    if (format == Format::R16G16B16A16_FLOAT || format == Format::R32_FLOAT) {
        const std::size_t step = format == Format::R32_FLOAT ? 4 : 2;
        for (std::size_t top = step - 1; top < content.size(); top += step)
            content[top] &= 0x3b;
    }
    return content;
}

TEST_P(TextureGL, everyFormatComesBackAsItWasWritten)
{
    for (const Format format : picturesFormats) {
        if (!supports(device->formatSupport(format), FormatSupport::ReadBack))
            continue; // a device without 16 bit textures
        for (const auto& [width, height] : {std::pair{1U, 1U}, {37U, 23U}, {64U, 2U}, {101U, 3U}}) {
            SCOPED_TRACE(testing::Message() << formatName(format) << " " << width << " x " << height);
            const TexturePtr dynamic = makeTexture(format, width, height, Usage::Dynamic);
            const TexturePtr still = makeTexture(format, width, height);
            ASSERT_TRUE(dynamic && still);
            for (std::uint32_t turn = 0; turn < 3; ++turn) {
                const auto content = contentFor(format, width, height, turn);
                ASSERT_TRUE(write(*context, dynamic, content));
                EXPECT_EQ(read(dynamic), content);
                const std::uint32_t rows = formatRows(format, height);
                ASSERT_TRUE(context->updateSubresource(*still, {0, 0, width, rows}, content.data(),
                                                       width * formatBytes(format)));
                EXPECT_EQ(read(still), content);
            }
        }
    }
    EXPECT_EQ(device->lastMessage(), "");
}

TEST_P(TextureGL, mappedRowsAreAlignedAndHaveRoomBehind)
{
    for (const Format format : picturesFormats) {
        const TexturePtr texture = makeTexture(format, 37, 5, Usage::Dynamic);
        const auto mapped = context->map(*texture, MapMode::WriteDiscard);
        ASSERT_TRUE(mapped);
        EXPECT_EQ(mapped->rowPitch % 64, 0U);
        EXPECT_GE(mapped->rowPitch, 37 * formatBytes(format));
        std::memset(mapped->data, 0x5a, std::size_t{mapped->rowPitch} * formatRows(format, 5) + 64);
        context->unmap(texture);
    }
}

TEST_P(TextureGL, aNewTextureHoldsZeros)
{
    const TexturePtr texture = makeTexture(Format::R8G8_UNORM, 37, 23);
    EXPECT_EQ(read(texture), std::vector<std::uint8_t>(std::size_t{37} * 2 * 23, 0));
    const TexturePtr target = makeTarget(5, 3);
    const Quad quad(*device, "color = texture(picture, uv) + vec4(0.0, 0.0, 1.0, 0.0);");
    for (const TexturePtr& picture : {makeTexture(Format::R8G8B8A8_UNORM, 4, 4, Usage::Dynamic), TexturePtr{}}) {
        ASSERT_TRUE(quad.draw(*context, target, picture));
        const auto pixels = read(target);
        EXPECT_EQ(std::vector(pixels.begin(), pixels.begin() + 4), (std::vector<std::uint8_t>{0, 0, 255, 0}));
    }
}

TEST_P(TextureGL, boxesAndPitchesLandWhereTheyShould)
{
    const TexturePtr texture = makeTexture(Format::R8G8B8A8_UNORM, 7, 5);
    const auto content = pattern(3 * 4 + 2, 2, 9); // a pitch of 14 bytes is no whole number of texels
    ASSERT_TRUE(context->updateSubresource(*texture, {2, 1, 3, 2}, content.data(), 14));
    const auto whole = read(texture);
    const TexturePtr other = makeTexture(Format::R8G8B8A8_UNORM, 6, 6);
    ASSERT_TRUE(context->copySubresourceRegion(*other, 1, 3, texture, {2, 1, 3, 2}));
    const auto copied = read(other);
    for (std::size_t row = 0; row < 2; ++row) {
        EXPECT_EQ(std::memcmp(&whole[((1 + row) * 7 + 2) * 4], &content[row * 14], 12), 0);
        EXPECT_EQ(std::memcmp(&copied[((3 + row) * 6 + 1) * 4], &content[row * 14], 12), 0);
    }
    const auto untouched = [](const std::vector<std::uint8_t>& bytes) {
        return std::ranges::count(bytes, std::uint8_t{0});
    };
    EXPECT_EQ(untouched(whole), static_cast<long>(whole.size() - 24) + untouched({content.begin(), content.end()}) -
                                    std::ranges::count(std::span(content).subspan(12, 2), std::uint8_t{0}) -
                                    std::ranges::count(std::span(content).subspan(26, 2), std::uint8_t{0}));
}

TEST_P(TextureGL, whatDoesNotFitIsRefusedAndChangesNothing)
{
    const TexturePtr still = makeTexture(Format::R8_UNORM, 8, 8);
    const TexturePtr dynamic = makeTexture(Format::R8_UNORM, 8, 8, Usage::Dynamic);
    const TexturePtr staging = makeTexture(Format::R8_UNORM, 8, 8, Usage::Staging);
    const TexturePtr wider = makeTexture(Format::R8G8_UNORM, 8, 8);
    const auto content = pattern(8, 8, 1);
    const LogCapture log;
    EXPECT_FALSE(context->map(*still, MapMode::WriteDiscard));
    EXPECT_FALSE(context->map(*staging, MapMode::WriteDiscard));
    EXPECT_FALSE(context->map(*dynamic, MapMode::WriteNoOverwrite));
    EXPECT_FALSE(context->map(*dynamic, MapMode::Read));
    EXPECT_FALSE(context->map(*staging, MapMode::Read)); // nothing was copied yet
    context->unmap(dynamic);                             // not mapped
    EXPECT_FALSE(context->updateSubresource(*dynamic, {0, 0, 8, 8}, content.data(), 8));
    EXPECT_FALSE(context->updateSubresource(*still, {1, 0, 8, 8}, content.data(), 8));
    EXPECT_FALSE(context->updateSubresource(*still, {0, 0, 8, 8}, content.data(), 7));
    EXPECT_FALSE(context->updateSubresource(*still, {0xffffffff, 0, 2, 1}, content.data(), 8));
    EXPECT_FALSE(context->copySubresourceRegion(*still, 0, 0, still, {0, 0, 4, 4}));
    EXPECT_FALSE(context->copySubresourceRegion(*wider, 0, 0, still, {0, 0, 4, 4}));
    EXPECT_FALSE(context->copySubresourceRegion(*staging, 5, 0, still, {0, 0, 4, 4}));
    EXPECT_FALSE(context->copySubresourceRegion(*dynamic, 0, 0, still, {0, 0, 4, 4}));
    EXPECT_FALSE(context->copyResource(*staging, nullptr));
    EXPECT_GE(log.lines().size(), 13);
    EXPECT_EQ(read(still), std::vector<std::uint8_t>(64, 0));

    const auto mapped = context->map(*dynamic, MapMode::WriteDiscard);
    ASSERT_TRUE(mapped);
    EXPECT_FALSE(context->map(*dynamic, MapMode::WriteDiscard));
    context->unmap(dynamic);
}

TEST_P(TextureGL, aStagingTextureTakesNoCopyWhileItIsRead)
{
    const TexturePtr still = makeTexture(Format::R8_UNORM, 13, 7);
    const TexturePtr staging = makeTexture(Format::R8_UNORM, 13, 7, Usage::Staging);
    ASSERT_TRUE(context->copyResource(*staging, still));
    const auto mapped = context->map(*staging, MapMode::Read);
    ASSERT_TRUE(mapped);
    EXPECT_FALSE(staging->mapRead());
    EXPECT_FALSE(context->copyResource(*staging, still));
    context->unmap(staging);
    EXPECT_TRUE(context->copyResource(*staging, still));
    EXPECT_TRUE(staging->mapRead());
    staging->unmapRead();
}

TEST_P(TextureGL, dynamicTexturesCanBeRewrittenManyTimesBetweenFlushes)
{
    const TexturePtr texture = makeTexture(Format::R8_UNORM, 37, 11, Usage::Dynamic);
    const TexturePtr target = makeTexture(Format::R8_UNORM, 37, 11, Usage::Default, true);
    const Quad quad(*device, "color = texelFetch(picture, ivec2(gl_FragCoord.xy), 0);");
    for (std::uint32_t turn = 0; turn < 50; ++turn) {
        const auto content = pattern(37, 11, turn);
        ASSERT_TRUE(write(*context, texture, content));
        ASSERT_TRUE(quad.draw(*context, target, texture));
        if (turn % 7 == 0) {
            EXPECT_EQ(read(target), content);
        }
    }
}

TEST_P(TextureGL, aWrittenPictureIsCopiedDrawnAndCopiedAgain)
{
    const TexturePtr texture = makeTexture(Format::R8_UNORM, 37, 11, Usage::Dynamic);
    const TexturePtr copied = makeTexture(Format::R8_UNORM, 37, 11, Usage::Default, true);
    const TexturePtr larger = makeTexture(Format::R8_UNORM, 40, 15);
    const TexturePtr drawn = makeTexture(Format::R8_UNORM, 37, 11, Usage::Default, true);
    const Quad quad(*device, "color = texelFetch(picture, ivec2(gl_FragCoord.xy), 0);");
    for (std::uint32_t turn = 0; turn < 3; ++turn) {
        const auto content = pattern(37, 11, turn);
        ASSERT_TRUE(write(*context, texture, content));
        for (int time = 0; time < 2; ++time) {
            ASSERT_TRUE(context->copyResource(*copied, texture));
            ASSERT_TRUE(context->copySubresourceRegion(*larger, 2, 3, texture, {0, 0, 37, 11}));
            ASSERT_TRUE(context->copySubresourceRegion(*copied, 0, 10, texture, {5, 2, 20, 1}));
            ASSERT_TRUE(quad.draw(*context, drawn, texture));
            auto mixed = content;
            std::copy_n(content.begin() + 2 * 37 + 5, 20, mixed.begin() + 10 * 37);
            EXPECT_EQ(read(copied), mixed);
            EXPECT_EQ(read(drawn), content);
            const auto around = read(larger);
            for (std::size_t row = 0; row < 11; ++row)
                EXPECT_TRUE(std::equal(content.begin() + static_cast<long>(row * 37), content.begin() + row * 37 + 37,
                                       around.begin() + (row + 3) * 40 + 2));
        }
    }
}

} // namespace
