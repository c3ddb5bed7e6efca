#include "TavloCommonModule/audio/LoopbackMixer.h"
#include "TavloCommonModule/audio/MixInput.h"

#include "audio/AudioSupport.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <deque>
#include <functional>
#include <memory>
#include <numbers>
#include <random>

namespace tavlo::test {
namespace {

constexpr int rate = 48000;
constexpr int block = rate / 100;

double rms(const std::vector<double>& samples) { return std::pow(10.0, loudness(samples, 0, samples.size()) / 20); }

/// A source of a tone that hands over blocks by its own clock.
struct Source
{
    MixInput& input;
    double frequency = 440;
    int blockFrames = 1024;
    int sourceRate = rate;
    double drift = 0;  ///< its clock is faster by that share
    double jitter = 0; ///< seconds by which a block may come late
    qint64 frames = 0;
    double next = 0;   ///< seconds, of the mix's clock
    qint64 handed = 0; ///< frames in all
    std::minstd_rand random{7};

    /// Goes on from now, after a rest.
    void resumeAt(double now)
    {
        frames = std::llround(now * sourceRate);
        next = now;
    }

    /// Hands over what is due. \param now seconds, of the mix's clock
    void operator()(double now)
    {
        while (next <= now) {
            std::vector<float> samples;
            for (int i = 0; i < blockFrames; ++i, ++frames) {
                const double phase = 2 * std::numbers::pi * frequency * double(frames) / sourceRate;
                const float left = float(0.5 * std::sin(phase));
                samples.insert(samples.end(), {left, 0.5F * left});
            }
            EXPECT_TRUE(input.write(samples.data(), blockFrames * 8, {2, 32, sourceRate}));
            handed += blockFrames;
            next = double(frames) / (sourceRate * (1 + drift)) + jitter * double(random()) / std::minstd_rand::max();
        }
    }

    /// Seconds that have been handed over and not been played.
    double waiting() const { return double(handed) / sourceRate - double(input.playedMicroseconds()) * 1e-6; }
};

class ALMix : public testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(mixer.open(2, rate)); }

    std::shared_ptr<MixInput> add(float factor = 1.0F)
    {
        auto input = mixer.add();
        input->listen();
        input->setVolume(factor);
        return input;
    }

    /// Mixes for that long, the sources by their clocks. \return the left channel
    std::vector<double> mix(double seconds, const std::function<void(double)>& sources = {})
    {
        std::vector<double> left;
        std::vector<float> samples(block * 2);
        for (const double end = now + seconds - 1e-9; now < end; now += 0.01) {
            if (sources)
                sources(now);
            mixer.mix(samples.data(), volume);
            for (size_t i = 0; i < samples.size(); i += 2)
                left.push_back(samples[i]);
        }
        return left;
    }

    LoopbackMixer mixer;
    float volume = 1.0F;
    double now = 0; ///< seconds
};

TEST_F(ALMix, SumsManySoundsByTheirVolumes)
{
    for (const int channels : {1, 2, 6}) {
        ASSERT_TRUE(mixer.open(channels, rate));
        std::vector<std::shared_ptr<MixInput>> inputs;
        std::deque<MixInput> alone; // the same sounds, added up here
        for (int i = 0; i < 38; ++i) {
            inputs.push_back(add(0.01F * float(i)));
            alone.emplace_back(channels, rate, block).listen();
        }
        const size_t count = block * channels;
        std::vector<float> mixed(count), one(count);
        for (unsigned turn = 0; turn < 20; ++turn) {
            std::vector<double> expected(count, 0.0);
            for (unsigned i = 0; i < 38; ++i) {
                const auto sound = noise(count, 0.1F, 100 * turn + i);
                for (MixInput* input : {inputs[i].get(), &alone[i]})
                    input->write(sound.data(), int(count * 4), {channels, 32, rate});
                alone[i].take(one.data());
                for (size_t k = 0; k < count; ++k)
                    expected[k] += 0.5 * 0.01 * i * one[k];
            }
            mixer.mix(mixed.data(), 0.5F);
            ASSERT_LT(distance(mixed, expected), 1e-5) << channels << " in block " << turn;
        }
        EXPECT_GT(*std::max_element(mixed.begin(), mixed.end()), 0.01F);
    }
}

