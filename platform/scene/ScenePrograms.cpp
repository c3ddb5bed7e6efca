#include "scene/ScenePrograms.h"

#include "graphics/Log.h"
#include "scene/ProgramCache.h"

#include <algorithm>

namespace tavlo::scene {

namespace {

constexpr std::string_view vertexSource = R"(#version 300 es
in vec2 POSITION;
in vec2 TEXCOORD;
in vec4 COLOR;
uniform vec4 toClip;
out vec2 uv;
out vec4 tint;
void main()
{
    gl_Position = vec4(POSITION * toClip.xy + toClip.zw, 0.0, 1.0);
    uv = TEXCOORD;
    tint = COLOR;
}
)";

constexpr std::string_view fragmentHead = R"(#version 300 es
precision highp float;
precision highp sampler2D;
in vec2 uv;
in vec4 tint;
out vec4 color;
)";

struct PlainSource
{
    PlainProgram program;
    std::string_view head, result;
};

// In the order of PlainProgram.
constexpr std::array<PlainSource, plainProgramCount> plainSources{{
    {PlainProgram::Solid, "", "vec4 result = tint;"},
    {PlainProgram::Premultiplied, "uniform sampler2D picture;\n", "vec4 result = texture(picture, uv) * tint;"},
    {PlainProgram::Straight, "uniform sampler2D picture;\n",
     "vec4 texel = texture(picture, uv); vec4 result = vec4(texel.rgb * texel.a, texel.a) * tint;"},
    {PlainProgram::Opaque, "uniform sampler2D picture;\n", "vec4 result = vec4(texture(picture, uv).rgb, 1.0) * tint;"},
    {PlainProgram::Copy, "uniform sampler2D picture;\n", "vec4 result = vec4(texture(picture, uv).rgb, 1.0);"},
}};

std::string plainSource(const PlainSource& source, bool overColor)
{
    std::string text(source.head);
    if (overColor)
        text += "uniform vec4 background;\n";
    text += "void main() { ";
    text += source.result;
    text += overColor ? " color = result + background * (1.0 - result.a); }\n" : " color = result; }\n";
    return text;
}

const graphics::Uniform* uniformOf(const graphics::Program& program, std::string_view name)
{
    const auto found = std::ranges::find(program.uniforms(), name, &graphics::Uniform::name);
    return found == program.uniforms().end() ? nullptr : &*found;
}

} // namespace

SceneProgram::SceneProgram(graphics::ProgramPtr compiled) : program(std::move(compiled))
{
    if (!program)
        return;
    toClip = uniformOf(*program, "toClip");
    background = uniformOf(*program, "background");
    if (const graphics::Uniform* const picture = uniformOf(*program, "picture"))
        pictureUnit = picture->textureUnit;
}

graphics::ProgramPtr compileSceneProgram(graphics::Device& device, std::string_view fragmentSource,
                                         const std::string& cacheFolder)
{
    const ProgramCache cache(device, cacheFolder);
    const std::string vertex(vertexSource);
    std::string fragment(fragmentHead);
    fragment += fragmentSource;
    if (graphics::ProgramPtr kept = cache.load(vertex, fragment))
        return kept;
    std::string messages;
    graphics::ProgramPtr program = device.createProgram(vertex, fragment, messages);
    if (program)
        cache.store(*program, vertex, fragment);
    else
        graphics::logFailure("failed to compile a shader of the scene: " + messages);
    return program;
}

bool PlainPrograms::create(graphics::Device& device, const std::string& cacheFolder)
{
    for (std::size_t i = 0; i < _programs.size(); ++i) {
        const bool overColor = i >= plainProgramCount;
        _programs[i] = SceneProgram(
            compileSceneProgram(device, plainSource(plainSources[i % plainProgramCount], overColor), cacheFolder));
        if (!_programs[i].program)
            return false;
    }
    return true;
}

const SceneProgram& PlainPrograms::get(PlainProgram program, BatchBlend blend) const
{
    return _programs[static_cast<std::size_t>(program) + (blend == BatchBlend::OverClear ? plainProgramCount : 0)];
}

} // namespace tavlo::scene
