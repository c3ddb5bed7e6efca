#include "graphics/GraphicsTest.h"

#include "support/LogCapture.h"

#include <array>
#include <cmath>
#include <cstring>

using namespace tavlo::graphics;
using namespace tavlo::test;

namespace {

class DrawGL : public GraphicsTest
{
public:
    std::array<int, 4> pixel(const TexturePtr& target, std::uint32_t x, std::uint32_t y)
    {
        const auto bytes = readBack(*device, *context, target);
        const std::size_t at = (std::size_t{y} * target->desc().width + x) * 4;
        return {bytes.at(at), bytes.at(at + 1), bytes.at(at + 2), bytes.at(at + 3)};
    }
};

using Pixel = std::array<int, 4>;

TEST_F(DrawGL, aDecodedPictureStandsUprightInATarget)
{
    // Top row first goes in; drawn with v downwards it comes out bottom row first, without a flip.
    const TexturePtr picture = makeTexture(Format::R8G8B8A8_UNORM, 5, 3, Usage::Dynamic);
    const auto content = pattern(20, 3, 4);
    ASSERT_TRUE(write(*context, picture, content));
    const TexturePtr target = makeTarget(5, 3);
    const Quad quad(*device, "color = texture(picture, uv);");
    ASSERT_TRUE(quad.draw(*context, target, picture));
    const auto out = readBack(*device, *context, target);
    for (std::size_t row = 0; row < 3; ++row)
        EXPECT_EQ(std::memcmp(&out[row * 20], &content[(2 - row) * 20], 20), 0) << row;
}

TEST_F(DrawGL, formatsShowTheirChannelsInTheRightPlaces)
{
    const TexturePtr target = makeTarget(1, 1);
    const Quad quad(*device, "color = texture(picture, uv);");
    const struct
    {
        Format format;
        std::vector<std::uint8_t> texel;
        Pixel seen;
    } cases[] = {
        {Format::R8G8B8A8_UNORM, {10, 20, 30, 40}, {10, 20, 30, 40}},
        {Format::B8G8R8A8_UNORM, {10, 20, 30, 40}, {30, 20, 10, 40}},
        {Format::B8G8R8X8_UNORM, {10, 20, 30, 40}, {30, 20, 10, 255}},
        {Format::R8_UNORM, {10}, {10, 0, 0, 255}},
        {Format::A8_UNORM, {10}, {0, 0, 0, 10}},
        {Format::R8G8_UNORM, {10, 20}, {10, 20, 0, 255}},
        {Format::NV12, {10}, {10, 0, 0, 255}},
    };
    for (const auto& one : cases) {
        const TexturePtr picture = makeTexture(one.format, 1, 1, Usage::Dynamic);
        ASSERT_TRUE(write(*context, picture, one.texel));
        ASSERT_TRUE(quad.draw(*context, target, picture));
        EXPECT_EQ(pixel(target, 0, 0), one.seen) << formatName(one.format);
    }
}

TEST_F(DrawGL, blendFactorsOfColorAndAlphaAreIndependent)
{
    const TexturePtr target = makeTarget(3, 3);
    const Quad quad(*device, "color = vec4(0.8, 0.4, 0.2, 0.6);");
    ASSERT_TRUE(context->clearRenderTarget(target, {0.1F, 0.5F, 0.9F, 0.3F}));
    BlendState blend;
    blend.enabled = true;
    blend.color = {BlendFactor::SrcAlpha, BlendFactor::InvSrcAlpha, BlendOp::Add};
    blend.alpha = {BlendFactor::SrcAlpha, BlendFactor::DstAlpha, BlendOp::Add};
    blend.writeMask = 0xb; // blue stays
    context->setBlendState(blend);
    ASSERT_TRUE(quad.draw(*context, target, nullptr));
    const Pixel seen = pixel(target, 1, 2);
    EXPECT_NEAR(seen[0], 255 * (0.8 * 0.6 + 0.1 * 0.4), 1.5);
    EXPECT_NEAR(seen[1], 255 * (0.4 * 0.6 + 0.5 * 0.4), 1.5);
    EXPECT_NEAR(seen[2], 255 * 0.9, 1.5);
    EXPECT_NEAR(seen[3], 255 * (0.6 * 0.6 + 0.3 * 0.3), 1.5);

    // A clear minds neither mask nor scissor, and clearState brings back plain drawing.
    context->setScissor(Viewport{0, 0, 1, 1});
    ASSERT_TRUE(context->clearRenderTarget(target, {0, 0, 0, 0}));
    EXPECT_EQ(pixel(target, 2, 2), (Pixel{0, 0, 0, 0}));
    ASSERT_TRUE(quad.draw(*context, target, nullptr));
    EXPECT_EQ(pixel(target, 2, 2), (Pixel{0, 0, 0, 0}));
    context->clearState();
    EXPECT_FALSE(context->renderTarget());
    ASSERT_TRUE(quad.draw(*context, target, nullptr));
    EXPECT_EQ(pixel(target, 2, 2), (Pixel{204, 102, 51, 153}));
}

TEST_F(DrawGL, depthIsTestedOnlyWhenAsked)
{
    const TexturePtr target = makeTarget(5, 5);
    const TexturePtr depth = makeTexture(Format::D24_UNORM_S8_UINT, 5, 5, Usage::Default, true);
    const Quad quad(*device, "color = vec4(1.0);"); // in the middle of the depth range
    for (const auto& [cleared, test, drawnPixel] : {std::tuple{1.0F, true, 255}, {0.2F, true, 0}, {0.2F, false, 255}}) {
        ASSERT_TRUE(context->clearRenderTarget(target, {0, 0, 0, 0}));
        ASSERT_TRUE(context->clearDepth(depth, cleared, 0));
        context->setDepthState({test, test});
        ASSERT_TRUE(quad.draw(*context, target, nullptr, Sampler::NearestClamp, depth));
        EXPECT_EQ(pixel(target, 4, 4)[1], drawnPixel) << cleared << test;
    }
    EXPECT_FALSE(context->clearDepth(target, 1, 0));
    EXPECT_FALSE(context->clearRenderTarget(depth, {}));
}

TEST_F(DrawGL, samplersDifferInFilterAndEdge)
{
    const TexturePtr picture = makeTexture(Format::R8G8B8A8_UNORM, 2, 1, Usage::Dynamic);
    ASSERT_TRUE(write(*context, picture, std::array<std::uint8_t, 8>{0, 0, 0, 255, 200, 100, 60, 255}));
    const TexturePtr target = makeTarget(1, 1);
    const auto seen = [&](const char* u, Sampler sampler) {
        const Quad quad(*device, std::string("color = texture(picture, vec2(") + u + ", 0.5));");
        EXPECT_TRUE(quad.draw(*context, target, picture, sampler));
        return pixel(target, 0, 0)[0];
    };
    EXPECT_NEAR(seen("0.5", Sampler::LinearClamp), 100, 2);
    EXPECT_EQ(seen("0.6", Sampler::NearestClamp), 200);
    EXPECT_EQ(seen("1.2", Sampler::LinearClamp), 200);
    EXPECT_NEAR(seen("1.25", Sampler::LinearWrap), 0, 2);
}

TEST_F(DrawGL, dynamicBuffersTakeTheirWriteBeforeTheNextDraw)
{
    std::string messages;
    const ProgramPtr program = device->createProgram(
        "#version 300 es\nin vec2 TEXCOORD;\nin vec3 POSITION;\nvoid main() { gl_PointSize = 1.0; "
        "gl_Position = vec4(POSITION.xy + TEXCOORD, 0.0, 1.0); }\n",
        "#version 300 es\nprecision highp float;\nuniform vec4 tint[2];\nout vec4 color;\n"
        "void main() { color = tint[1]; }\n",
        messages);
    ASSERT_TRUE(program) << messages;
    ASSERT_EQ(program->uniforms().size(), 1U);
    const Uniform& tint = program->uniforms().front();
    EXPECT_EQ(tint.name, "tint");
    EXPECT_EQ(tint.count, 2U);
    const std::array<float, 8> tints{0, 0, 0, 0, 1, 0.2F, 0.4F, 0.6F};
    EXPECT_FALSE(context->setUniform(*program, tint, std::as_bytes(std::span(tints)).first(16)));
    ASSERT_TRUE(context->setUniform(*program, tint, std::as_bytes(std::span(tints))));

    const TexturePtr target = makeTarget(4, 4);
    const BufferPtr points = device->createBuffer({40, BufferKind::Vertex, true});
    const auto layout = std::make_shared<InputLayout>(
        InputLayout{{Semantic::Position, Format::R32G32B32_FLOAT, 0}, {Semantic::TexCoord, Format::R32G32_FLOAT, 12}});
    context->setRenderTarget(target);
    context->setViewport({0, 0, 4, 4});
    context->setProgram(program);
    context->setInputLayout(layout);
    context->setTopology(Topology::PointList);
    const auto drawAt = [&](MapMode mode, std::uint32_t offset, float x, float y) {
        std::byte* memory = context->map(*points, mode);
        ASSERT_TRUE(memory);
        const std::array<float, 5> vertex{x, y, 0, 0.25F, 0.25F};
        std::memcpy(memory + offset, vertex.data(), sizeof vertex);
        context->unmap(*points);
        context->setVertexBuffer(points, 20, offset);
        ASSERT_TRUE(context->draw(1, 0));
    };
    drawAt(MapMode::WriteDiscard, 0, -1, -1);
    drawAt(MapMode::WriteNoOverwrite, 20, 0.5F, 0);
    const Pixel tinted{255, 51, 102, 153};
    EXPECT_EQ(pixel(target, 0, 0), tinted);
    EXPECT_EQ(pixel(target, 3, 2), tinted);
    EXPECT_EQ(pixel(target, 1, 1), (Pixel{0, 0, 0, 0}));
}

TEST_F(DrawGL, incompleteDrawsAreRefused)
{
    const LogCapture log;
    EXPECT_FALSE(context->draw(3, 0));
    EXPECT_FALSE(context->drawIndexed(3, 0));
    const Quad quad(*device, "color = vec4(1.0);");
    EXPECT_FALSE(quad.draw(*context, makeTexture(Format::R8_UNORM, 4, 4), nullptr)); // not made as a target
    ASSERT_TRUE(quad.draw(*context, makeTarget(4, 4), nullptr));
    EXPECT_FALSE(context->drawIndexed(6, 1)); // beyond the index buffer
    EXPECT_EQ(log.lines().size(), 4);
}

TEST_F(DrawGL, wrongShadersComeBackWithTheirMessages)
{
    const Quad quad(*device, "color = nothing;");
    EXPECT_FALSE(quad.program);
    EXPECT_NE(quad.messages.find("nothing"), std::string::npos) << quad.messages;
    std::array<std::byte, 100> rubbish{};
    EXPECT_FALSE(device->createProgramFromBinary(rubbish));
    EXPECT_FALSE(device->createProgramFromBinary({}));
}

TEST_F(DrawGL, aProgramBinaryDrawsLikeItsSource)
{
    Quad quad(*device, "color = texture(picture, uv).bgra;");
    const std::vector<std::byte> binary = quad.program->binary();
    if (binary.empty())
        GTEST_SKIP() << "the driver gives no program binaries";
    quad.program = device->createProgramFromBinary(binary);
    ASSERT_TRUE(quad.program);
    const TexturePtr picture = makeTexture(Format::R8G8B8A8_UNORM, 1, 1, Usage::Dynamic);
    ASSERT_TRUE(write(*context, picture, std::array<std::uint8_t, 4>{10, 20, 30, 40}));
    const TexturePtr target = makeTarget(1, 1);
    ASSERT_TRUE(quad.draw(*context, target, picture));
    EXPECT_EQ(pixel(target, 0, 0), (Pixel{30, 20, 10, 40}));
}

TEST_F(DrawGL, aTargetThatGoesTakesItsFramebufferAlong)
{
    // Names of deleted textures come back: a framebuffer of the old one must not be taken for the new one's.
    const Quad quad(*device, "color = vec4(1.0, 0.0, 0.0, 1.0);");
    for (std::uint32_t turn = 1; turn < 40; ++turn) {
        const TexturePtr target = makeTarget(turn, 3);
        ASSERT_TRUE(quad.draw(*context, target, nullptr));
        EXPECT_EQ(pixel(target, turn - 1, 2), (Pixel{255, 0, 0, 255}));
        context->clearState();
        context->flush();
    }
}

} // namespace
