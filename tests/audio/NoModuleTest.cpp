#include "audio/TavloAudioFilterChain.h"

#include "audio/AudioSupport.h"
#include "support/LogCapture.h"

#include <tavlo/TavloPresentUtil.h>

#include <gtest/gtest.h>

namespace tavlo::test {
namespace {

TEST(NoModule, NoiseSuppressionPassesAndTheOtherFiltersWork)
{
    const LogCapture log;
    TavloAudioFilterChain chain;
    chain.create();
    EXPECT_EQ(log.count("TavloAudioPortModule"), 1); // which file is missing
    tagTavloAudioEffectParam param;
    param.processNoiseSuppress = {1, 20.0};
    const std::vector<qint16> samples(480, 1234);
    const BlockPtr block = blockOf(samples);
    EXPECT_EQ(chain.process(param, block.get(), 1, 16, 48000, 0), block.get());
    EXPECT_EQ(samplesOf<qint16>(*block), samples);
    TavloPresentUtil::loadAudioChangePreset(9, param);
    chain.process(param, block.get(), 1, 16, 48000, 0);
    EXPECT_NE(samplesOf<qint16>(*block), samples);
    EXPECT_EQ(log.lines().size(), 1);
}

} // namespace
} // namespace tavlo::test
