#include "effects/EffectDescription.h"

#include <algorithm>
#include <set>
#include <string_view>

namespace tavlo::effects {

using graphics::UniformType;

namespace {

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }

std::string faultOf(const VariableDescription& variable)
{
    if (!isEffectName(variable.name))
        return "no name for a variable: '" + variable.name + "'";
    if (variable.type > UniformType::Int && variable.type != UniformType::Texture)
        return "no type for a variable: " + variable.name;
    if (variable.count < 1 || variable.count > maxArray || (variable.count > 1 && !variable.isArray))
        return "an array of 1 to " + std::to_string(maxArray) + " elements, please: " + variable.name;
    if (variable.isArray && variable.type == UniformType::Texture)
        return "textures come one by one: " + variable.name;
    if (!variable.initial.empty() && variable.initial.size() != componentsOf(variable.type))
        return "as many values as components, please: " + variable.name;
    if (static_cast<int>(variable.sampler) >= graphics::samplerCount)
        return "no such filter: " + variable.name;
    return {};
}

bool isBlend(const graphics::BlendEquation& equation)
{
    return equation.source <= graphics::BlendFactor::InvDstAlpha &&
           equation.target <= graphics::BlendFactor::InvDstAlpha && equation.op <= graphics::BlendOp::Max;
}

template <class List>
bool allDiffer(const List& list)
{
    std::set<std::string_view> names;
    return std::ranges::all_of(list, [&](const auto& entry) { return names.insert(entry.name).second; });
}

} // namespace

bool isEffectName(std::string_view text)
{
    return !text.empty() && text.size() <= maxName && isLetter(text.front()) &&
           std::ranges::all_of(text, [](char c) { return isLetter(c) || (c >= '0' && c <= '9'); }) &&
           !text.starts_with("gl_") && text.find("__") == std::string_view::npos;
}

std::uint32_t componentsOf(UniformType type) { return graphics::uniformBytes(type) / 4; }

std::string faultOf(const EffectDescription& description)
{
    const auto& variables = description.variables;
    for (const VariableDescription& variable : variables) {
        if (std::string fault = faultOf(variable); !fault.empty())
            return fault;
    }
    if (variables.size() > maxVariables)
        return "more than " + std::to_string(maxVariables) + " variables";
    if (std::ranges::count(variables, UniformType::Texture, &VariableDescription::type) >
        static_cast<std::ptrdiff_t>(maxTextures))
        return "more than " + std::to_string(maxTextures) + " textures";
    if (!allDiffer(variables) || !allDiffer(description.techniques))
        return "a name stands twice";
    if (description.techniques.empty())
        return "no technique";
    for (const TechniqueDescription& technique : description.techniques) {
        if (!isEffectName(technique.name))
            return "no name for a technique: '" + technique.name + "'";
        if (technique.passes.empty())
            return "a technique without a pass: " + technique.name;
        for (const PassDescription& pass : technique.passes) {
            if (pass.program >= description.programs.size() || !isBlend(pass.blend.color) ||
                !isBlend(pass.blend.alpha) || pass.blend.writeMask > 0xf)
                return "a pass that makes no sense: " + technique.name;
        }
    }
    return {};
}

} // namespace tavlo::effects
