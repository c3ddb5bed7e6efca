#pragma once

#include "effects/EffectDescription.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tavlo::effects {

/// An effect as the cache keeps it.
struct CompiledForm
{
    std::string driver; ///< identity of the driver that the binaries belong to
    EffectDescription description;
    std::vector<std::vector<std::byte>> binaries; ///< as `description.programs`
    bool operator==(const CompiledForm&) const = default;
};

std::vector<std::byte> writeCompiled(const CompiledForm& form);

/// Nothing when the bytes are not one, to the last byte. Any bytes may come in.
std::optional<CompiledForm> readCompiled(std::span<const std::byte> bytes);

} // namespace tavlo::effects
