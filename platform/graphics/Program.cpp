#include "graphics/Program.h"

#include "graphics/Device.h"
#include "graphics/State.h"
#include "graphics/gl/ObjectImpl.h"

#include <array>
#include <cstring>
#include <optional>

namespace tavlo::graphics {

namespace {

std::string infoLog(GLuint name, bool isProgram)
{
    GLint length = 0;
    isProgram ? glGetProgramiv(name, GL_INFO_LOG_LENGTH, &length) : glGetShaderiv(name, GL_INFO_LOG_LENGTH, &length);
    if (length <= 1)
        return {};
    std::string text(static_cast<std::size_t>(length), '\0');
    isProgram ? glGetProgramInfoLog(name, length, &length, text.data())
              : glGetShaderInfoLog(name, length, &length, text.data());
    text.resize(static_cast<std::size_t>(length));
    return text;
}

// Goes with the scope: a shader is needed until its program is linked.
class Shader
{
public:
    Shader(GLenum kind, const std::string& source) : _name(glCreateShader(kind))
    {
        const char* text = source.data();
        const auto length = static_cast<GLint>(source.size());
        glShaderSource(_name, 1, &text, &length);
        glCompileShader(_name);
        GLint status = 0;
        glGetShaderiv(_name, GL_COMPILE_STATUS, &status);
        _compiled = status == GL_TRUE;
    }
    ~Shader() { glDeleteShader(_name); }
    Shader(const Shader&) = delete;
    Shader& operator=(const Shader&) = delete;

