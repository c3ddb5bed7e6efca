#include "audio/TavloAudioResample.h"

#include "audio/AudioSupport.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

namespace tavlo::test {
namespace {

tagTavloAudioInfo formatOf(int channels, int rate, int bits, quint32 fourcc)
{
    tagTavloAudioInfo format;
    format.channels = channels;
    format.sampleRate = rate;
    format.bitsPerSample = bits;
    format.audioFourcc = fourcc;
    return format;
}

constexpr quint32 s16l = tavloFourcc("s16l");
constexpr quint32 f32l = tavloFourcc("f32l");

/// What comes out on the left for a signal that goes in by blocks of 20 ms. Only the first blocks may give nothing.
std::vector<double> convertedLeft(TavloAudioResample& converter, const tagTavloAudioInfo& source,
                                  const std::vector<float>& samples)
{
    std::vector<double> left;
    const size_t step = source.sampleRate / 50;
    for (size_t i = 0; i + step <= samples.size(); i += step) {
        const BlockPtr block = blockOf(samples.data() + i, step * sizeof(float));
        const block_t* const converted = converter.process(block.get(), source);
        EXPECT_TRUE(converted || i < 2 * step) << i;
        if (!converted)
            continue;
        const auto both = samplesOf<qint16>(*converted);
        for (size_t k = 0; k < both.size(); k += 2)
            left.push_back(both[k] / 32768.0);
    }
    return left;
}

TEST(Resample, ConvertsFormatsAndChannelsAndKeepsTimes)
{
    TavloAudioResample converter;
    const BlockPtr floats = blockOf(std::vector<float>{0.5F, -0.25F, 2.0F, -2.0F, 0.0F, 1.0F / 32768.0F});
    floats->i_pts = 123456789;
    floats->i_dts = 123450000;
    block_t* out = converter.process(floats.get(), formatOf(2, 48000, 32, f32l));
    ASSERT_TRUE(out);
    EXPECT_EQ(samplesOf<qint16>(*out), (std::vector<qint16>{16384, -8192, 32767, -32768, 0, 1}));
    EXPECT_EQ(out->i_pts, 123456789);
    EXPECT_EQ(out->i_dts, 123450000);
    EXPECT_EQ(out->i_nb_samples, 3U);
    EXPECT_EQ(out->i_length, 3 * 1000000 / 48000);
    block_Release(out); // the converter's own block outlives it
    EXPECT_EQ(converter.process(floats.get(), formatOf(2, 48000, 32, f32l)), out);

    const BlockPtr mono = blockOf(std::vector<quint8>{128, 192, 0});
    out = converter.process(mono.get(), formatOf(1, 48000, 8, tavloFourcc("u8  ")));
    ASSERT_TRUE(out);
    const auto both = samplesOf<qint16>(*out);
    ASSERT_EQ(both.size(), 6U);
    EXPECT_EQ(both[2], both[3]);
    EXPECT_GT(both[2], 10000);
    EXPECT_LT(both[5], -20000);
}

TEST(Resample, ChangesTheRateWithoutSeamsAndFollowsTheSource)
{
    TavloAudioResample converter;
    for (const int rate : {44100, 22050, 96000, 44100}) {
        const auto tone = sine(500, rate, static_cast<size_t>(rate), 0.5);
        auto left = convertedLeft(converter, formatOf(1, rate, 32, f32l), tone);
        EXPECT_NEAR(double(left.size()), 48000.0, 100.0);
        left.resize(left.size() - 100);
        EXPECT_NEAR(countedFrequency(left, 2000, left.size(), 48000), 500.0, 0.02) << rate;
        EXPECT_LT(clicks(left, 500, 48000, 2000), -70.0) << rate;
    }
    converter.setOutput(formatOf(1, 48000, 16, s16l));
    const BlockPtr block = blockOf(std::vector<float>(480, 0.25F));
    const block_t* const out = converter.process(block.get(), formatOf(1, 48000, 32, f32l));
    ASSERT_TRUE(out);
    EXPECT_EQ(samplesOf<qint16>(*out), std::vector<qint16>(480, 8192));
}

TEST(Resample, RefusesWhatIsNoFormat)
{
    TavloAudioResample converter;
    const LogCapture log;
    const BlockPtr block = blockOf(std::vector<qint16>(960, 5));
    EXPECT_EQ(converter.process(nullptr, formatOf(1, 44100, 16, s16l)), nullptr);
    EXPECT_EQ(converter.process(block.get(), tagTavloAudioInfo()), block.get()); // nothing to convert
    for (const auto& none : {formatOf(0, 44100, 16, s16l), formatOf(2, 0, 16, s16l), formatOf(-3, -44100, -16, s16l)})
        EXPECT_EQ(converter.process(block.get(), none), nullptr);
    EXPECT_EQ(log.count("failed to create swr "), 3);
    EXPECT_EQ(log.count("TavloAudioResample::process"), 3);
}

// The claims about samples are larger than the samples are: nothing behind the block may be read.
TEST(Resample, StaysInsideBlocksThatContradictTheirFormat)
{
    TavloAudioResample converter;
    for (const auto& format : {formatOf(2, 44100, 8, f32l), formatOf(2, 44100, 0, tavloFourcc("f64l")),
                               formatOf(20, 44100, 16, s16l), formatOf(1, 44100, 24, tavloFourcc("s24l"))}) {
        for (const size_t bytes : {0U, 3U, 1764U}) {
            const std::vector<quint8> content(bytes, 1);
            block_t block{};
            block.p_buffer = block.p_start = const_cast<quint8*>(content.data());
            block.i_buffer = block.i_size = bytes;
            const block_t* const out = converter.process(&block, format);
            EXPECT_TRUE(!out || out->i_buffer < 8192U);
        }
    }
}

} // namespace
} // namespace tavlo::test
