#include "engines/EngineStage.h"

#include <array>

using namespace tavlo;
using namespace tavlo::test;

namespace {

constexpr int pgm = static_cast<int>(TavloPresentChannelIDPGM);
constexpr int pvm = static_cast<int>(TavloPresentChannelIDPVM);

TEST_F(EngineStage, SoundFollowsThePicture)
{
    create(3, 3);
    send(TavloEventSelectChannel, pgm, 0);
    send(TavloEventSelectChannel, pvm, 1);
    const auto volumes = [this] {
        step();
        for (int i = 0; i < 3; ++i)
            source(i).pushTone(440);
        const auto& bus = engine->getAudioLevel().pgmBusVolume[0];
        return std::array{bus[0], bus[1], bus[2]};
    };
    for (const float position : {0.0F, 0.25F, 0.5F, 0.75F}) {
        send(TavloEventSetTransitionPos, {}, position);
        const auto now = volumes();
        EXPECT_NEAR(now[0], 0.8F * (1 - position), 1e-5) << position;
        EXPECT_NEAR(now[1], 0.8F * position, 1e-5) << position;
        EXPECT_EQ(now[2], 0.0F);
    }
    send(TavloEventSetTransitionPos, {}, 1.0F);
    EXPECT_EQ(volumes(), (std::array{0.0F, 0.8F, 0.0F}));

    tagTavloPresentAudioMixerParam mixer;
    mixer.audioEnable = {1, 2, 0};
    mixer.audioVolume[0] = 0.25;
    send(TavloEventSetAudioMixer, {}, QVariant::fromValue(mixer));
    EXPECT_EQ(volumes(), (std::array{0.25F, 0.0F, 0.0F}));
    EXPECT_GT(engine->getAudioLevel().sourceLevel[1][0], 10.0F) << "silent on the program, and its meter moves";

    // Shown inside the program's channel is on the program.
    source(1).shownChannel = 2;
    mixer.audioEnable = {};
    send(TavloEventSetAudioMixer, {}, QVariant::fromValue(mixer));
    EXPECT_EQ(volumes(), (std::array{0.0F, 0.8F, 0.8F}));
}

TEST_F(EngineStage, ThePreviewMeasuresTheShownChannelAlone)
{
    create(2, 2);
    tagTavloPresentAudioMixerParam mixer;
    mixer.audioVolumePVM = 1.0;
    send(TavloEventSetAudioMixer, {}, QVariant::fromValue(mixer));
    send(TavloEventSelectChannel, pvm, 1);
    source(0).pushTone(440);
    EXPECT_EQ(engine->getAudioLevel().pvmLevel[0], 0.0F);
    source(1).pushTone(440);
    EXPECT_GT(engine->getAudioLevel().pvmLevel[0], 10.0F);
}

} // namespace
