#include "audio/TavloAudioFilterChain.h"

#include "audio/AudioSupport.h"
#include "support/LogCapture.h"

#include <tavlo/TavloPresentUtil.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>

namespace tavlo::test {
namespace {

class FilterChain : public testing::Test
{
protected:
    FilterChain() { chain.create(); }

    template <class Sample>
    std::vector<Sample> process(const std::vector<Sample>& samples, int channels, int rate = 48000)
    {
        const BlockPtr block = blockOf(samples);
        EXPECT_EQ(chain.process(param, block.get(), channels, sizeof(Sample) * 8, rate, 0), block.get());
        return samplesOf<Sample>(*block);
    }

    TavloAudioFilterChain chain;
    tagTavloAudioEffectParam param;
};

template <class Sample>
std::vector<Sample> every()
{
    std::vector<Sample> values(size_t{1} << (8 * sizeof(Sample)));
    std::iota(values.begin(), values.end(), std::numeric_limits<Sample>::min());
    return values;
}

TEST_F(FilterChain, SwitchedOffEveryBitStays)
{
    EXPECT_EQ(process(every<qint16>(), 2), every<qint16>());
    EXPECT_EQ(process(every<quint8>(), 2), every<quint8>());
    EXPECT_EQ(chain.process(param, nullptr, 2, 16, 48000, 0), nullptr);

    param.processNoiseGate.enable = 1;
    EXPECT_EQ(process(every<qint16>(), 0), every<qint16>());
    const LogCapture log;
    EXPECT_EQ(process(std::vector<qint32>(64, 12345), 2), std::vector<qint32>(64, 12345));
    EXPECT_EQ(log.count("unknown sample bit size"), 1);
    chain.destroy();
    EXPECT_EQ(process(every<qint16>(), 2), every<qint16>());
}

// The gate is on but has no rate to work at: all samples go to floats and back.
TEST_F(FilterChain, ConversionThereAndBackIsExact)
{
    param.processNoiseGate.enable = 1;
    EXPECT_EQ(process(every<qint16>(), 2, 0), every<qint16>());
    EXPECT_EQ(process(every<quint8>(), 2, 0), every<quint8>());
    std::vector<qint16> odd{1, 2, 3, 4, 5}; // half a frame too many
    EXPECT_EQ(process(odd, 2, 0), odd);
}

TEST_F(FilterChain, WhatGetsTooLoudSaturates)
{
    TavloPresentUtil::loadAudioChangePreset(9, param);
    param.equalizer = {{}, 20.0, 10}; // 2.5 times as loud
    EXPECT_EQ(process(std::vector<qint16>{32767, -32768, 20000, -20000, 1, -1, 3, 4000}, 1),
              (std::vector<qint16>{32767, -32768, 32767, -32768, 2, -2, 8, 10000})); // halves go to even
    EXPECT_EQ(process(std::vector<quint8>{255, 0, 200, 60, 128, 129, 127, 178}, 1),
              (std::vector<quint8>{255, 0, 255, 0, 128, 131, 125, 253})); // halves go away from zero
}

TEST_F(FilterChain, FiltersWorkInTheirOrder)
{
    // What the equalizer makes loud enough was already silenced by the gate.
    TavloPresentUtil::loadAudioChangePreset(9, param);
    param.equalizer.preamp = 20.0;
    param.processNoiseGate = {1, -20.0, -26.0, 1, 1, 1};
    EXPECT_EQ(process(std::vector<qint16>(960, 2500), 2), std::vector<qint16>(960, 0));
    // A changed record counts after a reset.
    param.processNoiseGate = {1, -30.0, -36.0, 1, 1, 1};
    EXPECT_EQ(process(std::vector<qint16>(960, 2500), 2), std::vector<qint16>(960, 0));
    chain.reset();
    EXPECT_GT(process(std::vector<qint16>(960, 2500), 2).back(), 2500);
}

TEST_F(FilterChain, MonoVocalCutIsLoggedOnceABlockAndPasses)
{
    TavloPresentUtil::loadAudioVolcalCutPreset(2, param.processVolcalCut);
    const LogCapture log;
    EXPECT_EQ(process(every<qint16>(), 1), every<qint16>());
    param.processNoiseGate.enable = 1; // the samples go through the list, and it is not told again
    process(every<qint16>(), 1, 0);
    EXPECT_EQ(log.count("TavloAudioFilterVolcalCut::process channel < 2"), 2);
}

TEST_F(FilterChain, SuppressesNoiseThroughTheModule)
{
    param.processNoiseSuppress = {1, 20.0};
    std::vector<double> in, out;
    for (unsigned i = 0; i < 75; ++i) { // 40 ms each
        std::vector<qint16> part;
        for (const float s : noise(1920, 0.05F, i))
            in.push_back(part.emplace_back(qint16(std::lround(s * 32767))) / 32767.0);
        for (const qint16 s : process(part, 1))
            out.push_back(s / 32767.0);
    }
    EXPECT_LT(loudness(out, 72000, 140000), loudness(in, 72000, 140000) - 15.0);
}

} // namespace
} // namespace tavlo::test
