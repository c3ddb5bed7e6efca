#include "effects/Effect.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <unordered_map>

namespace tavlo::effects {

using graphics::UniformType;

namespace {

/// A variable's present value. `version` rises whenever it changes.
struct VariableValue
{
    std::vector<std::byte> bytes; ///< elements without gaps; nothing for a texture
    std::uint64_t version = 1;
    graphics::TexturePtr texture;
    graphics::Sampler sampler = graphics::Sampler::LinearClamp;
};

/// A variable that a program reads.
struct ProgramUniform
{
    std::uint32_t variable;
    std::uint32_t uniform; ///< index into the program's list
    std::uint64_t sentVersion = 0;
};

struct ProgramState
{
    graphics::ProgramPtr program;
    std::vector<ProgramUniform> values, textures;
};

struct NameHash
{
    using is_transparent = void;
    std::size_t operator()(std::string_view name) const { return std::hash<std::string_view>{}(name); }
};
using NameTable = std::unordered_map<std::string, std::uint32_t, NameHash, std::equal_to<>>;

template <class List>
NameTable tableOf(const List& list)
{
    NameTable table;
    for (std::uint32_t i = 0; i < list.size(); ++i)
        table.emplace(list[i].name, i);
    return table;
}

std::int32_t toInt(float value)
{
    constexpr auto limit = static_cast<float>(std::numeric_limits<std::int32_t>::max());
    if (std::isnan(value))
        return 0;
    if (value >= limit)
        return std::numeric_limits<std::int32_t>::max();
    return value <= -limit ? std::numeric_limits<std::int32_t>::min() : static_cast<std::int32_t>(value);
}

} // namespace

struct EffectState
{
    const VariableDescription& variable(std::uint32_t index) const { return description.variables[index]; }

    // Stores the first bytes of a variable; equal ones change nothing.
    void store(std::uint32_t index, std::span<const std::byte> bytes)
    {
        VariableValue& value = values[index];
        if (std::memcmp(value.bytes.data(), bytes.data(), bytes.size()) == 0)
            return;
        std::memcpy(value.bytes.data(), bytes.data(), bytes.size());
        ++value.version;
    }

    template <class Value>
    void storeOne(std::uint32_t index, Value value)
    {
        store(index, std::as_bytes(std::span(&value, 1)));
    }

    bool connect(ProgramState& state) const;

    // fixed after create
    std::string name;
    EffectDescription description;
    NameTable variableNames, techniqueNames;

