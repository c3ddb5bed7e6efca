#include "openal/AlFormat.h"

#include <AL/alext.h>

#include <algorithm>
#include <array>

namespace tavlo {

namespace {

struct Row
{
    int channels;
    std::array<ALenum, 3> formats; ///< of 8, 16 and 32 bits
};

constexpr std::array rows{
    Row{1, {AL_FORMAT_MONO8, AL_FORMAT_MONO16, AL_FORMAT_MONO_FLOAT32}},
    Row{2, {AL_FORMAT_STEREO8, AL_FORMAT_STEREO16, AL_FORMAT_STEREO_FLOAT32}},
    Row{4, {AL_FORMAT_QUAD8, AL_FORMAT_QUAD16, AL_FORMAT_QUAD32}},
    Row{6, {AL_FORMAT_51CHN8, AL_FORMAT_51CHN16, AL_FORMAT_51CHN32}},
    Row{7, {AL_FORMAT_61CHN8, AL_FORMAT_61CHN16, AL_FORMAT_61CHN32}},
    Row{8, {AL_FORMAT_71CHN8, AL_FORMAT_71CHN16, AL_FORMAT_71CHN32}},
};

} // namespace

ALenum alFormat(int channels, int bits)
{
    const auto row = std::find_if(rows.begin(), rows.end(), [&](const Row& r) { return r.channels == channels; });
    if (row == rows.end())
        return 0;
    switch (bits) {
    case 8:
        return row->formats[0];
    case 16:
        return row->formats[1];
    case 32:
        return row->formats[2];
    default:
        return 0;
    }
}

} // namespace tavlo
