#pragma once

#include "effects/Effect.h"
#include "graphics/Device.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace tavlo::effects {

struct CompileJob
{
    std::string_view source;         ///< the effect file's text
    std::string sourceName;          ///< for messages; "D3DX11Effect" when empty
    std::filesystem::path cacheFile; ///< empty: no cache
};

/// The effect of a source, from the cache file where that holds one for this driver, otherwise compiled and, when the
/// cache file does not exist, written there.
///
/// The cache file is not compared with the source: whoever names it sees to it that it belongs to this build.
/// On failure the code is negative, `effect` null, and `errors` tells file, line and reason. A thread that may use the
/// device; takes some tenths of a second when it compiles.
Result D3DX11CompileEffectFromMemory(graphics::Device& device, const CompileJob& job, EffectPtr& effect,
                                     std::string& errors);

} // namespace tavlo::effects
