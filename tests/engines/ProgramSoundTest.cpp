#include "engines/EngineStage.h"

#include "channels/SoundClock.h"

#include "TavloCommonModule/audio/LoopbackMixer.h"
#include "TavloCommonModule/audio/MixInput.h"
#include "support/reference/Sound.h"

#include <QEasingCurve>
#include <QPropertyAnimation>

#include <array>

using namespace tavlo;
using namespace tavlo::test;

namespace {

constexpr int pgm = static_cast<int>(TavloPresentChannelIDPGM);
constexpr int pvm = static_cast<int>(TavloPresentChannelIDPVM);

TEST(SoundClock, BlocksAfterAStallBelongBehindEachOther)
{
    SoundClock clock;
    const auto stamp = [&](qint64 now) { return clock.stamp(now, 10'000); };
    EXPECT_EQ(stamp(1'000'000), 1'000'000);
    EXPECT_EQ(stamp(1'010'900), 1'010'000);
    for (qint64 due = 1'020'000; due <= 1'150'000; due += 10'000)
        EXPECT_EQ(stamp(1'150'000), due);
    EXPECT_EQ(stamp(1'160'400), 1'160'000);
    EXPECT_EQ(stamp(1'168'000), 1'168'000) << "the first one had been late";
    EXPECT_EQ(stamp(5'000'000), 5'000'000) << "the mix began anew";
    stamp(5'500'000); // and once more, after half a second
    EXPECT_EQ(stamp(5'510'000), 5'510'000);
    EXPECT_EQ(stamp(5'520'000), 5'520'000);
}

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

/// What is left of a sum of tones when the one of that frequency is taken out by its own recursion.
std::vector<double> without(double frequency, const std::vector<double>& samples)
{
    const double twoCos = 2 * std::cos(2 * std::numbers::pi * frequency / 48000);
    std::vector<double> rest;
    for (std::size_t i = 0; i + 2 < samples.size(); ++i)
        rest.push_back(samples[i + 2] - twoCos * samples[i + 1] + samples[i]);
    return rest;
}

// The volumes that the engine asks for during a take, in a mix like the module's that runs by the test's own clock.
TEST_F(EngineStage, ATakeLeavesTheMixWithoutAClick)
{
    create(2, 2);
    send(TavloEventSelectChannel, pgm, 0);
    step();
    LoopbackMixer mixer;
    ASSERT_TRUE(mixer.open(2, 48000));
    const std::array inputs{mixer.add(), mixer.add()};
    for (const auto& input : inputs)
        input->listen();
    const tagTavloPresentTransitionEffectParam param{22, 1.0F, QEasingCurve::Linear};
    std::vector<double> mixed, stepped;
    std::vector<float> block(std::size_t{2} * 480);
    for (int ms = 0; ms < 2400; ms += 10) {
        if (ms == 600)
            send(TavloEventTransition, {}, 1, QVariant::fromValue(param));
        auto& animation = *inside->channels().program()->findChild<QPropertyAnimation*>();
        if (ms % 40 == 0) {
            if (animation.state() == QAbstractAnimation::Running)
                animation.setCurrentTime(ms - 600);
            step();
        }
        for (std::size_t i = 0; ms % 20 == 0 && i < inputs.size(); ++i) {
            const std::vector<qint16>& tone =
                source(static_cast<int>(i)).pushTone(440 * (1.0 + static_cast<double>(i)));
            const float volume = engine->getAudioLevel().pgmBusVolume[0][i];
            inputs[i]->setVolume(volume);
            inputs[i]->write(tone.data(), static_cast<int>(tone.size() * sizeof(qint16)), {2, 16, 48000});
            for (std::size_t k = 0; k < tone.size() / 2; ++k) {
                const double sample = static_cast<double>(volume) * tone[2 * k] / 32768;
                if (i == 0)
                    stepped.push_back(sample);
                else
                    stepped[stepped.size() - tone.size() / 2 + k] += sample;
            }
        }
        mixer.mix(block.data(), 1.0F);
        for (std::size_t i = 0; i < block.size(); i += 2)
            mixed.push_back(static_cast<double>(block[i]));
    }
    EXPECT_EQ(inside->channels().program()->programChannel(), 1);
    constexpr std::size_t begun = 48000 / 4;
    const double smooth = clicks(without(880, mixed), 440, 48000, begun);
    EXPECT_LT(smooth, -70);
    EXPECT_GT(clicks(without(880, stepped), 440, 48000, begun), smooth + 20) << "volumes that jump would be seen";
    EXPECT_NEAR(loudness(mixed, begun, 28000), loudness(mixed, mixed.size() - 16000, mixed.size()), 0.2);
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
