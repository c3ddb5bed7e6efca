#include "scene/GLProgram.h"

#include "graphics/Log.h"
#include "scene/Director.h"
#include "scene/Renderer.h"
#include "scene/ScenePrograms.h"

#include <algorithm>
#include <cstring>

namespace tavlo::scene {

using graphics::Uniform;
using graphics::UniformType;

namespace {

struct NamedProgram
{
    std::string_view name;
    std::string_view fragmentSource;
};

constexpr NamedProgram namedPrograms[] = {
    {GLProgram::SHADER_NAME_TavloLOGO, R"(
uniform sampler2D inputImageTexture;
uniform sampler2D maskImageTexture;
uniform float opacity;
uniform float useMask;
void main()
{
    float mask = useMask != 0.0 ? texture(maskImageTexture, uv).a : 1.0;
    color = texture(inputImageTexture, uv) * (opacity * mask);
}
)"},
};

} // namespace

RefPtr<GLProgram> GLProgram::createWithFragmentSource(Director& director, std::string_view fragmentSource)
{
    graphics::ProgramPtr program = director.renderer().compile(fragmentSource);
    return program ? makeRef<GLProgram>(std::move(program)) : nullptr;
}

GLProgram::GLProgram(graphics::ProgramPtr program) : _program(std::make_unique<const SceneProgram>(std::move(program)))
{}

GLProgram::~GLProgram() = default;

const graphics::ProgramPtr& GLProgram::program() const { return _program->program; }

RefPtr<GLProgramState> GLProgramState::getOrCreateWithGLProgramName(Director& director, std::string_view name)
{
    if (RefPtr<GLProgramState> known = director.renderer().namedState(name))
        return known;
    const auto* row = std::ranges::find(namedPrograms, name, &NamedProgram::name);
    if (row == std::end(namedPrograms)) {
        graphics::logFailure("no shader of the name " + std::string(name));
        return nullptr;
    }
    RefPtr<GLProgramState> state = create(GLProgram::createWithFragmentSource(director, row->fragmentSource));
    if (state)
        director.renderer().keepNamedState(name, state);
    return state;
}

RefPtr<GLProgramState> GLProgramState::create(RefPtr<GLProgram> program)
{
    return program ? makeRef<GLProgramState>(std::move(program)) : nullptr;
}

GLProgramState::GLProgramState(RefPtr<GLProgram> program)
    : _program(std::move(program)), _values(_program->program()->uniforms().size())
{
    const std::vector<Uniform>& uniforms = _program->program()->uniforms();
    for (std::size_t i = 0; i < _values.size(); ++i)
        _values[i].isOurs = isOurs(uniforms[i]);
}

bool GLProgramState::isOurs(const Uniform& uniform) const
{
    const SceneProgram& program = _program->sceneProgram();
    const bool isPicture = uniform.type == UniformType::Texture && uniform.textureUnit == program.pictureUnit;
    return &uniform != program.toClip && &uniform != program.background && !isPicture && uniform.count == 1 &&
           graphics::uniformBytes(uniform.type) <= largestValue;
}

GLProgramState::Value* GLProgramState::find(std::string_view name, UniformType type)
{
    const std::vector<Uniform>& uniforms = _program->program()->uniforms();
    const auto found = std::ranges::find(uniforms, name, &Uniform::name);
    if (found == uniforms.end() || found->type != type || found->count != 1)
        return nullptr;
    return &_values[static_cast<std::size_t>(found - uniforms.begin())];
}

template <class T>
bool GLProgramState::setValue(std::string_view name, UniformType type, const T& value)
{
    Value* const place = find(name, type);
    if (!place)
        return false;
    std::memcpy(place->bytes.data(), &value, sizeof value);
    place->isOurs = true;
    return true;
}

bool GLProgramState::setUniformFloat(std::string_view name, float value)
{
    return setValue(name, UniformType::Float, value);
}

bool GLProgramState::setUniformInt(std::string_view name, int value) { return setValue(name, UniformType::Int, value); }

bool GLProgramState::setUniformVec2(std::string_view name, const std::array<float, 2>& value)
{
    return setValue(name, UniformType::Vec2, value);
}

bool GLProgramState::setUniformVec4(std::string_view name, const std::array<float, 4>& value)
{
    return setValue(name, UniformType::Vec4, value);
}

bool GLProgramState::setUniformTexture(std::string_view name, graphics::TexturePtr texture)
{
    Value* const place = find(name, UniformType::Texture);
    if (!place)
        return false;
    place->texture = std::move(texture);
    place->isOurs = true;
    return true;
}

void GLProgramState::apply(graphics::Context& context) const
{
    graphics::Program& program = *_program->program();
    for (std::size_t i = 0; i < _values.size(); ++i) {
        const Uniform& uniform = program.uniforms()[i];
        const Value& value = _values[i];
        if (!value.isOurs)
            continue;
        if (uniform.type == UniformType::Texture)
            context.setTexture(uniform.textureUnit, value.texture, graphics::Sampler::LinearClamp);
        else
            context.setUniform(program, uniform, std::span(value.bytes).first(graphics::uniformBytes(uniform.type)));
    }
}

} // namespace tavlo::scene
