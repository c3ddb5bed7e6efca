#pragma once

#include "shared/VlcTypes.h"
#include "support/reference/Sound.h"

#include <QtGlobal>

#include <memory>
#include <vector>

class TavloAudioFilter;
struct tagTavloAudioEffectParam;

namespace tavlo::test {

struct ReleaseBlock
{
    void operator()(block_t* block) const { block_Release(block); }
};
using BlockPtr = std::unique_ptr<block_t, ReleaseBlock>;

/// A block of that content.
BlockPtr blockOf(const void* data, size_t bytes);

template <class Sample>
BlockPtr blockOf(const std::vector<Sample>& samples)
{
    return blockOf(samples.data(), samples.size() * sizeof(Sample));
}

template <class Sample>
std::vector<Sample> samplesOf(const block_t& block)
{
    std::vector<Sample> samples(block.i_buffer / sizeof(Sample));
    if (!samples.empty())
        memcpy(samples.data(), block.p_buffer, samples.size() * sizeof(Sample));
    return samples;
}

/// Runs samples through a filter in blocks of changing lengths, as a seam between blocks must not be heard.
std::vector<float> run(TavloAudioFilter& filter, const tagTavloAudioEffectParam& param, std::vector<float> samples,
                       int channels, int rate);

} // namespace tavlo::test
