#include "effects/EffectCompiler.h"

#include "effects/EffectFiles.h"
#include "graphics/GraphicsTest.h"

#include <gmock/gmock.h>

#include <array>
#include <limits>

using namespace tavlo::effects;
using namespace tavlo::graphics;
using namespace tavlo::test;

namespace {

using Pixel = std::array<double, 4>;

class EffectGL : public GraphicsTest
{
public:
    void SetUp() override
    {
        GraphicsTest::SetUp();
        first = picture({40, 80, 120, 255});
        second = picture({200, 20, 60, 255});
        target = makeTarget(3, 3);
    }

    TexturePtr picture(const std::array<std::uint8_t, 4>& texel)
    {
        const TexturePtr texture = makeTexture(Format::R8G8B8A8_UNORM, 1, 1, Usage::Dynamic);
        EXPECT_TRUE(write(*context, texture, texel));
        return texture;
    }

    EffectPtr compile(const std::string& source)
    {
        effect.reset();
        result = D3DX11CompileEffectFromMemory(*device, {source, "mix.fx", {}}, effect, errors);
        return effect;
    }

    auto scalar(const char* name) const { return effect->GetVariableByName(name).AsScalar(); }
    auto vector(const char* name) const { return effect->GetVariableByName(name).AsVector(); }
    auto image(const char* name) const { return effect->GetVariableByName(name).AsShaderResource(); }

    // What a target of that colour holds after the effect was drawn over it.
    Pixel drawn(const Rgba& before = {0, 0, 0, 0}, std::uint32_t pass = 0)
    {
        EXPECT_TRUE(context->clearRenderTarget(target, before));
        const Quad quad(*device, "color = vec4(0.0);"); // for its vertices
        quad.draw(*context, makeTarget(1, 1), nullptr);
        context->setRenderTarget(target);
        context->setViewport({0, 0, 3, 3});
        EXPECT_EQ(effect->GetTechniqueByName("Transprocess").GetPassByIndex(pass).Apply(*context), resultOk);
        EXPECT_TRUE(context->drawIndexed(6, 0));
        context->clearState();
        const auto bytes = readBack(*device, *context, target);
        return {double(bytes.at(16)), double(bytes.at(17)), double(bytes.at(18)), double(bytes.at(19))};
    }

    static auto near(const Pixel& pixel) { return testing::Pointwise(testing::DoubleNear(1.01), pixel); }