    // frame thread
    std::vector<VariableValue> values;
    std::vector<ProgramState> programs;
};

// Finds the variable of each uniform. False when the program reads what the effect does not have.
bool EffectState::connect(ProgramState& state) const
{
    const std::vector<graphics::Uniform>& uniforms = state.program->uniforms();
    for (std::uint32_t i = 0; i < uniforms.size(); ++i) {
        const auto known = variableNames.find(uniforms[i].name);
        if (known == variableNames.end() || variable(known->second).type != uniforms[i].type ||
            variable(known->second).count < uniforms[i].count)
            return false;
        const bool texture = uniforms[i].type == UniformType::Texture;
        if (texture && uniforms[i].textureUnit >= static_cast<std::int32_t>(maxTextures))
            return false;
        (texture ? state.textures : state.values).push_back({known->second, i, 0});
    }
    return true;
}

std::shared_ptr<Effect> Effect::create(std::string name, EffectDescription description,
                                       std::vector<graphics::ProgramPtr> programs)
{
    auto state = std::make_unique<EffectState>();
    state->name = std::move(name);
    state->description = std::move(description);
    state->variableNames = tableOf(state->description.variables);
    state->techniqueNames = tableOf(state->description.techniques);
    for (const VariableDescription& variable : state->description.variables) {
        VariableValue value;
        if (variable.type != UniformType::Texture)
            value.bytes.resize(std::size_t{graphics::uniformBytes(variable.type)} * variable.count);
        if (!variable.initial.empty())
            std::memcpy(value.bytes.data(), variable.initial.data(), value.bytes.size());
        value.sampler = variable.sampler;
        state->values.push_back(std::move(value));
    }
    for (graphics::ProgramPtr& program : programs) {
        state->programs.push_back({std::move(program), {}, {}});
        if (!state->connect(state->programs.back()))
            return nullptr;
    }
    return std::shared_ptr<Effect>(new Effect(std::move(state)));
}

Effect::Effect(std::unique_ptr<EffectState> state) : _state(std::move(state)) {}
Effect::~Effect() = default;

const std::string& Effect::name() const { return _state->name; }

EffectVariable Effect::GetVariableByName(std::string_view name) const
{
    const auto found = _state->variableNames.find(name);
    return found == _state->variableNames.end() ? EffectVariable() : EffectVariable(_state.get(), found->second);
}

EffectTechnique Effect::GetTechniqueByName(std::string_view name) const
{
    const auto found = _state->techniqueNames.find(name);
    return found == _state->techniqueNames.end() ? EffectTechnique() : EffectTechnique(_state.get(), found->second);
}

EffectScalarVariable EffectVariable::AsScalar() const
{
    if (!IsValid())
        return {};
    const UniformType type = _state->variable(_index).type;
    return type == UniformType::Float || type == UniformType::Int ? EffectScalarVariable(_state, _index)
                                                                  : EffectScalarVariable();
}

EffectVectorVariable EffectVariable::AsVector() const
{
    if (!IsValid())
        return {};
    const UniformType type = _state->variable(_index).type;
    return type >= UniformType::Vec2 && type <= UniformType::Vec4 ? EffectVectorVariable(_state, _index)
                                                                  : EffectVectorVariable();
}

EffectShaderResourceVariable EffectVariable::AsShaderResource() const
{
    const bool texture = IsValid() && _state->variable(_index).type == UniformType::Texture;
    return texture ? EffectShaderResourceVariable(_state, _index) : EffectShaderResourceVariable();
}

Result EffectScalarVariable::SetFloat(float value)
{
    if (!IsValid())
        return resultFail;
    if (_state->variable(_index).type == UniformType::Int)
        _state->storeOne(_index, toInt(value));
    else
        _state->storeOne(_index, value);
    return resultOk;
}

Result EffectScalarVariable::SetInt(std::int32_t value)
{
    if (!IsValid())
        return resultFail;
    if (_state->variable(_index).type == UniformType::Int)
        _state->storeOne(_index, value);
    else
        _state->storeOne(_index, static_cast<float>(value));
    return resultOk;
}

Result EffectScalarVariable::SetFloatArray(std::span<const float> values)
{
    if (!IsValid())
        return resultFail;
    const VariableDescription& variable = _state->variable(_index);
    if (variable.type != UniformType::Float || values.size() > variable.count)
        return resultInvalidArgument;
    _state->store(_index, std::as_bytes(values));
    return resultOk;
}

Result EffectVectorVariable::SetFloatVector(std::span<const float> values)
{
    if (!IsValid())
        return resultFail;
    const std::size_t components = componentsOf(_state->variable(_index).type);
    if (values.size() < components)
        return resultInvalidArgument;
    _state->store(_index, std::as_bytes(values.first(components)));
    return resultOk;
}

Result EffectVectorVariable::SetFloatVectorArray(std::span<const float> values)
{
    if (!IsValid())
        return resultFail;
    const VariableDescription& variable = _state->variable(_index);
    const std::size_t components = componentsOf(variable.type);
    if (values.size() % components != 0 || values.size() > components * variable.count)
        return resultInvalidArgument;
    _state->store(_index, std::as_bytes(values));
    return resultOk;
}

Result EffectShaderResourceVariable::SetResource(graphics::TexturePtr texture)
{
    if (!IsValid())
        return resultFail;
    _state->values[_index].texture = std::move(texture);
    return resultOk;
}

Result EffectShaderResourceVariable::SetSampler(graphics::Sampler sampler)
{
    if (!IsValid())
        return resultFail;
    _state->values[_index].sampler = sampler;
    return resultOk;
}

std::uint32_t EffectTechnique::PassCount() const
{
    return IsValid() ? static_cast<std::uint32_t>(_state->description.techniques[_index].passes.size()) : 0;
}

EffectPass EffectTechnique::GetPassByIndex(std::uint32_t index) const
{
    return index < PassCount() ? EffectPass(_state, _index, index) : EffectPass();
}

bool EffectPass::Accepts(const graphics::InputLayout& layout) const
{
    if (!IsValid())
        return false;
    const PassDescription& pass = _state->description.techniques[_technique].passes[_pass];
    return std::ranges::all_of(_state->programs[pass.program].program->inputs(), [&](graphics::Semantic input) {
        return std::ranges::find(layout, input, &graphics::InputElement::semantic) != layout.end();
    });
}

Result EffectPass::Apply(graphics::Context& context) const
{
    if (!IsValid())
        return resultFail;
    const PassDescription& pass = _state->description.techniques[_technique].passes[_pass];
    ProgramState& state = _state->programs[pass.program];
    const std::vector<graphics::Uniform>& uniforms = state.program->uniforms();
    for (ProgramUniform& used : state.values) {
        const VariableValue& value = _state->values[used.variable];
        if (used.sentVersion == value.version)
            continue;
        // The driver may know fewer elements of an array than were declared: the last ones that no shader reads.
        const graphics::Uniform& uniform = uniforms[used.uniform];
        const std::size_t bytes = std::size_t{graphics::uniformBytes(uniform.type)} * uniform.count;
        if (!context.setUniform(*state.program, uniform, std::span(value.bytes).first(bytes)))
            return resultFail;
        used.sentVersion = value.version;
    }
    for (const ProgramUniform& used : state.textures) {
        const VariableValue& value = _state->values[used.variable];
        context.setTexture(uniforms[used.uniform].textureUnit, value.texture, value.sampler);
    }
    context.setProgram(state.program);
    context.setBlendState(pass.blend);
    context.setDepthState(pass.depth);
    return resultOk;
}

} // namespace tavlo::effects
