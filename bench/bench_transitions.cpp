// What a frame of each transition costs at 1280 x 720, to the end of the drawing, and what a mask costs to paint.

#include "drawing/TransitionTable.h"
#include "support/TransitionStage.h"

#include <benchmark/benchmark.h>

#include <QImage>

#include <chrono>

namespace {

using namespace tavlo;

constexpr QSize frameSize{1280, 720};

TransitionStage& stage()
{
    static TransitionStage one;
    return one;
}

graphics::TexturePtr slope(QRgb from)
{
    QImage picture(frameSize, QImage::Format_RGBA8888);
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            picture.setPixel(x, y, from + static_cast<QRgb>((x / 8) << 8 | y / 4));
    }
    return stage().upload(picture);
}

void drawTransition(benchmark::State& state, quint32 kind)
{
    if (!stage().fault().isEmpty())
        return state.SkipWithError(qPrintable(stage().fault()));
    const graphics::TexturePtr outgoing = slope(0xff400000), incoming = slope(0xff004000);
    const graphics::TexturePtr target = stage().makeTarget(frameSize);
    const auto draw = [&] {
        stage().drawInto(target, kind, 0.45F, outgoing, incoming);
        stage().context().flush().wait(std::chrono::seconds(10));
    };
    draw(); // a software renderer compiles its code for a shader with the first draw
    for (auto _ : state)
        draw();
}

void paintMask(benchmark::State& state, quint32 kind)
{
    QImage mask(512, 512, QImage::Format_ARGB32);
    TransitionMask painter;
    for (auto _ : state)
        painter.paintTransition(kind, 0.4, mask);
}

} // namespace

int main(int argc, char** argv)
{
    for (const TransitionRow& row : transitionRows()) {
        const quint32 kind = row.kind;
        const std::string name = row.name;
        benchmark::RegisterBenchmark(("draw/" + name).c_str(), drawTransition, kind)
            ->UseRealTime()
            ->Unit(benchmark::kMillisecond);
        if (row.mask)
            benchmark::RegisterBenchmark(("mask/" + name).c_str(), paintMask, kind)->Unit(benchmark::kMillisecond);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
