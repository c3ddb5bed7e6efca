#pragma once

#include <string>
#include <string_view>

namespace tavlo::effects {

/// A GLSL compiler's messages with "file:line: " in front of each line that names one; other lines get "file: ". Knows
/// the three forms in use: "0:12(5): error: ...", "0(12) : error ...", "ERROR: 0:12: ...". No newline at the end.
std::string nameLines(std::string_view messages, const std::string& fileName);

} // namespace tavlo::effects