    GLuint name() const { return _name; }
    bool compiled() const { return _compiled; }

private:
    const GLuint _name;
    bool _compiled = false;
};

std::optional<UniformType> typeOf(GLenum type)
{
    switch (type) {
    case GL_FLOAT:
        return UniformType::Float;
    case GL_FLOAT_VEC2:
        return UniformType::Vec2;
    case GL_FLOAT_VEC3:
        return UniformType::Vec3;
    case GL_FLOAT_VEC4:
        return UniformType::Vec4;
    case GL_INT:
    case GL_BOOL:
        return UniformType::Int;
    case GL_INT_VEC2:
        return UniformType::IVec2;
    case GL_INT_VEC3:
        return UniformType::IVec3;
    case GL_INT_VEC4:
        return UniformType::IVec4;
    case GL_FLOAT_MAT4:
        return UniformType::Mat4;
    case GL_SAMPLER_2D:
        return UniformType::Texture;
    default:
        return std::nullopt;
    }
}

bool linked(GLuint program)
{
    GLint status = 0;
    glGetProgramiv(program, GL_LINK_STATUS, &status);
    return status == GL_TRUE;
}

// Lists the uniforms and gives each texture a unit. The program is in use.
std::vector<Uniform> collectUniforms(GLuint program)
{
    GLint count = 0;
    glGetProgramiv(program, GL_ACTIVE_UNIFORMS, &count);
    std::vector<Uniform> uniforms;
    std::int32_t unit = 0;
    for (GLint i = 0; i < count; ++i) {
        std::array<char, 256> name{};
        GLint elements = 0;
        GLenum glType = 0;
        glGetActiveUniform(program, static_cast<GLuint>(i), static_cast<GLsizei>(name.size()), nullptr, &elements,
                           &glType, name.data());
        const std::optional<UniformType> type = typeOf(glType);
        const GLint location = glGetUniformLocation(program, name.data());
        if (!type || location < 0)
            continue;
        Uniform uniform{name.data(), *type, static_cast<std::uint32_t>(elements), location, -1};
        uniform.name.erase(std::min(uniform.name.find('['), uniform.name.size()));
        if (*type == UniformType::Texture) {
            uniform.textureUnit = unit++;
            glUniform1i(location, uniform.textureUnit);
        }
        uniforms.push_back(std::move(uniform));
    }
    return uniforms;
}

std::vector<Semantic> collectInputs(GLuint program)
{
    std::vector<Semantic> inputs;
    for (int i = 0; i < semanticCount; ++i) {
        const auto semantic = static_cast<Semantic>(i);
        if (glGetAttribLocation(program, semanticName(semantic)) >= 0)
            inputs.push_back(semantic);
    }
    return inputs;
}

ProgramPtr wrap(const std::shared_ptr<DeviceCore>& core, GLuint name)
{
    GLint before = 0;
    glGetIntegerv(GL_CURRENT_PROGRAM, &before);
    glUseProgram(name);
    auto impl = std::make_unique<Program::Impl>();
    impl->core = core;
    impl->name = name;
    impl->uniforms = collectUniforms(name);
    impl->inputs = collectInputs(name);
    glUseProgram(static_cast<GLuint>(before)); // a context of a frame may be at work here
    return std::make_shared<Program>(std::move(impl));
}

} // namespace

std::uint32_t uniformBytes(UniformType type)
{
    switch (type) {
    case UniformType::Vec2:
    case UniformType::IVec2:
        return 8;
    case UniformType::Vec3:
    case UniformType::IVec3:
        return 12;
    case UniformType::Vec4:
    case UniformType::IVec4:
        return 16;
    case UniformType::Mat4:
        return 64;
    case UniformType::Float:
    case UniformType::Int:
    case UniformType::Texture:
        break;
    }
    return 4;
}

Program::Program(std::unique_ptr<Impl> impl) : _impl(std::move(impl)) {}
Program::~Program() = default;

const std::vector<Uniform>& Program::uniforms() const { return _impl->uniforms; }
const std::vector<Semantic>& Program::inputs() const { return _impl->inputs; }

std::vector<std::byte> Program::binary() const
{
    const CurrentContext current(*_impl->core);
    if (!current)
        return {};
    GLint size = 0;
    glGetProgramiv(_impl->name, GL_PROGRAM_BINARY_LENGTH, &size);
    if (size <= 0)
        return {};
    // The driver's number of its form goes in front.
    GLenum form = 0;
    std::vector<std::byte> bytes(sizeof form + static_cast<std::size_t>(size));
    glGetProgramBinary(_impl->name, size, &size, &form, bytes.data() + sizeof form);
    std::memcpy(bytes.data(), &form, sizeof form);
    bytes.resize(sizeof form + static_cast<std::size_t>(size));
    return bytes;
}

ProgramPtr Device::createProgram(const std::string& vertexSource, const std::string& fragmentSource,
                                 std::string& messages)
{
    const CurrentContext current(*_core);
    if (!current)
        return nullptr;
    const Shader vertex(GL_VERTEX_SHADER, vertexSource);
    const Shader fragment(GL_FRAGMENT_SHADER, fragmentSource);
    messages = infoLog(vertex.name(), false) + infoLog(fragment.name(), false);
    if (!vertex.compiled() || !fragment.compiled())
        return nullptr;

    const GLuint program = glCreateProgram();
    glAttachShader(program, vertex.name());
    glAttachShader(program, fragment.name());
    for (GLuint input = 0; input < semanticCount; ++input)
        glBindAttribLocation(program, input, semanticName(static_cast<Semantic>(input)));
    glProgramParameteri(program, GL_PROGRAM_BINARY_RETRIEVABLE_HINT, GL_TRUE);
    glLinkProgram(program);
    messages += infoLog(program, true);
    if (!linked(program)) {
        glDeleteProgram(program);
        return nullptr;
    }
    return wrap(_core, program);
}

ProgramPtr Device::createProgramFromBinary(std::span<const std::byte> binary)
{
    GLenum form = 0;
    if (binary.size() <= sizeof form)
        return nullptr;
    const CurrentContext current(*_core);
    if (!current)
        return nullptr;
    std::memcpy(&form, binary.data(), sizeof form);
    const GLuint program = glCreateProgram();
    glProgramBinary(program, form, binary.data() + sizeof form, static_cast<GLsizei>(binary.size() - sizeof form));
    if (!linked(program)) {
        glDeleteProgram(program);
        return nullptr;
    }
    return wrap(_core, program);
}

} // namespace tavlo::graphics
