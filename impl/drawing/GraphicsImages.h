#pragma once

namespace tavlo {

/// What stands in an image slot of the graphics store: a picture of the resource tree, the mask that transitions paint,
/// or a tone curve.
enum class ImageKind
{
    Transition,
    Filter,
    Mask,
    Curve
};

struct GraphicsImage
{
    ImageKind kind;
    const char* file; ///< below the folder of its kind; null where there is none
};

inline constexpr int graphicsImageCount = 80;
inline constexpr int maskImageSlot = 4;
inline constexpr int maskImageSize = 512; ///< pixels, both ways

/// The content of a slot, 0 to 79. Any thread.
const GraphicsImage& graphicsImage(int slot);

} // namespace tavlo
