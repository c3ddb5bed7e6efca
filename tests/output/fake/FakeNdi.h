#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// What the fake library was given, in words.
struct FakeNdi
{
    struct Picture
    {
        int width = 0, height = 0, fpsNum = 0, fpsDen = 0;
        std::string chroma;
        int64_t timecode = 0;
        std::vector<uint8_t> lastRow; ///< of the picture
    };
    struct Sound
    {
        int rate = 0, channels = 0;
        int64_t timecode = 0;
        std::vector<int16_t> samples;
    };

    std::string name;
    std::vector<Picture> pictures;
    std::vector<Sound> sounds;
    int created = 0, destroyed = 0;
};

extern "C" FakeNdi* fakeNdi();
