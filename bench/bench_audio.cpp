// What the sound path costs: the filter chain of one channel at 48 kHz stereo in blocks of 20 ms, as a factor of real
// time, and how often it asks for memory once it is warm.

#include "AllocationCount.h"
#include "audio/TavloAudioFilterChain.h"
#include "audio/TavloAudioResample.h"
#include "shared/VlcTypes.h"

#include <tavlo/TavloPresentUtil.h>

#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

constexpr int rate = 48000;
constexpr int blockFrames = 960;
constexpr int blockCount = 100;

/// Two seconds of something between a voice and music, never silent.
std::vector<qint16> programme()
{
    std::vector<qint16> samples;
    for (int i = 0; i < blockFrames * blockCount; ++i) {
        const double t = static_cast<double>(i) / rate;
        const double voice = 0.3 * std::sin(900 * t + 3 * std::sin(30 * t)) * (1.2 + std::sin(20 * t));
        samples.push_back(static_cast<qint16>(9000 * voice + std::rand() % 300));
        samples.push_back(static_cast<qint16>(7000 * voice - std::rand() % 300));
    }
    return samples;
}

/// Runs `process(block)` for every block of the programme; reports the factor of real time and allocations a block.
template <class Process>
void runBlocks(benchmark::State& state, Process process)
{
    const auto samples = programme();
    block_t* const block = block_Alloc(blockFrames * 4);
    const auto once = [&](size_t i) {
        memcpy(block->p_buffer, samples.data() + i * blockFrames * 2, blockFrames * 4);
        process(block);
    };
    for (size_t i = 0; i < blockCount; ++i)
        once(i);
    qint64 blocks = 0;
    const tavlo::bench::AllocationCount allocations;
    for (auto _ : state)
        once(static_cast<size_t>(blocks++ % blockCount));
    const qint64 allocated = allocations.count();
    state.counters["x_real_time"] =
        benchmark::Counter(static_cast<double>(blocks) * blockFrames / rate, benchmark::Counter::kIsRate);
    state.counters["allocations"] = static_cast<double>(allocated) / static_cast<double>(blocks);
    if (allocated != 0)
        state.SkipWithError("the block path allocates");
    block_Release(block);
}

void runChain(benchmark::State& state, const tagTavloAudioEffectParam& param)
{
    TavloAudioFilterChain chain;
    chain.create();
    runBlocks(state, [&](block_t* block) { chain.process(param, block, 2, 16, rate, 0); });
}

/// Gate, vocal cut inside a band, and the effect of that number.
tagTavloAudioEffectParam everythingWith(TavloAudioChangePreset preset)
{
    tagTavloAudioEffectParam param;
    param.processNoiseGate = {1, -40.0, -46.0, 10, 50, 100};
    TavloPresentUtil::loadAudioVolcalCutPreset(3, param.processVolcalCut);
    TavloPresentUtil::loadAudioChangePreset(preset, param);
    return param;
}

void chainOff(benchmark::State& state) { runChain(state, {}); }

void chainWithEqualizer(benchmark::State& state) { runChain(state, everythingWith(20)); }

void chainWithDelay(benchmark::State& state) { runChain(state, everythingWith(6)); }

void chainWithPitch(benchmark::State& state) { runChain(state, everythingWith(3)); }

void noiseSuppression(benchmark::State& state)
{
    tagTavloAudioEffectParam param;
    param.processNoiseSuppress = {1, 20.0};
    runChain(state, param);
}

void meter(benchmark::State& state)
{
    std::array<float, 8> levels{};
    runBlocks(state, [&](block_t* block) {
        TavloPresentUtil::updateAudioLevelData(levels.data(), block->p_buffer, static_cast<unsigned>(block->i_buffer),
                                               2, 16, rate, 0.8);
        benchmark::DoNotOptimize(levels);
    });
}

void resample44100To48000(benchmark::State& state)
{
    TavloAudioResample converter;
    tagTavloAudioInfo source;
    source.sampleRate = 44100;
    runBlocks(state, [&](block_t* block) { benchmark::DoNotOptimize(converter.process(block, source)); });
}

BENCHMARK(chainOff);
BENCHMARK(chainWithEqualizer);
BENCHMARK(chainWithDelay);
BENCHMARK(chainWithPitch);
BENCHMARK(noiseSuppression);
BENCHMARK(meter);
BENCHMARK(resample44100To48000);

} // namespace

BENCHMARK_MAIN();
