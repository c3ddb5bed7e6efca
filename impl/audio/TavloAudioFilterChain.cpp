#include "audio/TavloAudioFilterChain.h"

#include "audio/SampleFormat.h"
#include "audio/TavloAudioFilterDelay.h"
#include "audio/TavloAudioFilterEqualizer.h"
#include "audio/TavloAudioFilterNoiseGate.h"
#include "audio/TavloAudioFilterNoiseSuppress.h"
#include "audio/TavloAudioFilterPitch.h"
#include "audio/TavloAudioFilterVolcalCut.h"
#include "shared/VlcTypes.h"

#include <QDebug>

#include <algorithm>

TavloAudioFilterChain::TavloAudioFilterChain() = default;

TavloAudioFilterChain::~TavloAudioFilterChain() = default;

void TavloAudioFilterChain::create()
{
    destroy();
    _blockFilters.push_back(std::make_unique<TavloAudioFilterNoiseSuppress>());
    _sampleFilters.push_back(std::make_unique<TavloAudioFilterNoiseGate>());
    _sampleFilters.push_back(std::make_unique<TavloAudioFilterVolcalCut>());
    _sampleFilters.push_back(std::make_unique<TavloAudioFilterEqualizer>());
    _sampleFilters.push_back(std::make_unique<TavloAudioFilterDelay>());
    _sampleFilters.push_back(std::make_unique<TavloAudioFilterPitch>());
}

void TavloAudioFilterChain::destroy()
{
    _blockFilters.clear();
    _sampleFilters.clear();
}

void TavloAudioFilterChain::reset()
{
    for (const auto& filter : _blockFilters)
        filter->reset();
    for (const auto& filter : _sampleFilters)
        filter->reset();
}

block_t* TavloAudioFilterChain::process(const tagTavloAudioEffectParam& param, block_t* block, int channels, int bits,
                                        int rate, qint64 extra)
{
    for (const auto& filter : _blockFilters) {
        if (!block)
            return nullptr;
        block = filter->processBlock(param, block, channels, bits, rate, extra);
    }
    if (!block || channels <= 0)
        return block;
    bool anyEnabled = false;
    for (const auto& filter : _sampleFilters)
        anyEnabled |= filter->isEnabled(param, channels, bits, rate);
    if (!anyEnabled)
        return block;
    if (bits != 8 && bits != 16) {
        qDebug() << "unknown sample bit size";
        return block;
    }
    processSamples(param, *block, channels, bits, rate);
    return block;
}

void TavloAudioFilterChain::processSamples(const tagTavloAudioEffectParam& param, block_t& block, int channels,
                                           int bits, int rate)
{
    const size_t count = bits == 8 ? block.i_buffer : block.i_buffer / 2;
    const int frames = static_cast<int>(count / static_cast<size_t>(channels));
    float* const samples = scratch(count);
    tavlo::samplesToFloat(block.p_buffer, bits, count, samples);
    int handled = 0;
    for (const auto& filter : _sampleFilters)
        handled += filter->processSamples(param, samples, frames, channels, bits, rate);
    if (handled != 0)
        tavlo::samplesFromFloat(samples, count, bits, block.p_buffer);
}

float* TavloAudioFilterChain::scratch(size_t count)
{
    if (count > _scratchCapacity) {
        _scratch = std::make_unique<float[]>(count + 4);
        _scratchCapacity = count + 4;
    }
    return _scratch.get();
}
