#pragma once

#include "graphics/Program.h"
#include "graphics/State.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tavlo::effects {

/// What an effect is, apart from its shaders: the part of an effect file that the compiled form keeps.

struct VariableDescription
{
    std::string name;
    graphics::UniformType type = graphics::UniformType::Float; ///< Float, Vec2, Vec3, Vec4, Int or Texture
    std::uint32_t count = 1;                                   ///< elements of an array
    bool isArray = false;
    graphics::Sampler sampler = graphics::Sampler::LinearClamp; ///< textures only
    std::vector<std::uint32_t> initial; ///< bit patterns of one element's components; empty for zeros
    bool operator==(const VariableDescription&) const = default;
};

struct PassDescription
{
    std::uint32_t program = 0; ///< index into `EffectDescription::programs`
    graphics::BlendState blend;
    graphics::DepthState depth;
    bool operator==(const PassDescription&) const = default;
};

struct TechniqueDescription
{
    std::string name;
    std::vector<PassDescription> passes;
    bool operator==(const TechniqueDescription&) const = default;
};

/// A pair of shader sections.
struct ProgramDescription
{
    std::string vertex, fragment;
    bool operator==(const ProgramDescription&) const = default;
};

struct EffectDescription
{
    std::vector<VariableDescription> variables;
    std::vector<TechniqueDescription> techniques;
    std::vector<ProgramDescription> programs;
    bool operator==(const EffectDescription&) const = default;
};

inline constexpr std::size_t maxVariables = 256;
inline constexpr std::size_t maxTextures = 16; // units that every device has
inline constexpr std::uint32_t maxArray = 256;
inline constexpr std::size_t maxName = 64;

/// Whether a text can be the name of a variable, technique or shader.
bool isEffectName(std::string_view text);

/// 4-byte components of one element.
std::uint32_t componentsOf(graphics::UniformType type);

/// Empty when the description holds together: names, limits and indices.
std::string faultOf(const EffectDescription& description);

} // namespace tavlo::effects
