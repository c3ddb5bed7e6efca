// What a picture's way through the draw object costs: against the same shader's quad with nothing around it, in
// allocations, through the passes of a keyed source, and what the first start of the effects takes.

#include "DrawRoom.h"

#include "drawing/PictureChroma.h"

#include <QCoreApplication>

#include <algorithm>

namespace {

using namespace tavlo;
using namespace tavlo::bench;
using namespace tavlo::graphics;

constexpr quint32 rgba = chromaRgba, i420 = tavloFourcc("I420");

/// The pass of simple.fx that a draw on a cleared target takes.
constexpr quint32 passFor(quint32 chroma) { return isYuv(chroma) ? 2 : 1; }

QSizeF sizeOf(const benchmark::State& state)
{
    return {static_cast<double>(state.range(0)), static_cast<double>(state.range(1))};
}

/// The draw object's own way.
void drawPicture(benchmark::State& state, quint32 chroma)
{
    const Source source(chroma, sizeOf(state));
    const auto target = room().makeDraw(source.size);
    measure(state, [&] {
        target->drawPicture(source.chroma, source.texture, source.size, source.planes, nullptr, true, false, false);
    });
}

/// The same program and values, set once; only the quad is drawn.
void bareQuad(benchmark::State& state, quint32 chroma)
{
    Context& context = *room().context;
    const Source source(chroma, sizeOf(state));
    const auto target = room().makeDraw(source.size);
    target->drawPicture(source.chroma, source.texture, source.size, source.planes, nullptr, true, false, false);

    const auto vertices = std::as_bytes(std::span(fullQuad));
    const auto indices = std::as_bytes(std::span(quadIndices));
    auto picture = room().store->effect(0)->GetVariableByName("sampler0").AsShaderResource();
    picture.SetResource(source.texture);
    picture.SetSampler(Sampler::NearestClamp);
    context.setRenderTarget(target->targetResource());
    context.setViewport({0, 0, static_cast<int>(source.size.width()), static_cast<int>(source.size.height())});
    room().store->technique(0).GetPassByIndex(passFor(chroma)).Apply(context);
    context.setInputLayout(room().store->inputLayout(0));
    context.setVertexBuffer(room().device->createBuffer({sizeof(Quad), BufferKind::Vertex, false}, vertices),
                            sizeof(QuadVertex), 0);
    context.setIndexBuffer(
        room().device->createBuffer({static_cast<quint32>(indices.size()), BufferKind::Index, false}, indices));
    measure(state, [&] { context.drawIndexed(static_cast<quint32>(quadIndices.size()), 0); });
    picture.SetResource(nullptr);
    context.clearState();
}

/// Crop and adjustment, then the keys: 1 chroma, 2 luma, 3 both.
void keyedSource(benchmark::State& state)
{
    const Source source(i420, {1280, 720});
    const auto first = room().makeDraw(source.size), second = room().makeDraw(source.size);
    const auto keys = static_cast<quint32>(state.range(0));
    tagTavloPresentPictureFilterParam process;
    process.rectCropParam = {1, {0.1F, 0.1F, 0.9F, 0.9F}};
    process.colorAdjustParam = {1, 0.1F, 0.05F, 20, 0.9F};
    process.chromaKeyParam = {keys & 1, 0, 0.2F, 0.2F, 0.3F, {0.3F, 0.3F}};
    process.lumaKeyParam = {keys & 2, 0.1F, 0.1F, 0.1F};
    measure(state, [&] {
        drawKeyedSource(*first, *second, source.chroma, source.texture, source.size, source.planes, process, true,
                        false);
    });
}

/// The effects compiled, and written to an empty cache: as the room did it, when the driver's cache was empty too.
void firstStart(benchmark::State& state)
{
    for (auto _ : state)
        state.SetIterationTime(room().firstStartSeconds);
}

/// The effects read from the cache.
void cachedStart(benchmark::State& state)
{
    for (auto _ : state) {
        TavloGraphicsRes store;
        store.create(ITavloGraphicsRes::WithoutImages, room().device, room().context,
                     room().cache.path() + QLatin1Char('/'));
    }
}

double smallest(const std::vector<double>& values) { return *std::ranges::min_element(values); }

/// From hardly a pixel, where what comes beside the pixels shows. A busy machine spoils an average: with repetitions the
/// best one counts, taken in turns with the others.
void pictureSizes(benchmark::internal::Benchmark* bench)
{
    bench->Args({16, 16})
        ->Args({1280, 720})
        ->Args({1920, 1080})
        ->Args({3840, 2160})
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
    bench->ComputeStatistics("best", &smallest);
}

BENCHMARK_CAPTURE(bareQuad, rgba, rgba)->Apply(pictureSizes);
BENCHMARK_CAPTURE(drawPicture, rgba, rgba)->Apply(pictureSizes);
BENCHMARK_CAPTURE(bareQuad, i420, i420)->Apply(pictureSizes);
BENCHMARK_CAPTURE(drawPicture, i420, i420)->Apply(pictureSizes);
BENCHMARK(keyedSource)->DenseRange(0, 3)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(firstStart)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(1);
BENCHMARK(cachedStart)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

int main(int argc, char** argv)
{
    // The driver keeps compiled shaders too: a first start is one without those. Switched off, the driver's cache would
    // take its program binaries with it.
    const QTemporaryDir driverCache;
    qputenv("MESA_SHADER_CACHE_DIR", driverCache.path().toLocal8Bit());
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
