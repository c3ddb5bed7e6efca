#pragma once

#include <QLatin1StringView>

namespace tavlo {

/// The tag of an entry in a list of strings.
inline constexpr QLatin1StringView stringEntryTag("item");

} // namespace tavlo
