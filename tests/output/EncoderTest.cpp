#include "OutputSupport.h"
#include "TavloCodecAggregationModule/ITavloVideoEncoder.h"
#include "output/TavloCodecAggregationUtil.h"
#include "shared/VlcPointers.h"
#include "support/LogCapture.h"

#include <tavlo/InterfacePtr.h>

#include <gtest/gtest.h>

#include <atomic>

namespace {

using namespace tavlo::test;

class Counter final : public tavlo::Implements<Counter, ITavloVideoEncoderSink>
{
public:
    void destroy() override {}
    void onEncoded(IUnknownEx*, block_t* block) override
    {
        block_Release(block);
        ++pictures;
    }
    std::atomic<int> pictures{0};
};

/// What came of one way of coding.
struct Outcome
{
    bool device = false; ///< whether its graphics context was there
    bool opened = false;
    int pictures = 0;    ///< coded of five
    QStringList refused; ///< names of encoders, in order
};

using Change = void (*)(tagTavloPresentOutputParam& param);

Outcome code(TavloVideoEncodeImpl impl, TavloVideoCodec codec, Change change = nullptr)
{
    const LogCapture log;
    Outcome outcome;
    Counter sink;
    const auto context = TavloCodecAggregationUtil::createGraphicsContext(impl);
    const auto encoder = TavloCodecAggregationUtil::createEncoder(impl);
    outcome.device = context->create(0, nullptr, 0, 1);
    encoder->init(0, &sink, context.get());
    tagTavloVideoInfo info;
    info.width = info.height = 256; // no encoder is too good for it
    info.chroma = tavloFourcc("NV12");
    tagTavloPresentOutputParam param = Stage::param(QString());
    param.videoCodec = codec;
    if (change)
        change(param);
    outcome.opened = encoder->open(info, param, 0);
    for (int number = 0; outcome.opened && number < 5; ++number) {
        picture_t* const picture = encoder->acquirePicture(0, 60'000);
        picture->date = number * 40'000;
        encoder->submitPicture(picture);
    }
    encoder->close();
    outcome.pictures = sink.pictures;
    for (const QString& line : log.lines())
        if (line.contains(QStringLiteral(" refuses: ")))
            outcome.refused += line.section(QLatin1Char(' '), 1, 1);
    return outcome;
}

TEST(Encoder, OneThatTheMachineHasNotRefusesAndTheBestOfTheOthersCodes)
{
    constexpr std::array impls{TavloVideoEncodeImplNVENC, TavloVideoEncodeImplVAAPI, TavloVideoEncodeImplSoftware};
    for (const auto& [codec, names] :
         {std::pair(TavloVideoCodecH264, QStringList{"h264_nvenc", "h264_vaapi", "libx264"}),
          std::pair(TavloVideoCodecHEVC, QStringList{"hevc_nvenc", "hevc_vaapi", "libx265"})}) {
        QStringList missing; // in front of the first that works
        bool found = false;
        for (size_t i = 0; i < impls.size(); ++i) {
            const QString& name = names[static_cast<qsizetype>(i)];
            const Outcome outcome = code(impls[i], codec);
            EXPECT_EQ(outcome.refused, outcome.opened ? QStringList() : QStringList{name});
            EXPECT_EQ(outcome.pictures, outcome.opened ? 5 : 0) << name.toStdString();
            EXPECT_TRUE(outcome.device || (impls[i] == TavloVideoEncodeImplVAAPI && !outcome.opened));
            found = found || outcome.opened;
            if (!found)
                missing += name;
        }
        EXPECT_TRUE(found); // software is everywhere
        const Outcome best = code(TavloVideoEncodeImplAutomatic, codec);
        EXPECT_TRUE(best.device && best.opened);
        EXPECT_EQ(best.pictures, 5);
        EXPECT_EQ(best.refused, missing);
    }
    EXPECT_EQ(TavloCodecAggregationUtil::createEncoder(static_cast<TavloVideoEncodeImpl>(4)), nullptr);
    EXPECT_EQ(TavloCodecAggregationUtil::createGraphicsContext(static_cast<TavloVideoEncodeImpl>(4)), nullptr);
}

TEST(Encoder, TakesWhateverTheSettingsSay)
{
    constexpr std::array<Change, 4> changes{
        [](tagTavloPresentOutputParam& param) { param.videoOption3 = 2; },
        [](tagTavloPresentOutputParam& param) { param.videoOption3 = 4; },
        [](tagTavloPresentOutputParam& param) {
            param.encoderSettings = {99, 99, 99, 0, 99};
        },
        [](tagTavloPresentOutputParam& param) {
            param.videoBitrate = 4'000'000'000;
            param.rateSettings = {99, 1};
            param.rateFactor = 99;
            param.bufferSetting = 999;
        },
    };
    for (const TavloVideoCodec codec : {TavloVideoCodecH264, TavloVideoCodecHEVC})
        for (size_t i = 0; i < changes.size(); ++i)
            EXPECT_EQ(code(TavloVideoEncodeImplSoftware, codec, changes[i]).pictures, 5) << codec << " case " << i;
}

} // namespace