    TexturePtr first, second, target;
    EffectPtr effect; // compiled last
    std::string errors;
    Result result = resultOk;
};

TEST_F(EffectGL, drawsWithItsVariablesAndBlendsAsItsPassSays)
{
    ASSERT_TRUE(compile(mixEffect)) << errors;
    EXPECT_EQ(image("first").SetResource(first), resultOk);
    EXPECT_EQ(image("second").SetResource(second), resultOk);
    EXPECT_EQ(scalar("channel").SetInt(-1), resultOk);
    EXPECT_THAT(drawn(), near({80, 65, 105, 255})); // amount begins at 0.25

    EXPECT_EQ(scalar("amount").SetFloat(0.5F), resultOk);
    const std::array<float, 5> tint{1, 0.5F, 1, 0.6F, 99};
    EXPECT_EQ(vector("tint").SetFloatVector(tint), resultOk);
    const double a = 0.6, under = 0.3;
    EXPECT_THAT(drawn({0.1F, 0.2F, 0.4F, 0.3F}), near({120 * a + 25.5 * (1 - a), 25 * a + 51 * (1 - a),
                                                       90 * a + 102 * (1 - a), 255 * (a * a + under * under)}));

    // A change between two draws is one that the second sees, and only it.
    EXPECT_EQ(scalar("channel").SetFloat(2.9F), resultOk);
    EXPECT_EQ(vector("tint").SetFloatVector(std::array<float, 4>{1, 1, 1, 1}), resultOk);
    EXPECT_THAT(drawn(), near({90, 90, 90, 255}));
    EXPECT_EQ(scalar("amount").SetInt(1), resultOk);
    EXPECT_EQ(scalar("channel").SetInt(-1), resultOk);
    EXPECT_EQ(scalar("weights").SetFloatArray(std::array<float, 2>{1, 0.1F}), resultOk);
    EXPECT_THAT(drawn(), near({225.5, 20, 60, 255}));
    EXPECT_EQ(image("second").SetResource(nullptr), resultOk);
    EXPECT_THAT(drawn({0.2F, 0, 0, 0}), near({51, 0, 0, 0})); // zeros, alpha too
}

TEST_F(EffectGL, aVariantDrawsWhatTheGeneralProgramDraws)
{
    const std::string line = "pass quad mixed\n";
    const EffectPtr plain = compile(mixEffect);
    const EffectPtr varied =
        compile(replaced(mixEffect, line, line + "    variant channel=1\n    variant channel=2\n"));
    ASSERT_TRUE(plain && varied) << errors;
    for (const int channel : {-1, 0, 1, 2, 1}) {
        const auto drawnBy = [&](const EffectPtr& one) {
            effect = one;
            image("first").SetResource(first);
            image("second").SetResource(second);
            scalar("amount").SetFloat(0.125F * static_cast<float>(channel + 2));
            scalar("channel").SetInt(channel);
            return drawn();
        };
        EXPECT_THAT(drawnBy(varied), near(drawnBy(plain))) << channel;
    }
    // A shader that would not compile with the value of a variant shows that the variant is really another program.
    const std::string broken = replaced(mixEffect, "color[channel]", "vec2(1.0)[channel]");
    EXPECT_TRUE(compile(broken)) << errors;
    EXPECT_FALSE(compile(replaced(broken, line, line + "    variant channel=7\n")));
}

TEST_F(EffectGL, whatDoesNotFitIsInvalidAndFails)
{
    ASSERT_TRUE(compile(mixEffect)) << errors;
    EXPECT_FALSE(effect->GetVariableByName("Amount").IsValid());
    EXPECT_EQ(scalar("Amount").SetFloat(1), resultFail);
    EXPECT_EQ(image("Amount").SetResource(first), resultFail);
    EXPECT_EQ(vector("unread").SetFloatVector(std::array<float, 2>{}), resultOk); // declared, read by no shader

    EXPECT_EQ(vector("amount").SetFloatVector(std::array<float, 4>{}), resultFail); // of another kind
    EXPECT_EQ(image("amount").SetSampler(Sampler::NearestClamp), resultFail);
    EXPECT_EQ(scalar("first").SetInt(1), resultFail);
    EXPECT_EQ(vector("tint").SetFloatVector(std::array<float, 3>{}), resultInvalidArgument);
    EXPECT_EQ(scalar("weights").SetFloatArray(std::array<float, 4>{}), resultInvalidArgument);
    EXPECT_EQ(scalar("channel").SetFloat(std::numeric_limits<float>::quiet_NaN()), resultOk);
    EXPECT_EQ(scalar("channel").SetFloat(-1e30F), resultOk);

    EXPECT_FALSE(effect->GetTechniqueByName("transprocess").IsValid());
    EXPECT_EQ(effect->GetTechniqueByName("Transprocess").PassCount(), 1U);
    EXPECT_FALSE(effect->GetTechniqueByName("Transprocess").GetPassByIndex(1).IsValid());
    EXPECT_EQ(effect->GetTechniqueByName("none").GetPassByIndex(0).Apply(*context), resultFail);

    const EffectPass pass = effect->GetTechniqueByName("Transprocess").GetPassByIndex(0);
    const InputElement position{Semantic::Position, Format::R32G32B32_FLOAT, 0};
    const InputElement texture{Semantic::TexCoord, Format::R32G32_FLOAT, 12};
    EXPECT_TRUE(pass.Accepts({position, texture}));
    EXPECT_FALSE(pass.Accepts({position})); // the shader reads more
    EXPECT_FALSE(EffectPass().Accepts({position, texture}));
}

TEST_F(EffectGL, passesDifferInShadersAndTwoEffectsInValues)
{
    const std::string two = replaced(mixEffect, "[common]", "pass quad plain\n    write g\n[common]") +
                            "[fragment plain]\nout vec4 color;\nvoid main() { color = vec4(amount); }\n";
    const EffectPtr a = compile(two), b = compile(two);
    ASSERT_TRUE(a && b) << errors;
    a->GetVariableByName("amount").AsScalar().SetFloat(0.8F);
    for (const auto& [one, green] : {std::pair(a, 204.0), {b, 63.75}, {a, 204.0}}) {
        effect = one;
        EXPECT_THAT(drawn({1, 0, 0, 0.2F}, 1), near({255, green, 0, 51}));
    }
}

TEST_F(EffectGL, nearestAndLinearDifferAndCanBeExchanged)
{
    ASSERT_TRUE(compile(replaced(mixEffect, "amount = 0.25", "amount = 0"))) << errors;
    scalar("channel").SetInt(-1);
    // Three columns of a target over two texels: the middle one samples between them.
    const TexturePtr halves = makeTexture(Format::R8G8B8A8_UNORM, 2, 1, Usage::Dynamic);
    ASSERT_TRUE(write(*context, halves, std::array<std::uint8_t, 8>{0, 0, 0, 255, 200, 200, 200, 255}));
    image("first").SetResource(halves);
    EXPECT_THAT(drawn()[1], testing::AnyOf(0.0, 200.0));
    image("first").SetSampler(Sampler::LinearClamp);
    EXPECT_NEAR(drawn()[1], 100, 2);
}

TEST_F(EffectGL, faultsInShadersNameTheFilesLine)
{
    const struct
    {
        std::string what, with, error;
    } faults[] = {
        {"mixOf(texture", "mixedOf(texture", "mix.fx:26: "},
        {"* tint", "* taint", "mix.fx:16: "},
        {"gl_Position = vec4", "gl_Position = vec5", "mix.fx:21: "},
        {"unread", "sample", "mix.fx:7: "}, // a word of GLSL's own
        {"in vec2 uv;\nout vec4", "in vec3 uv;\nout vec4", "mix.fx:"},
        {"float   amount", "flaot amount", "mix.fx:4: "},
    };
    for (const auto& fault : faults) {
        EXPECT_FALSE(compile(replaced(mixEffect, fault.what, fault.with)));
        EXPECT_EQ(result, resultFail);
        EXPECT_THAT(errors, testing::StartsWith(fault.error));
    }
}

} // namespace
