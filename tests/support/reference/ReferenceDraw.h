#pragma once

#include "support/reference/Picture.h"

#include <tavlo/records/PictureRecords.h>
#include <tavlo/records/ShowRecords.h>

/// What the draw object draws, told again in plain double-precision arithmetic: slow, one pixel after the other, and
/// written without a look at a shader. Pictures keep their top row first.
namespace tavlo::reference {

/// What an 8-bit target keeps of a colour: clamped and rounded.
Rgba stored(const Rgba& color);

inline constexpr std::uint32_t I420 = 808596553, YV12 = 842094169, NV12 = 842094158, NV21 = 825382478, YUY2 = 844715353,
                               YVYU = 1431918169, UYVY = 1498831189, VYUY = 1498765654, RV32 = 842225234;

/// The texture that holds a picture of a layout, and where its second and third component begin, in texels.
struct Shape
{
    int width, height, channels;
    std::uint32_t u, v;
};
Shape shapeOf(std::uint32_t chroma, int width, int height);

/// A picture as it lies in its texture, and how it is to be read.
struct Input
{
    std::uint32_t chroma;
    Picture texture;
    int width, height; ///< of the picture, which is not always that of the texture
    std::uint32_t u = 0, v = 0;
    bool flip = false, mirror = false;
};

/// A picture whose texture is the picture itself.
Input plain(const Picture& picture, bool flip = false, bool mirror = false);

/// Where a picture lies in the target: pixels, y downwards.
struct Placement
{
    Vector topLeft, topRight, bottomLeft;

    /// The place in the picture of a place in the target; outside 0 to 1 beside the picture.
    Vector toPicture(Vector target) const;

    /// Pixels from a place to the nearest edge, or to its straight continuation.
    double distanceToEdge(Vector target) const;
};

/// As large as fits, in the middle.
Placement fitted(QSizeF source, QSizeF target);

Placement placed(const tagTavloShowDisplayItemInfo& record, int fitMode, QSizeF source, QSizeF target);

/// One pass over the target, blended and rounded. A null process does nothing to the picture.
void draw(Picture& target, const Input& input, const Placement& where,
          const tagTavloPresentPictureFilterParam* process = nullptr);

/// The picture's luma as grey, opaque, on a target of that colour.
void drawGray(Picture& target, const Picture& picture, const Rgba& clear);

/// The picture process of a source in up to three passes. Gives what the channel shows.
/// \param target  what stands there when the first pass doesn't clear
Picture drawKeyedSource(const Picture& target, const Input& input, const tagTavloPresentPictureFilterParam& process,
                        bool clearFirst);

} // namespace tavlo::reference
