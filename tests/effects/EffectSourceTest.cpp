#include "effects/EffectSource.h"

#include "effects/DriverMessages.h"
#include "effects/EffectFiles.h"

#include <gmock/gmock.h>

#include <bit>

using namespace tavlo::effects;
using namespace tavlo::graphics;
using tavlo::test::mixEffect;
using tavlo::test::replaced;

namespace {

void expectFault(const std::string& text, const std::string& fault)
{
    std::string error;
    EXPECT_FALSE(parseEffect(text, "mix.fx", error)) << fault;
    EXPECT_THAT(error, testing::HasSubstr(fault));
}

TEST(EffectSource, readsVariablesPassesAndShaders)
{
    std::string error;
    const auto source = parseEffect(mixEffect, "mix.fx", error);
    ASSERT_TRUE(source) << error;
    const EffectDescription& effect = source->description;
    ASSERT_EQ(effect.variables.size(), 7U);
    EXPECT_EQ(effect.variables[0],
              (VariableDescription{"amount", UniformType::Float, 1, false, {}, {std::bit_cast<std::uint32_t>(0.25F)}}));
    EXPECT_EQ(effect.variables[2], (VariableDescription{"channel", UniformType::Int, 1, false, {}, {}}));
    EXPECT_EQ(effect.variables[4], (VariableDescription{"weights", UniformType::Float, 3, true, {}, {}}));
    EXPECT_EQ(effect.variables[5].sampler, Sampler::NearestClamp);
    EXPECT_EQ(effect.variables[6].sampler, Sampler::LinearClamp);

    ASSERT_EQ(effect.techniques.size(), 1U);
    EXPECT_EQ(effect.techniques[0].name, "Transprocess");
    const BlendState& blend = effect.techniques[0].passes.at(0).blend;
    EXPECT_EQ(blend.color, (BlendEquation{BlendFactor::SrcAlpha, BlendFactor::InvSrcAlpha, BlendOp::Add}));
    EXPECT_EQ(blend.alpha, (BlendEquation{BlendFactor::SrcAlpha, BlendFactor::DstAlpha, BlendOp::Add}));
    EXPECT_TRUE(blend.enabled);
    EXPECT_EQ(blend.writeMask, 0xf);

    const std::string glsl = source->shaderText(source->fragmentShaders.at(0));
    EXPECT_THAT(glsl, testing::StartsWith("#version 300 es\n"));
    EXPECT_THAT(glsl, testing::HasSubstr("#line 8\nuniform float weights[3];\n"));
    EXPECT_THAT(glsl, testing::HasSubstr("#line 16\nvec4 mixOf("));
    EXPECT_THAT(glsl, testing::HasSubstr("#line 23\nin vec2 uv;"));
}

TEST(EffectSource, readsEveryWordOfAPass)
{
    std::string error;
    const auto source =
        parseEffect("effect 1\r\n[vertex v]\r\n[fragment f]\r\n[fragment g]\r\n[technique Two]\r\n"
                    "pass v f // one\r\nwrite ga\r\ndepth test write\r\npass v g\r\nwrite none\r\n"
                    "\tblend  color dst_color inv_dst_alpha rev_subtract\r\n[technique Other]\r\npass v f",
                    "words.fx", error);
    ASSERT_TRUE(source) << error;
    const auto& passes = source->description.techniques.at(0).passes;
    EXPECT_EQ(passes.at(0).blend.writeMask, 0xa);
    EXPECT_FALSE(passes.at(0).blend.enabled);
    EXPECT_EQ(passes.at(0).depth, (DepthState{true, true}));
    EXPECT_EQ(passes.at(1).blend.writeMask, 0);
    EXPECT_EQ(passes.at(1).blend.color,
              (BlendEquation{BlendFactor::DstColor, BlendFactor::InvDstAlpha, BlendOp::RevSubtract}));
    EXPECT_EQ(passes.at(1).blend.alpha, BlendEquation{});
    // A pair of shaders that stands in two passes is one program.
    EXPECT_EQ(source->description.programs.size(), 2U);
    EXPECT_EQ(source->description.techniques.at(1).passes.at(0).program, passes.at(0).program);
}

TEST(EffectSource, namesFileAndLineOfAFault)
{
    const struct
    {
        std::string what, with, error;
    } faults[] = {
        {"effect 1", "effect 2", "mix.fx:2: no known version"},
        {"effect 1", "", "mix.fx:3: the file has to begin with 'effect 1'"},
        {"float   amount = 0.25", "flaot amount", "mix.fx:4: no type for a variable: 'flaot'"},
        {"amount = 0.25", "amount = 0.25 1", "mix.fx:4: after the name"},
        {"amount = 0.25", "amount = nan", "mix.fx:4: no number: 'nan'"},
        {"amount = 0.25", "amount = 0,25", "mix.fx:4: no number: '0,25'"},
        {"amount = 0.25", "gl_amount", "mix.fx:4: no name for a variable"},
        {"tint = 1 1 1 1", "tint = 1 1 1", "mix.fx:5: after the name"},
        {"int     channel", "int channel = 99999999999", "mix.fx:6: no whole number"},
        {"vec2    unread", "vec2 channel", "mix.fx:7: a variable of that name"},
        {"weights[3]", "weights[0]", "mix.fx:8: an array has"},
        {"weights[3]", "weights[3", "mix.fx:8: an array has"},
        {"first nearest", "first nearest wrap", "mix.fx:9: no texture is filtered nearest and wraps"},
        {"texture second", "texture second[2]", "textures come one by one"},
        {"[technique Transprocess]", "[technique]", "mix.fx:11: no name for a section"},
        {"[technique Transprocess]", "[technique Transprocess", "mix.fx:11: a section is"},
        {"[technique Transprocess]", "[", "mix.fx:11: a section is"},
        {"[technique Transprocess]", "[techniques Transprocess]", "mix.fx:11: "},
        {"pass quad mixed", "write rgb", "mix.fx:12: a technique begins with a pass"},
        {"pass quad mixed", "pass quad mixt", "mix.fx:12: no fragment section 'mixt'"},
        {"pass quad mixed", "pass quat mixed", "mix.fx:12: no vertex section 'quat'"},
        {"blend alpha src_alpha dst_alpha", "blend alpha src_alpha", "mix.fx:14: a blend is"},
        {"blend alpha", "blend color", "mix.fx:14: stands twice"},
        {"blend alpha", "write rgbq //", "mix.fx:14: no channels: 'rgbq'"},
        {"blend alpha", "depth deep //", "mix.fx:14: no depth mode: 'deep'"},
        {"blend alpha", "variant //", "mix.fx:14: a variant is"},
        {"blend alpha", "variant channel //", "mix.fx:14: no int variable"},
        {"blend alpha", "variant channel=x //", "mix.fx:14: no int variable"},
        {"blend alpha", "variant amount=1 //", "mix.fx:14: no int variable"},
        {"blend alpha", "variant nothing=1 //", "mix.fx:14: no int variable"},
        {"[fragment mixed]", "[vertex quad]", "mix.fx:22: a shader of that name"},
        {"[common]", "[variables]", "mix.fx:15: stands twice"},
    };
    for (const auto& fault : faults)
        expectFault(replaced(mixEffect, fault.what, fault.with), fault.error);
    expectFault("", "mix.fx:1: no 'effect' line");
    expectFault("effect 1\n[vertex v]\n", "no technique");
    expectFault("effect 1\n[technique T]\n", "a technique without a pass");
}

TEST(EffectSource, limitsHold)
{
    std::string many = "effect 1\n[variables]\n";
    for (int i = 0; i < 17; ++i)
        many += "texture t" + std::to_string(i) + "\n";
    expectFault(many, "more than 16 textures");
    for (int i = 0; i < 300; ++i)
        many += "int i" + std::to_string(i) + "\n";
    expectFault(many, "mix.fx:259: more than 256 variables");
    expectFault("effect 1\n[technique " + std::string(65, 'n') + "]\n", "mix.fx:2: ");
}

TEST(DriverMessages, nameTheFilesLineInEveryForm)
{
    EXPECT_EQ(nameLines("0:12(5): error: `x' undeclared\n", "a.fx"), "a.fx:12: error: `x' undeclared");
    EXPECT_EQ(nameLines("0(34) : error C1008: undefined variable \"x\"\n", "a.fx"),
              "a.fx:34: error C1008: undefined variable \"x\"");
    EXPECT_EQ(nameLines("ERROR: 0:7: 'x' : undeclared identifier\nWARNING: 0:9: odd", "a.fx"),
              "a.fx:7: error: 'x' : undeclared identifier\na.fx:9: warning: odd");
    EXPECT_EQ(nameLines("\n\nlinking failed 3\n", "a.fx"), "a.fx: linking failed 3");
    EXPECT_EQ(nameLines(std::string("12\0", 3), "a.fx"), "a.fx: 12");
    EXPECT_EQ(nameLines("", "a.fx"), "");
}

} // namespace