TEST_F(ALMix, VolumesChangeWithoutAStep)
{
    const auto input = add(0.2F);
    Source tone{*input};
    const auto play = std::ref(tone);
    mix(1, play);
    for (const float next : {1.0F, 0.0F, 0.6F}) {
        input->setVolume(next);
        EXPECT_LT(clicks(mix(0.2, play), 440, rate), -60) << next;
        EXPECT_NEAR(std::sqrt(2.0) * rms(mix(0.2, play)), 0.5 * next, 1e-3) << next;
    }
    volume = 0.1F;
    EXPECT_LT(clicks(mix(0.2, play), 440, rate), -60);
    EXPECT_NEAR(std::sqrt(2.0) * rms(mix(0.2, play)), 0.03, 1e-3);
}

TEST_F(ALMix, SoundsOfDifferentRatesStayInTune)
{
    Source beside{*add(), 1000, 480};
    for (const int sourceRate : {44100, 48000, 32000}) {
        const auto input = add();
        Source tone{*input, 1000, 1152, sourceRate};
        tone.resumeAt(now);
        const auto heard = mix(2, [&](double t) {
            beside(t);
            tone(t);
        });
        EXPECT_NEAR(countedFrequency(heard, rate, heard.size(), rate), 1000, 0.3) << sourceRate;
        EXPECT_LT(clicks(heard, 1000, rate, rate / 2), -80) << sourceRate;
        mixer.remove(input);
    }
}

TEST_F(ALMix, FollowsASourcesClockForTenMinutes)
{
    for (const double drift : {150e-6, -200e-6}) {
        ASSERT_TRUE(mixer.open(2, rate));
        const auto input = add();
        Source tone{*input, 440, 480, rate, drift}; // blocks as long as the mix's: what waits hardly moves
        now = 0;
        const auto play = std::ref(tone);
        mix(1, play);
        const double begun = tone.waiting();
        double furthest = 0;
        for (int second = 0; second < 600; ++second) {
            ASSERT_LT(clicks(mix(1, play), 440, rate), -80) << drift << " after " << second;
            furthest = std::max(furthest, std::abs(tone.waiting() - begun));
        }
        EXPECT_LT(furthest, 0.020) << drift;
    }
}

TEST_F(ALMix, WhatASourceKeepsAheadStays)
{
    const auto input = add();
    Source tone{*input, 440, 960};
    const auto play = [&](double t) { tone(t + 0.1); }; // 120 ms with the first
    mix(0.5, play);
    const double begun = tone.waiting();
    EXPECT_GT(begun, 0.08);
    mix(60, play);
    EXPECT_NEAR(tone.waiting(), begun, 0.015); // a block comes and goes
}

