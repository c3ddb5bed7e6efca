#pragma once

#include <QtGlobal>

#include <vector>

namespace tavlo {

/// The image slots of the filters' curve textures.
inline constexpr int firstFilterCurveSlot = 38;
inline constexpr int lastFilterCurveSlot = 47;

/// The rows of a slot's curve texture, 1 to 3; 0 for a slot that holds none. Any thread.
int filterCurveRows(int slot);

/// The curve texture of a slot: RGBA, a byte each, 256 pixels by `filterCurveRows(slot)`, top row first. Pixel x of a
/// row holds what the four channels' curves make of value x. Empty for a slot that holds none. Any thread.
std::vector<quint8> makeFilterCurve(int slot);

} // namespace tavlo
