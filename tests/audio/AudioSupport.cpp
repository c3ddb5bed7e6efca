#include "audio/AudioSupport.h"

#include "audio/TavloAudioFilter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>

namespace tavlo::test {

BlockPtr blockOf(const void* data, size_t bytes)
{
    BlockPtr block(block_Alloc(bytes));
    if (bytes > 0)
        memcpy(block->p_buffer, data, bytes);
    return block;
}

std::vector<float> noise(size_t count, float amplitude, unsigned seed)
{
    std::minstd_rand generator(seed);
    std::vector<float> samples(count);
    for (float& s : samples)
        s = amplitude * (static_cast<float>(generator()) / static_cast<float>(std::minstd_rand::max()) * 2.0F - 1.0F);
    return samples;
}

std::vector<float> sine(double frequency, double rate, size_t count, double amplitude)
{
    std::vector<float> samples(count);
    for (size_t i = 0; i < count; ++i)
        samples[i] = static_cast<float>(amplitude *
                                        std::sin(2.0 * std::numbers::pi * frequency * static_cast<double>(i) / rate));
    return samples;
}

std::vector<float> stereo(const std::vector<float>& left, const std::vector<float>& right)
{
    std::vector<float> both;
    both.reserve(left.size() * 2);
    for (size_t i = 0; i < left.size(); ++i) {
        both.push_back(left[i]);
        both.push_back(right[i]);
    }
    return both;
}

std::vector<double> channel(const std::vector<float>& samples, size_t index, size_t channels)
{
    std::vector<double> one;
    for (size_t i = index; i < samples.size(); i += channels)
        one.push_back(samples[i]);
    return one;
}

std::vector<float> run(TavloAudioFilter& filter, const tagTavloAudioEffectParam& param, std::vector<float> samples,
                       int channels, int rate)
{
    constexpr std::array lengths{480, 1, 1024, 7, 960};
    const int frames = static_cast<int>(samples.size()) / channels;
    size_t turn = 0;
    for (int done = 0; done < frames;) {
        const int length = std::min(lengths[turn++ % lengths.size()], frames - done);
        filter.processSamples(param, samples.data() + done * channels, length, channels, 16, rate);
        done += length;
    }
    return samples;
}

double distance(const std::vector<float>& a, const std::vector<double>& b)
{
    double largest = a.size() == b.size() ? 0.0 : std::numeric_limits<double>::infinity();
    for (size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
        const double d = std::abs(static_cast<double>(a[i]) - b[i]);
        largest = d <= largest ? largest : std::isnan(d) ? std::numeric_limits<double>::infinity() : d;
    }
    return largest;
}

double toneFrequency(const std::vector<double>& samples, size_t begin, size_t end, double rate, size_t k)
{
    double product = 0.0;
    double power = 0.0;
    for (size_t i = begin + k; i + k < end; ++i) {
        product += (samples[i - k] + samples[i + k]) * samples[i];
        power += samples[i] * samples[i];
    }
    return std::acos(product / power / 2.0) * rate / (2.0 * std::numbers::pi * static_cast<double>(k));
}

double loudness(const std::vector<double>& samples, size_t begin, size_t end)
{
    double power = 0.0;
    for (size_t i = begin; i < end; ++i)
        power += samples[i] * samples[i];
    return 10.0 * std::log10(power / static_cast<double>(end - begin) + 1e-30);
}

} // namespace tavlo::test
