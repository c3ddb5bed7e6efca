#pragma once

#include "shared/VlcTypes.h"

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

/// Noise, the same on every run. \param amplitude of the largest samples
std::vector<float> noise(size_t count, float amplitude, unsigned seed = 1);

/// One channel of a sine.
std::vector<float> sine(double frequency, double rate, size_t count, double amplitude);

/// Interleaves two channels.
std::vector<float> stereo(const std::vector<float>& left, const std::vector<float>& right);

/// One channel out of interleaved samples.
std::vector<double> channel(const std::vector<float>& samples, size_t index, size_t channels);

/// Runs samples through a filter in blocks of changing lengths, as a seam between blocks must not be heard.
std::vector<float> run(TavloAudioFilter& filter, const tagTavloAudioEffectParam& param, std::vector<float> samples,
                       int channels, int rate);

/// The largest distance between two signals of one length; infinite when the lengths differ or a sample is no number.
double distance(const std::vector<float>& a, const std::vector<double>& b);

/// The frequency of a tone in Hz: least squares on x[n-k] + x[n+k] = 2 cos(k w) x[n], sharpest with k at a quarter of
/// the period.
double toneFrequency(const std::vector<double>& samples, size_t begin, size_t end, double rate, size_t k = 1);

/// dB, of the mean square.
double loudness(const std::vector<double>& samples, size_t begin, size_t end);

} // namespace tavlo::test
