// What the mix of 38 channels costs: one block at a time, and as a running mix with its thread.

#include "AllocationCount.h"
#include "TavloCommonModule/audio/IGLAudioDeviceContext.h"
#include "TavloCommonModule/audio/IGLAudioRenderer.h"
#include "TavloCommonModule/audio/LoopbackMixer.h"
#include "TavloCommonModule/audio/MixInput.h"
#include "base/CTempldateHelper.h"
#include "base/ModuleLibrary.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>
#include <ctime>
#include <memory>
#include <thread>
#include <vector>

namespace {

constexpr int rate = 48000;
constexpr int channelCount = 38;
constexpr int block = rate / 100;

std::vector<qint16> tone()
{
    std::vector<qint16> samples;
    for (int i = 0; i < block; ++i) {
        samples.push_back(static_cast<qint16>(800 * std::sin(0.05 * i)));
        samples.push_back(static_cast<qint16>(-samples.back() / 2));
    }
    return samples;
}

/// Blocks of 10 ms of every channel go in at the rate of the argument, and one of the mix comes out.
void mixOfAllChannels(benchmark::State& state)
{
    tavlo::LoopbackMixer mixer;
    if (!mixer.open(2, rate)) {
        state.SkipWithError("no loopback device");
        return;
    }
    const int sourceRate = static_cast<int>(state.range(0));
    const auto samples = tone();
    std::vector<std::shared_ptr<tavlo::MixInput>> inputs;
    for (int i = 0; i < channelCount; ++i) {
        inputs.push_back(mixer.add());
        inputs.back()->listen();
    }
    std::vector<float> mixed(block * 2);
    const auto once = [&] {
        for (const auto& input : inputs)
            input->write(samples.data(), sourceRate / 100 * 4, {2, 16, sourceRate});
        mixer.mix(mixed.data(), 0.8F);
    };
    for (int i = 0; i < 500; ++i)
        once();
    const tavlo::bench::AllocationCount allocations;
    qint64 blocks = 0;
    for (auto _ : state) {
        once();
        ++blocks;
    }
    const qint64 allocated = allocations.count();
    state.counters["x_real_time"] = benchmark::Counter(static_cast<double>(blocks) / 100, benchmark::Counter::kIsRate);
    state.counters["allocations"] = static_cast<double>(allocated) / static_cast<double>(blocks);
}

/// Processor time of the whole program while the mix runs for two seconds on a device; the library's null device counts
/// as one (ALSOFT_DRIVERS=null).
void runningMix(benchmark::State& state)
{
    CTempldateHelper<IGLAudioDeviceContext> context("TavloCommonModule", "CreateTavloGLAudioDeviceContext");
    if (!context.create() || !context->initGLAudioDevice("Auto", {}, rate, 2, 16, nullptr)) {
        state.SkipWithError("no sound device");
        return;
    }
    tavlo::ModuleLibrary module(tavlo::engineDirectory() + "/TavloCommonModule", "CreateTavloGLAudioRenderer");
    std::vector<tavlo::InterfacePtr<IGLAudioRenderer>> renderers;
    for (int i = 0; i < channelCount; ++i) {
        renderers.emplace_back(
            static_cast<IGLAudioRenderer*>(module.make(IGLAudioRenderer::interfaceId, TavloInterfaceVersion)));
        renderers.back()->create(context.get());
        renderers.back()->listen();
    }
    context->createGLAudioDevice(1);
    const auto samples = tone();
    auto next = std::chrono::steady_clock::now();
    const auto run = [&](int blocks) {
        for (int i = 0; i < blocks; ++i) {
            for (const auto& renderer : renderers)
                renderer->write(samples.data(), block * 4, 2, 16, rate);
            next += std::chrono::milliseconds(10);
            std::this_thread::sleep_until(next);
        }
    };
    run(100);
    for (auto _ : state) {
        const tavlo::bench::AllocationCount allocations;
        const auto before = std::clock();
        run(200);
        const auto used = static_cast<double>(std::clock() - before) / CLOCKS_PER_SEC;
        const qint64 allocated = allocations.count();
        state.counters["percent_of_a_core"] = 100.0 * used / 2.0;
        state.counters["allocations"] = static_cast<double>(allocated) / 200;
    }
    for (const auto& renderer : renderers)
        renderer->release();
    context->closeGLAudioDevice();
}

BENCHMARK(mixOfAllChannels)->Arg(48000)->Arg(44100);
BENCHMARK(runningMix)->Iterations(1)->Unit(benchmark::kSecond);

} // namespace
