#pragma once

#include "graphics/Device.h"
#include "scene/Ref.h"

#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tavlo::scene {

class Director;
struct SceneProgram;

/// A shader that sprites may be drawn with instead of the plain one. Frame thread.
///
/// A fragment shader is written as GLSL ES 3.00 without its head. It reads `in vec2 uv` (0, 0 is the left top of the
/// picture), `in vec4 tint` (the node's colour and opacity, colour multiplied by alpha) and `uniform sampler2D picture`
/// (the sprite's own texture), and writes `out vec4 color`, colour multiplied by alpha.
class GLProgram : public Ref
{
public:
    /// A picture with an opacity and a mask: uniform textures "inputImageTexture" and "maskImageTexture", whose alpha
    /// multiplies where the uniform float "useMask" is not 0, and uniform float "opacity", which takes the place of the
    /// node's.
    static constexpr std::string_view SHADER_NAME_TavloLOGO = "TavloLOGO";

    /// Null, with the driver's messages in the log, when the shader is wrong.
    static RefPtr<GLProgram> createWithFragmentSource(Director& director, std::string_view fragmentSource);

    explicit GLProgram(graphics::ProgramPtr program);
    ~GLProgram() override;
    const graphics::ProgramPtr& program() const;
    const SceneProgram& sceneProgram() const { return *_program; } ///< for the renderer

private:
    const std::unique_ptr<const SceneProgram> _program; ///< of a program that is never null
};

/// A program and the values of its uniforms, as they are at the moment of the drawing; zeros before they are set. Several sprites may share one
/// when each sets its values in a custom command just before its own quad. Frame thread.
class GLProgramState : public Ref
{
public:
    /// The director's one state of a named program; null for a name that is none.
    static RefPtr<GLProgramState> getOrCreateWithGLProgramName(Director& director, std::string_view name);

    /// A state of its own.
    static RefPtr<GLProgramState> create(RefPtr<GLProgram> program);
    explicit GLProgramState(RefPtr<GLProgram> program);

    const GLProgram& program() const { return *_program; }

    /// False for a uniform that the program does not have, or has with another type.
    bool setUniformFloat(std::string_view name, float value);
    bool setUniformInt(std::string_view name, int value);
    bool setUniformVec2(std::string_view name, const std::array<float, 2>& value);
    bool setUniformVec4(std::string_view name, const std::array<float, 4>& value);
    bool setUniformTexture(std::string_view name, graphics::TexturePtr texture); ///< null gives zeros

    /// Hands the values over; for the renderer.
    void apply(graphics::Context& context) const;

private:
    static constexpr std::size_t largestValue = 16; ///< bytes

    struct Value
    {
        std::array<std::byte, largestValue> bytes{};
        graphics::TexturePtr texture;
        bool isOurs = true; ///< and not the renderer's, as long as nobody sets it
    };

    template <class T>
    bool setValue(std::string_view name, graphics::UniformType type, const T& value);
    Value* find(std::string_view name, graphics::UniformType type);
    bool isOurs(const graphics::Uniform& uniform) const;

    const RefPtr<GLProgram> _program;
    std::vector<Value> _values; ///< one for each uniform of the program
};

} // namespace tavlo::scene
