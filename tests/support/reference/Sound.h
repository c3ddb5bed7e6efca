#pragma once

#include <cstddef>
#include <vector>

namespace tavlo::test {

/// Noise, the same on every run. \param amplitude of the largest samples
std::vector<float> noise(size_t count, float amplitude, unsigned seed = 1);

/// One channel of a sine.
std::vector<float> sine(double frequency, double rate, size_t count, double amplitude);

/// Interleaves two channels.
std::vector<float> stereo(const std::vector<float>& left, const std::vector<float>& right);

/// One channel out of interleaved samples.
std::vector<double> channel(const std::vector<float>& samples, size_t index, size_t channels);

/// The largest distance between two signals of one length; infinite when the lengths differ or a sample is no number.
double distance(const std::vector<float>& a, const std::vector<double>& b);

/// The frequency of a tone in Hz, from the first to the last rise through zero.
double countedFrequency(const std::vector<double>& samples, size_t begin, size_t end, double rate);

/// What a tone's own recursion does not predict: steps and clicks, in dB of full scale.
double clicks(const std::vector<double>& samples, double frequency, double rate, size_t begin = 0);

/// dB, of the mean square.
double loudness(const std::vector<double>& samples, size_t begin, size_t end);

} // namespace tavlo::test
