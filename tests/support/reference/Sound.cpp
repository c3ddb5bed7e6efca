#include "support/reference/Sound.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>

namespace tavlo::test {

std::vector<float> noise(size_t count, float amplitude, unsigned seed)
{
    std::minstd_rand generator(seed);
    std::vector<float> samples(count);
    for (float& s : samples)
        s = amplitude * (float(generator()) / float(std::minstd_rand::max()) * 2.0F - 1.0F);
    return samples;
}

std::vector<float> sine(double frequency, double rate, size_t count, double amplitude)
{
    std::vector<float> samples(count);
    for (size_t i = 0; i < count; ++i)
        samples[i] = float(amplitude * std::sin(2.0 * std::numbers::pi * frequency * double(i) / rate));
    return samples;
}

std::vector<float> stereo(const std::vector<float>& left, const std::vector<float>& right)
{
    std::vector<float> both;
    for (size_t i = 0; i < left.size(); ++i)
        both.insert(both.end(), {left[i], right[i]});
    return both;
}

std::vector<double> channel(const std::vector<float>& samples, size_t index, size_t channels)
{
    std::vector<double> one;
    for (size_t i = index; i < samples.size(); i += channels)
        one.push_back(samples[i]);
    return one;
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

double countedFrequency(const std::vector<double>& samples, size_t begin, size_t end, double rate)
{
    double first = -1, last = 0;
    int periods = -1;
    for (size_t i = begin; i + 1 < end; ++i) {
        if (samples[i] >= 0 || samples[i + 1] < 0)
            continue;
        last = static_cast<double>(i) + samples[i] / (samples[i] - samples[i + 1]);
        first = first < 0 ? last : first;
        ++periods;
    }
    return periods / (last - first) * rate;
}

double clicks(const std::vector<double>& samples, double frequency, double rate, size_t begin)
{
    const double twoCos = 2 * std::cos(2 * std::numbers::pi * frequency / rate);
    double largest = 0;
    for (size_t i = begin; i + 2 < samples.size(); ++i)
        largest = std::max(largest, std::abs(samples[i + 2] - twoCos * samples[i + 1] + samples[i]));
    return 20 * std::log10(largest + 1e-9);
}

double loudness(const std::vector<double>& samples, size_t begin, size_t end)
{
    double power = 0.0;
    for (size_t i = begin; i < end; ++i)
        power += samples[i] * samples[i];
    return 10.0 * std::log10(power / static_cast<double>(end - begin) + 1e-30);
}

} // namespace tavlo::test
