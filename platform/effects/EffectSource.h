#pragma once

#include "effects/EffectDescription.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavlo::effects {

/// GLSL of an effect file and where it stands there.
struct ShaderSection
{
    std::string name;
    std::string text;
    int line = 0; ///< of the text's first line, from 1
};

/// An effect file, read and checked, but for what only a GLSL compiler can check.
struct EffectSource
{
    EffectDescription description;
    std::vector<int> variableLines; ///< as `description.variables`
    ShaderSection common;
    std::vector<ShaderSection> vertexShaders, fragmentShaders;

    /// The whole GLSL of a shader section, declarations in front.
    std::string shaderText(const ShaderSection& section) const;
};

/// Reads an effect file as docs/effect-format.md tells it. Nothing, and "file:line: what is wrong" in `error`, when it
/// is not one. Any bytes may come in; any thread.
std::optional<EffectSource> parseEffect(std::string_view text, const std::string& fileName, std::string& error);

} // namespace tavlo::effects
