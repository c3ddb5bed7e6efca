// What a frame of each transition costs at 1280 x 720, in plain copies; of each family as the mean of its kinds; and what
// a mask costs to paint.

#include "DrawRoom.h"

#include "drawing/TransitionTable.h"

#include <QImage>

namespace {

using namespace tavlo;
using namespace tavlo::bench;

constexpr QSize frameSize{1280, 720};

/// The kinds one after the other, a frame of each turn.
void drawTransitions(benchmark::State& state, const std::vector<quint32>& kinds)
{
    const graphics::TexturePtr outgoing = slope(frameSize, 0xff400000), incoming = slope(frameSize, 0xff004000);
    const auto target = room().makeDraw(frameSize);
    const auto draw = [&](quint32 kind) {
        target->drawTransition(outgoing, frameSize, false, incoming, frameSize, false, 0.45F, kind);
    };
    for (const quint32 kind : kinds)
        draw(kind); // a software renderer compiles its code for a shader with the first draw
    measureInCopies(state, [&] {
        for (const quint32 kind : kinds)
            draw(kind);
    });
    for (const char* const counter : {"copies", "ms", "allocations"})
        state.counters[counter] = state.counters[counter] / static_cast<double>(kinds.size());
}

void paintMask(benchmark::State& state, quint32 kind)
{
    QImage mask(512, 512, QImage::Format_ARGB32);
    TransitionMask painter;
    for (auto _ : state)
        painter.paintTransition(kind, 0.4, mask);
}

void add(const std::string& name, const std::vector<quint32>& kinds)
{
    benchmark::RegisterBenchmark(name.c_str(), drawTransitions, kinds)->UseRealTime()->Unit(benchmark::kMillisecond);
}

const bool registered = [] {
    constexpr std::array families{"", "erase", "fade", "glide", "stretch", "blur", "distortion", "color", "lumas"};
    std::array<std::vector<quint32>, families.size()> kindsOf;
    for (const TransitionRow& row : transitionRows()) {
        kindsOf[transitionFamily(row.kind)].push_back(row.kind);
        add(std::string("transition/") + row.name, {row.kind});
        if (row.mask) {
            benchmark::RegisterBenchmark((std::string("mask/") + row.name).c_str(), paintMask, row.kind)
                ->Unit(benchmark::kMillisecond);
        }
    }
    for (std::size_t family = 1; family < families.size(); ++family)
        add(std::string("family/") + families[family], kindsOf[family]);
    return true;
}();

} // namespace