TEST_F(ALMix, AnUnheardBeginningTakesItsTimeAndEndsWithoutAClick)
{
    const auto input = add();
    const std::vector<float> sound(2 * block, 0.5F);
    double next = 0;
    const auto heard = mix(1, [&](double t) {
        for (; next <= t + 0.05; next += 0.01) {
            if (next < 0.24)
                input->writeSilence(8 * block, {2, 32, rate});
            else
                input->write(sound.data(), 8 * block, {2, 32, rate});
        }
    });
    const auto first = std::find_if(heard.begin(), heard.end(), [](double s) { return s > 0.25; });
    EXPECT_NEAR(double(first - heard.begin()) / rate, 0.24, 0.02);
    for (size_t i = 1; i < heard.size(); ++i)
        ASSERT_LT(std::abs(heard[i] - heard[i - 1]), 0.01);
    EXPECT_EQ(input->playedMicroseconds() / 10'000, 100);
}

TEST_F(ALMix, IrregularBlocksAreSoonHeardWithoutGaps)
{
    const auto input = add();
    Source tone{*input};
    tone.jitter = 0.08;
    const auto play = std::ref(tone);
    mix(30, play);
    EXPECT_LT(clicks(mix(30, play), 440, rate), -80);
}

TEST_F(ALMix, BeginsAndEndsWithoutClicksAndIsSilentOtherwise)
{
    const auto silent = [](const std::vector<double>& samples) {
        return std::all_of(samples.begin(), samples.end(), [](double s) { return s == 0; });
    };
    const auto unheard = mixer.add();
    const auto input = add();
    Source tone{*input}, other{*unheard};
    const auto play = std::ref(tone);
    EXPECT_TRUE(silent(mix(0.5)));
    EXPECT_TRUE(silent(mix(0.5, std::ref(other)))); // nobody listens to it
    unheard->flush(true);

    tone.resumeAt(now);
    EXPECT_LT(clicks(mix(0.505, play), 440, rate), -40); // a fade of 5 ms, where a step would be -6 dB
    EXPECT_LT(clicks(mix(0.5), 440, rate), -40);         // the source stops
    EXPECT_TRUE(silent(mix(0.5)));

    tone.resumeAt(now);
    mix(0.5, play);
    input->pause(true);
    EXPECT_LT(clicks(mix(0.1, play), 440, rate), -40);
    EXPECT_TRUE(silent(mix(0.3, play)));
    const qint64 before = input->playedMicroseconds();
    mix(0.1);
    EXPECT_EQ(input->playedMicroseconds(), before);
    input->pause(false);
    EXPECT_FALSE(silent(mix(0.1, play)));

    input->flush(true);
    EXPECT_LT(clicks(mix(0.1), 440, rate), -40);
    EXPECT_TRUE(silent(mix(0.1)));
    EXPECT_NEAR(tone.waiting(), 0, 1e-3);
}

TEST_F(ALMix, AShortSoundIsPlayedToItsEndOnAFlush)
{
    const auto input = add();
    const auto tone = stereo(sine(440, rate, 600, 0.5), sine(440, rate, 600, 0.5)); // 12.5 ms: too short to begin with
    input->write(tone.data(), int(tone.size() * 4), {2, 32, rate});
    EXPECT_LT(loudness(mix(0.2), 0, rate / 5), -120);
    input->flush(false);
    EXPECT_GT(loudness(mix(0.02), 0, rate / 50), -20);
    EXPECT_NEAR(double(input->playedMicroseconds()), 12'500, 1'000);
}

TEST_F(ALMix, TooMuchSoundIsLeftOutAndToldOnce)
{
    const LogCapture log;
    const auto input = add();
    Source tone{*input};
    for (int i = 0; i < 3; ++i) {
        tone.next = 0;
        tone(double(tone.frames + rate) / rate - now); // a second at once
        EXPECT_LT(clicks(mix(0.3), 440, rate), -25);
        EXPECT_LT(tone.waiting(), 0.3);
    }
    EXPECT_EQ(log.count("the oldest is dropped"), 1);
}

TEST_F(ALMix, ConvertsFormatsAndRefusesOthers)
{
    const LogCapture log;
    const auto input = add();
    EXPECT_FALSE(input->write("", 0, {0, 16, rate}));
    EXPECT_FALSE(input->write("", 0, {2, 24, rate}));
    EXPECT_FALSE(input->write("", 0, {2, 16, 0}));
    EXPECT_EQ(log.count("cannot convert"), 1);
    EXPECT_TRUE(input->write(nullptr, 100, {2, 16, rate}));
    const std::vector<quint8> bytes(4800, 192);
    for (int i = 0; i < 2; ++i)
        EXPECT_TRUE(input->write(bytes.data(), 4800, {1, 8, rate}));
    std::vector<float> samples(block * 2);
    mixer.mix(samples.data(), 1.0F);
    mixer.mix(samples.data(), 1.0F);
    EXPECT_NEAR(samples[100], 0.5 * std::sqrt(0.5), 0.01); // to both sides, at the power of one
    EXPECT_EQ(samples[100], samples[101]);

    for (const int channels : {0, 3, 9})
        EXPECT_FALSE(mixer.open(channels, rate));
    EXPECT_EQ(mixer.add(), nullptr);
}

} // namespace
} // namespace tavlo::test
