#pragma once

#include <source_location>
#include <string>

namespace tavlo::graphics {

/// Logs a failure of this library: "[", source, "-", line, a blank, function, "]" and the text. Any thread.
void logFailure(const std::string& text, std::source_location where = std::source_location::current());

} // namespace tavlo::graphics
