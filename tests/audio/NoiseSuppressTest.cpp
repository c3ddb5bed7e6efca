#include "TavloAudioPortModule/ITavloAudioNoiseSuppress.h"

#include "audio/AudioSupport.h"
#include "base/CTempldateHelper.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tavlo::test {
namespace {

constexpr int rate = 48000;

class NoiseSuppress : public testing::Test
{
protected:
    NoiseSuppress() : suppressor("TavloAudioPortModule", "CreateTavloAudioNoiseSuppress") { suppressor.create(); }

    void SetUp() override { ASSERT_TRUE(suppressor.isReady()); }

    /// \param frames  of each block
    template <class Sample>
    std::vector<Sample> process(const std::vector<Sample>& samples, int channels, size_t frames, int at = rate)
    {
        std::vector<Sample> out;
        const int bytes = sizeof(Sample);
        const size_t step = frames * channels;
        for (size_t i = 0; i < samples.size(); i += step) {
            const BlockPtr block = blockOf(samples.data() + i, std::min(step, samples.size() - i) * bytes);
            EXPECT_EQ(suppressor->process(block.get(), channels, 8 * bytes, at, 0), block.get());
            const auto part = samplesOf<Sample>(*block);
            out.insert(out.end(), part.begin(), part.end());
        }
        return out;
    }

    CTempldateHelper<ITavloAudioNoiseSuppress> suppressor;
};

/// Vowels of a low voice, a quarter of a second each, with pauses as long, after two seconds of nothing.
std::vector<double> voice(size_t count)
{
    std::vector<double> samples(count, 0.0);
    for (size_t i = 2 * rate; i < count; ++i) {
        const double turn = 2 * std::numbers::pi * double(i) / rate;
        for (int harmonic = 1; harmonic <= 20; ++harmonic)
            samples[i] += 0.1 * std::max(std::sin(2 * turn), 0.0) / harmonic * std::sin(harmonic * 120 * turn);
    }
    return samples;
}

/// With hiss 20 dB below, as samples of 16 bits.
std::vector<qint16> noisy(const std::vector<double>& clean, unsigned seed)
{
    const auto hiss = noise(clean.size(), 0.01F, seed);
    std::vector<qint16> out;
    for (size_t i = 0; i < clean.size(); ++i)
        out.push_back(qint16(std::lround((clean[i] + hiss[i]) * 32767)));
    return out;
}

std::vector<double> toDouble(const std::vector<qint16>& samples, size_t first = 0, size_t stride = 1)
{
    std::vector<double> out;
    for (size_t i = first; i < samples.size(); i += stride)
        out.push_back(samples[i] / 32767.0);
    return out;
}

/// The share of `wanted` in `samples` when that is late by so many samples: 1 is all of it.
double share(const std::vector<double>& samples, const std::vector<double>& wanted, size_t late)
{
    double both = 0.0, own = 0.0;
    for (size_t i = late; i < samples.size(); ++i) {
        both += samples[i] * wanted[i - late];
        own += wanted[i - late] * wanted[i - late];
    }
    return both / own;
}

TEST_F(NoiseSuppress, LowersHissAndKeepsTheVoice)
{
    const auto clean = voice(5 * rate);
    const auto in = noisy(clean, 1);
    const double before = loudness(toDouble(in), rate, 2 * rate);
    for (const int level : {6, 15, -30}) {
        ASSERT_TRUE(suppressor->open(level, 1, 16, rate));
        const auto out = toDouble(process(in, 1, 1024));
        EXPECT_NEAR(before - loudness(out, rate, 2 * rate), std::abs(level), 0.2 * std::abs(level)) << level;
        EXPECT_NEAR(share(out, clean, rate / 50), 1.0, 0.05) << level; // late by 20 ms
    }
}

TEST_F(NoiseSuppress, ChannelsAndLengthsOfBlocksDoNotMatter)
{
    const auto left = noisy(voice(3 * rate), 1);
    const auto right = noisy(std::vector<double>(3 * rate, 0.0), 2);
    std::vector<qint16> both;
    for (size_t i = 0; i < left.size(); ++i)
        both.insert(both.end(), {left[i], right[i]});
    ASSERT_TRUE(suppressor->open(20, 2, 16, rate));
    const auto out = process(both, 2, 777);
    ASSERT_TRUE(suppressor->open(20, 1, 16, rate));
    EXPECT_EQ(toDouble(out, 0, 2), toDouble(process(left, 1, 480)));
    ASSERT_TRUE(suppressor->open(20, 1, 16, rate));
    EXPECT_EQ(toDouble(out, 1, 2), toDouble(process(right, 1, 4801)));
}

TEST_F(NoiseSuppress, EightBits)
{
    ASSERT_TRUE(suppressor->open(20, 1, 8, 16000));
    std::vector<quint8> bytes;
    std::vector<double> in, out;
    for (const float s : noise(32000, 0.2F))
        in.push_back((bytes.emplace_back(quint8(std::lround(s * 127) + 128)) - 128) / 128.0);
    for (const quint8 s : process(bytes, 1, 4000, 16000))
        out.push_back((s - 128) / 128.0);
    EXPECT_LT(loudness(out, 24000, 32000), loudness(in, 24000, 32000) - 12.0);
}

TEST_F(NoiseSuppress, PassesWhatItIsNotOpenFor)
{
    const auto samples = noisy(voice(4800), 1);
    EXPECT_EQ(process(samples, 1, 480), samples); // not open at all
    ASSERT_TRUE(suppressor->open(0, 1, 16, rate));
    EXPECT_EQ(process(samples, 1, 480), samples); // no strength
    ASSERT_TRUE(suppressor->open(20, 2, 16, rate));
    EXPECT_EQ(process(samples, 1, 480), samples); // another format
    suppressor->close();
    EXPECT_EQ(process(samples, 2, 480), samples);
    const LogCapture log;
    EXPECT_FALSE(suppressor->open(20, 0, 16, rate) || suppressor->open(20, 1, 24, rate) ||
                 suppressor->open(20, 1, 16, 0));
    EXPECT_EQ(log.count("cannot process"), 3);
}

} // namespace
} // namespace tavlo::test
