#pragma once

#include "effects/EffectDescription.h"
#include "graphics/Context.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tavlo::effects {

/// The result code of an effect's operation: 0 or above is success.
using Result = std::int32_t;
inline constexpr Result resultOk = 0;
inline constexpr Result resultFail = static_cast<Result>(0x80004005);            ///< the object is not valid
inline constexpr Result resultInvalidArgument = static_cast<Result>(0x80070057); ///< a value that does not fit

constexpr bool failed(Result result) { return result < 0; }

struct EffectState;

/// What `Effect` hands out are light values that name something in it. They hold as long as the effect does. One that
/// names nothing is invalid, and all its operations fail.
class EffectVariableBase
{
public:
    EffectVariableBase() = default;
    EffectVariableBase(EffectState* state, std::uint32_t index) : _state(state), _index(index) {}

    bool IsValid() const { return _state != nullptr; }

protected:
    EffectState* _state = nullptr;
    std::uint32_t _index = 0;
};

/// A `float` or an `int`; the value is converted to the variable's own type. An array takes its first element.
class EffectScalarVariable : public EffectVariableBase
{
public:
    using EffectVariableBase::EffectVariableBase;

    Result SetFloat(float value);
    Result SetInt(std::int32_t value);

    /// From the array's first element on; not more than it has.
    Result SetFloatArray(std::span<const float> values);
};

/// A `vec2`, `vec3` or `vec4`.
class EffectVectorVariable : public EffectVariableBase
{
public:
    using EffectVariableBase::EffectVariableBase;

    /// The variable's components; further values are not read. Fewer fail.
    Result SetFloatVector(std::span<const float> values);

    /// Whole elements without gaps, from the array's first on; not more than it has.
    Result SetFloatVectorArray(std::span<const float> values);
};

/// A `texture`.
class EffectShaderResourceVariable : public EffectVariableBase
{
public:
    using EffectVariableBase::EffectVariableBase;

    /// Holds the texture until another one is set. Null gives zeros.
    Result SetResource(graphics::TexturePtr texture);

    /// Another filter than the effect file's, for a source that matches its target texel by texel.
    Result SetSampler(graphics::Sampler sampler);
};

/// Any variable. `As...` gives an invalid object when the variable is of another kind.
class EffectVariable : public EffectVariableBase
{
public:
    using EffectVariableBase::EffectVariableBase;

    EffectScalarVariable AsScalar() const;
    EffectVectorVariable AsVector() const;
    EffectShaderResourceVariable AsShaderResource() const;
};

class EffectPass
{
public:
    EffectPass() = default;
    EffectPass(EffectState* state, std::uint32_t technique, std::uint32_t pass)
        : _state(state), _technique(technique), _pass(pass)
    {}

    bool IsValid() const { return _state != nullptr; }

    /// Whether the layout feeds every input that the vertex shader reads.
    bool Accepts(const graphics::InputLayout& layout) const;

    /// Sets program, blend and depth state and textures of the context, and sends the values that have changed since
    /// the program was last applied. Allocates nothing.
    Result Apply(graphics::Context& context) const;

private:
    EffectState* _state = nullptr;
    std::uint32_t _technique = 0, _pass = 0;
};

class EffectTechnique
{
public:
    EffectTechnique() = default;
    EffectTechnique(EffectState* state, std::uint32_t index) : _state(state), _index(index) {}

    bool IsValid() const { return _state != nullptr; }
    std::uint32_t PassCount() const;
    EffectPass GetPassByIndex(std::uint32_t index) const;

private:
    EffectState* _state = nullptr;
    std::uint32_t _index = 0;
};

/// A compiled effect on a device: variables by name, techniques and their passes.
///
/// Setting a variable stores a value and speaks to no driver; `Apply` sends it. Frame thread, as the draws that use it:
/// the values belong to the effect and are shared by all who draw with it.
class Effect
{
public:
    /// For the compiler alone: `programs` as the description lists them. Null when a program does not fit the
    /// description.
    static std::shared_ptr<Effect> create(std::string name, EffectDescription description,
                                          std::vector<graphics::ProgramPtr> programs);
    ~Effect();
    Effect(const Effect&) = delete;
    Effect& operator=(const Effect&) = delete;

    /// The file's name, for messages.
    const std::string& name() const;

    /// One look into a hash table. The variable need not be read by any shader.
    EffectVariable GetVariableByName(std::string_view name) const;
    EffectTechnique GetTechniqueByName(std::string_view name) const;

private:
    explicit Effect(std::unique_ptr<EffectState> state);

    const std::unique_ptr<EffectState> _state;
};

using EffectPtr = std::shared_ptr<Effect>;

} // namespace tavlo::effects
