#include "audio/TavloAudioFilterChain.h"

#include "audio/AudioSupport.h"
#include "audio/FileDevice.h"
#include "support/LogCapture.h"

#include <tavlo/ITavloAudioPreviewObject.h>
#include <tavlo/InterfacePtr.h>
#include <tavlo/TavloPresentUtil.h>
#include <tavlo/records/MediaFormat.h>

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

TEST(NoModule, APreviewObjectIsSilent)
{
    const LogCapture log;
    const InterfacePtr<ITavloAudioPreviewObject> object(TavloPresentUtil::createAudioPreviewObject());
    object->open("Auto", 48000, 2, 16, 2);
    EXPECT_TRUE(becomesTrue([&] { return log.count("TavloCommonModule") == 1; }));
    object->writeAudio(0, 0, 1.0, blockOf(std::vector<qint16>(960, 5)).get(), {}, 1.0);
    qint64 time = 5;
    EXPECT_EQ(object->getTime(0, &time), -1);
    EXPECT_EQ(time, 0);
    object->close();
    EXPECT_EQ(log.lines().size(), 1);
}

} // namespace
} // namespace tavlo::test
