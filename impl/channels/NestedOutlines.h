#pragma once

#include "scene/DrawNode.h"

namespace tavlo {

/// Draws that many outlines of one pixel, each inside the one before.
inline void drawNestedOutlines(scene::DrawNode& node, const scene::Rect& rect, int count, const scene::Color4F& color)
{
    for (int i = 0; i < count; ++i) {
        const auto inset = static_cast<float>(i);
        node.drawRect({rect.minX() + inset, rect.minY() + inset}, {rect.maxX() - inset, rect.maxY() - inset}, color);
    }
}

} // namespace tavlo
