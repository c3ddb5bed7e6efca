// What a frame of each image filter costs at 1280 x 720, in plain copies.

#include "DrawRoom.h"

#include "drawing/FilterTable.h"

namespace {

using namespace tavlo;
using namespace tavlo::bench;

constexpr QSize frameSize{1280, 720};

void drawFilter(benchmark::State& state, quint32 type)
{
    const graphics::TexturePtr picture = slope(frameSize, 0xff400000), below = slope(frameSize, 0xff004000);
    const auto target = room().makeDraw(frameSize);
    measureInCopies(state, [&] { target->drawFilter(type, picture, below, frameSize, false, false); });
}

const bool registered = [] {
    for (const FilterRow& row : filterRows()) {
        benchmark::RegisterBenchmark((std::string("filter/") + row.name).c_str(), drawFilter, row.type)
            ->UseRealTime()
            ->Unit(benchmark::kMillisecond);
    }
    return true;
}();

} // namespace
