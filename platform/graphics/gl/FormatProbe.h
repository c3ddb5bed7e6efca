#pragma once

#include "graphics/gl/FormatTable.h"

namespace tavlo::graphics {

/// What the driver really does with a format, found out by trying. A context is current, its messages are off.
FormatSupport probeFormat(const FormatRow& row, bool filtersFloat);

} // namespace tavlo::graphics
