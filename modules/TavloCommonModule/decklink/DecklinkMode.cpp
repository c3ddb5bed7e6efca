#include "TavloCommonModule/decklink/DecklinkMode.h"

#include <algorithm>
#include <array>

namespace tavlo::decklink {

namespace {

constexpr std::array table{
    Mode{"ntsc", 720, 486, 30'000, 1'001},
    Mode{"ntsc2398", 720, 486, 24'000, 1'001},
    Mode{"ntsc-p", 720, 486, 60'000, 1'001},
    Mode{"pal", 720, 576, 25, 1},
    Mode{"pal-p", 720, 576, 50, 1},
    Mode{"720p50", 1280, 720, 50, 1},
    Mode{"720p5994", 1280, 720, 60'000, 1'001},
    Mode{"720p60", 1280, 720, 60, 1},
    Mode{"1080i50", 1920, 1080, 25, 1},
    Mode{"1080i5994", 1920, 1080, 30'000, 1'001},
    Mode{"1080i60", 1920, 1080, 30, 1},
    Mode{"1080p2398", 1920, 1080, 24'000, 1'001},
    Mode{"1080p24", 1920, 1080, 24, 1},
    Mode{"1080p25", 1920, 1080, 25, 1},
    Mode{"1080p2997", 1920, 1080, 30'000, 1'001},
    Mode{"1080p30", 1920, 1080, 30, 1},
    Mode{"1080p50", 1920, 1080, 50, 1},
    Mode{"1080p5994", 1920, 1080, 60'000, 1'001},
    Mode{"1080p60", 1920, 1080, 60, 1},
    Mode{"2kdcip2398", 2048, 1080, 24'000, 1'001},
    Mode{"2kdcip24", 2048, 1080, 24, 1},
    Mode{"2kdcip25", 2048, 1080, 25, 1},
    Mode{"2160p2398", 3840, 2160, 24'000, 1'001},
    Mode{"2160p24", 3840, 2160, 24, 1},
    Mode{"2160p25", 3840, 2160, 25, 1},
    Mode{"2160p2997", 3840, 2160, 30'000, 1'001},
    Mode{"2160p30", 3840, 2160, 30, 1},
    Mode{"2160p50", 3840, 2160, 50, 1},
    Mode{"2160p5994", 3840, 2160, 60'000, 1'001},
    Mode{"2160p60", 3840, 2160, 60, 1},
};

} // namespace

std::span<const Mode> modes() { return table; }

const Mode* findMode(const QString& name)
{
    const auto found = std::ranges::find_if(table, [&](const Mode& mode) { return name == QLatin1String(mode.name); });
    return found == table.end() ? nullptr : &*found;
}

} // namespace tavlo::decklink
