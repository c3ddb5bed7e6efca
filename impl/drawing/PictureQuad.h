#pragma once

#include <QSizeF>

#include <array>

struct tagTavloShowDisplayItemInfo;

namespace tavlo {

/// One corner of a drawn picture: device coordinates with y up, and where it lies in the picture, v downwards.
struct QuadVertex
{
    float x, y, z, u, v;
};

/// Bottom left, bottom right, top right, top left.
using Quad = std::array<QuadVertex, 4>;

/// The whole target.
inline constexpr Quad fullQuad{{{-1, -1, -1, 0, 1}, {1, -1, -1, 1, 1}, {1, 1, -1, 1, 0}, {-1, 1, -1, 0, 0}}};

/// The two triangles of a quad.
inline constexpr std::array<unsigned short, 6> quadIndices{3, 1, 0, 2, 1, 3};

/// How a placed picture takes up its target before it is scaled and moved.
enum FitMode : int
{
    FitModeAspect = 0, ///< and every number without a name: as large as fits, its aspect kept
    FitModeStretch = 1,
    FitModeOwnSize = 2,
};

/// A picture in the middle of the target, as large as fits, its aspect kept. Sizes in pixels.
Quad fitQuad(QSizeF source, QSizeF target);

/// A picture placed by a display record. A final rectangle counts alone, but for the rotation; that turns about the
/// middle of the quad's left edge, degrees, anticlockwise.
Quad placedQuad(const tagTavloShowDisplayItemInfo& placement, int fitMode, QSizeF source, QSizeF target);

} // namespace tavlo
