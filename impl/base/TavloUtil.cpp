#include "base/TavloUtil.h"

#include "shared/VlcTypes.h"

#include <algorithm>
#include <cstring>

namespace {

void copyPlane(plane_t& target, const plane_t& source, bool flip)
{
    const int lines = std::min(target.i_visible_lines, source.i_visible_lines);
    const auto bytes = static_cast<size_t>(std::min(target.i_visible_pitch, source.i_visible_pitch));
    for (int line = 0; line < lines; ++line) {
        const int to = flip ? lines - 1 - line : line;
        std::memcpy(target.p_pixels + ptrdiff_t{to} * target.i_pitch,
                    source.p_pixels + ptrdiff_t{line} * source.i_pitch, bytes);
    }
}

} // namespace

bool TavloUtil::picture_UpdatePlanes(picture_t* picture, quint8* pixels, int pitch)
{
    const vlc_chroma_description_t* chroma = vlc_fourcc_GetChromaDescription(picture->format.i_chroma);
    if (!chroma || static_cast<unsigned>(picture->i_planes) != chroma->plane_count)
        return false;
    for (int i = 0; i < picture->i_planes; ++i) {
        plane_t& plane = picture->p[i];
        const auto& width = chroma->p[i].w;
        plane.p_pixels = pixels;
        plane.i_pitch = static_cast<int>(static_cast<unsigned>(pitch) * width.num / width.den);
        plane.i_lines = plane.i_visible_lines;
        pixels += ptrdiff_t{plane.i_pitch} * plane.i_lines;
    }
    return true;
}

void TavloUtil::picture_CopyPixels(picture_t* target, const picture_t* source, bool flip)
{
    for (int i = 0; i < std::min(target->i_planes, source->i_planes); ++i)
        copyPlane(target->p[i], source->p[i], flip);
}
