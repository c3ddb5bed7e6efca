#include "engines/EngineStage.h"

#include <tavlo/TavloOutputStatistics.h>

#include "scene/Renderer.h"

using namespace tavlo;
using namespace tavlo::test;

namespace {

constexpr int pgm = static_cast<int>(TavloPresentChannelIDPGM);
constexpr int pvm = static_cast<int>(TavloPresentChannelIDPVM);

/// Where the halves of a test source's picture stand in a frame.
constexpr int leftX = EngineStage::frameWidth / 4, rightX = EngineStage::frameWidth * 3 / 4;
constexpr int topY = EngineStage::frameHeight / 4, bottomY = EngineStage::frameHeight * 3 / 4;

TEST_F(EngineStage, APictureIsInTheProgramInTheStepItCame)
{
    create(3, 3);
    send(TavloEventSelectChannel, pvm, 2);
    for (const int onAir : {0, 1}) {
        send(TavloEventSelectChannel, pgm, onAir);
        for (int i = 0; i < 3; ++i) {
            step();
            const Shot program = shot(pgm);
            const int green = TestSource::greenOf(steps - 1);
            EXPECT_EQ(program.at(leftX, topY), (Pixel{TestSource::redOf(onAir), 0, 250, 255}));
            EXPECT_EQ(program.at(rightX, bottomY), (Pixel{0, green, 0, 255}));
            EXPECT_EQ(shot(pvm).at(rightX, topY), (Pixel{0, green, 250, 255}));
            EXPECT_EQ(shot(pvm).at(leftX, bottomY), (Pixel{TestSource::redOf(2), 0, 0, 255}));
        }
    }
}

TEST_F(EngineStage, ThePictureProcessActsOnTheChannel)
{
    create(1, 1);
    tagTavloPresentPictureProcess process{1, 1};
    send(TavloEventSetPictureProcess, 0, QVariant::fromValue(process));
    step();
    EXPECT_EQ(shot(0).at(rightX, bottomY), (Pixel{TestSource::redOf(0), 0, 250, 255})) << "turned over and mirrored";
    send(TavloEventSetPictureProcess, 0, QVariant::fromValue(tagTavloPresentPictureProcess{}));

    tagTavloPresentPictureChromaKey key{1, 0xff0000fa, 0.4F, 0.08F, 0.1F, {}};
    send(TavloEventSetChromaKey, 0, QVariant::fromValue(key));
    step();
    EXPECT_LT(shot(0).at(leftX, topY).a, 20) << "blue is keyed out";
    EXPECT_EQ(shot(0).at(rightX, bottomY).a, 255);
    send(TavloEventSetChromaKey, 0, QVariant::fromValue(tagTavloPresentPictureChromaKey{}));

    tagTavloPresentPictureMisc misc{QStringLiteral("Camera"), 0xff102030};
    send(TavloEventSetPictureMisc, 0, QVariant::fromValue(misc));
    send(TavloEventSetCrop, 0, QVariant::fromValue(tagTavloPresentPictureCrop{1, {0.0F, 0.0F, 0.5F, 1.0F}}));
    step();
    EXPECT_EQ(shot(0).at(rightX, bottomY), (Pixel{0x10, 0x20, 0x30, 255})) << "the background where the crop ends";
    EXPECT_EQ(inside->channels().source(0)->channelLabel(), QStringLiteral("1 Camera"));
    send(TavloEventCloseSource, 0);
    step();
    EXPECT_EQ(shot(0).at(leftX, topY), (Pixel{0x10, 0x20, 0x30, 255}));
}

// The preview leaves out what a picture without transparency hides, and takes it back for one with some.
TEST_F(EngineStage, ThePreviewShowsTheChequerUnderWhatIsTransparent)
{
    create(2, 2);
    send(TavloEventSelectChannel, pvm, 0);
    tagTavloPresentPictureChromaKey key{0, 0xff0000fa, 0.4F, 0.08F, 0.1F, {}};
    const auto chequer = [](const Pixel& p) { return p.r == p.g && p.g == p.b && p.r >= 190 && p.a == 255; };
    for (const bool keyed : {false, true, false, true}) {
        key.enable = keyed;
        send(TavloEventSetChromaKey, 0, QVariant::fromValue(key));
        step();
        const Shot preview = shot(pvm);
        const Pixel blue = preview.at(leftX, topY);
        EXPECT_EQ(chequer(blue), keyed) << blue.r << " " << blue.g << " " << blue.b << " " << blue.a;
        const Pixel green = preview.at(rightX, bottomY); // a key takes some of every colour
        EXPECT_NEAR(green.g, TestSource::greenOf(steps - 1), keyed ? 8 : 0);
        EXPECT_LE(green.r + green.b, keyed ? 20 : 0);
    }
    send(TavloEventCloseSource, 0);
    step();
    EXPECT_TRUE(chequer(shot(pvm).at(rightX, bottomY))) << "a channel without a source is transparent";
}

// Off screen the canvas is drawn for whom looks at it, and whoever looks sees the latest frame.
TEST_F(EngineStage, TheCanvasIsDrawnForWhomLooks)
{
    create(4, 0);
    send(TavloEventSelectChannel, pgm, 99); // no channel has it: no mark
    const auto isMarked = [this](const Shot& canvas, int channel) {
        const scene::Rect& view = inside->channels().source(channel)->viewRect();
        const Pixel pixel = canvas.at(static_cast<int>(view.middle().x), 400 - static_cast<int>(view.minY()) - 1);
        return pixel.g > 200 && pixel.r < 60;
    };
    const auto passes = [this] { return inside->world().director()->renderer().statistics().passes; };
    step();
    EXPECT_EQ(passes(), 2U) << "preview and program";
    for (const int shown : {1, 3}) {
        send(TavloEventSelectChannel, pvm, shown);
        step();
        const Shot canvas = shot(inside->world().canvasPicture());
        for (int i = 0; i < 4; ++i)
            EXPECT_EQ(isMarked(canvas, i), i == shown) << i;
        step();
        EXPECT_EQ(passes(), 3U);
        step(30);
        EXPECT_EQ(passes(), 2U) << "nobody looks any more";
    }
    send(TavloEventSaveChannelPicture, TavloPresentChannelIDCanvas, QString());
    step(2);
    EXPECT_EQ(passes(), 3U) << "asked for, though nothing is saved";
}

TEST_F(EngineStage, LevelBarsStandOnTheViews)
{
    create(4, 2);
    send(TavloEventSelectChannel, pgm, 0);
    step();
    for (int i = 0; i < 2; ++i)
        source(i).pushTone(440);
    step();
    const Shot canvas = shot(inside->world().canvasPicture());
    const float line = inside->gridLineWidth();
    for (int i = 0; i < 2; ++i) {
        const scene::Rect& view = inside->channels().source(i)->innerRect();
        const auto level = static_cast<float>(engine->getAudioLevel().sourceLevel[static_cast<std::size_t>(i)][0]);
        const float bottom = view.minY() + 2 * line, height = level / 100 * (view.height - 4 * line);
        ASSERT_GT(height, 4.0F);
        ASSERT_LT(height, view.height - 4 * line - 4);
        const int x = static_cast<int>(view.maxX() - 4 * line - 2 + line / 2);
        const auto pixel = [&](float y) { return canvas.at(x, 399 - static_cast<int>(y)); };
        const Pixel bar = i == 0 ? Pixel{0, 240, 0, 255} : Pixel{20, 100, 20, 255}; // heard in the program or not
        EXPECT_EQ(pixel(bottom + 1), bar) << i;
        EXPECT_EQ(pixel(bottom + height - 2), bar) << i;
        EXPECT_NE(pixel(bottom + height + 2), bar) << i;
    }
}

TEST_F(EngineStage, PicturesAreFoundByTheirNumbers)
{
    create(1, 0);
    step();
    bool flipped = true;
    QSizeF size;
    quint64 view = 0;
    EXPECT_NE(inside->channelPicture(static_cast<int>(TavloPresentChannelIDCanvas), flipped, size, view), 0U);
    EXPECT_EQ(size, QSizeF(640, 400));
    EXPECT_FALSE(flipped);
    EXPECT_EQ(inside->channelPicture(4711, flipped, size, view), 0U);
    EXPECT_EQ(inside->channelTarget(-1, nullptr, nullptr), nullptr);
}

TEST_F(EngineStage, OpeningAndClosingTellTheHost)
{
    create(2, 1);
    EXPECT_EQ(source(0).plays, 0) << "the host says when";
    tagTavloPresentSourceInfo info;
    info.type = TavloPresentSourceTypeMovieList;
    const LogCapture log;
    EXPECT_EQ(send(TavloEventOpenSource, 0, QVariant::fromValue(info)).result, QVariant(0)) << "one is open";
    EXPECT_EQ(reportsOf(TavloEventSourceOpened).size(), 1U);
    info.moviePathList = {QStringLiteral("refuse")};
    EXPECT_EQ(send(TavloEventOpenSource, 1, QVariant::fromValue(info)).result, QVariant(0));
    EXPECT_EQ(log.count("failed to openSource"), 1);
    info.type = static_cast<TavloPresentSourceType>(10);
    EXPECT_EQ(send(TavloEventOpenSource, 1, QVariant::fromValue(info)).result, QVariant(0));
    EXPECT_EQ(log.count("failed to TavloPresentSourceUtil::createSource"), 1);
    EXPECT_EQ(reportsOf(TavloEventSourceOpened).size(), 3U);
    EXPECT_EQ(send(TavloEventCloseSource, 1).result, QVariant(0));
    EXPECT_TRUE(reportsOf(TavloEventSourceClosed).empty());
    const auto closed = send(TavloEventCloseSource, 0).result.toULongLong();
    EXPECT_EQ(closed, reportsOf(TavloEventSourceOpened)[0].a2.toULongLong());
    EXPECT_EQ(reportsOf(TavloEventSourceClosed).size(), 1U);
}

// Every event with nothing in it, with things that are no payload of it, and beyond all lists: none fails but the
// unknown ones, and the engine goes on.
TEST_F(EngineStage, NoPayloadOfAnyEventHurts)
{
    create(2, 1);
    std::vector<qulonglong> events;
#define TAVLO_EVENT(name, code) events.push_back(code);
    TAVLO_ENGINE_EVENTS(TAVLO_EVENT)
#undef TAVLO_EVENT
    const std::vector<qulonglong> withoutHandler{
        TavloEventCreateProgress,      TavloEventDestroyProgress,    TavloEventSourceOpened,
        TavloEventSourceClosed,        TavloEventUpdateSource,       TavloEventGetSourceStatistics,
        TavloEventStartHDMIProjection, TavloEventStopHDMIProjection, TavloEventSetPresentValue,
        TavloEventSetPresentImage,     TavloEventSourcePlaylistEnd,  TavloEventSetAudioPreview};
    const QVariant nonsense = QVariant::fromValue(tagTavloPresentPictureMisc{});
    const std::vector<std::vector<QVariant>> payloads{
        {{}, {}, {}, {}},
        {-1, -1, -1, {}},
        {4711, 4711, 4711, {}},
        {65535, QStringLiteral("x"), QStringLiteral("y"), {}},
        {nonsense, nonsense, nonsense, {}},
    };
    for (const qulonglong event : events) {
        if (event == TavloEventCreateEngine || event == TavloEventDestroyEngine)
            continue;
        const bool unknown = std::ranges::find(withoutHandler, event) != withoutHandler.end();
        for (const auto& payload : payloads) {
            const LogCapture log;
            const std::size_t before = reportsOf(event).size();
            const Report report = send(event, payload[0], payload[1], payload[2], payload[3]);
            const bool tellsTwice = event == TavloEventSelectChannel || event == TavloEventSetTransitionPos;
            EXPECT_GE(reportsOf(event).size(), before + 1) << TavloEngineEventName(event);
            if (!tellsTwice && event != TavloEventCloseSource) {
                EXPECT_EQ(report.result, unknown ? QVariant(-1) : QVariant(0)) << TavloEngineEventName(event);
            }
            EXPECT_EQ(log.count("failed to handle event :"), unknown ? 1 : 0) << TavloEngineEventName(event);
        }
        step();
    }
    EXPECT_EQ(send(0x123456).result, QVariant(-1));
}

class CountedSerialize final : public IUnknownEx
{
public:
    explicit CountedSerialize(int& ends) : _ends(ends) {}
    bool isValid() override { return true; }
    void destroy() override
    {
        ++_ends;
        delete this;
    }
    IUnknownEx* queryInterface(const TavloInterfaceId&, quint32) override { return nullptr; }

private:
    int& _ends;
};

TEST_F(EngineStage, ASceneFileEndsWithItsEvent)
{
    create(1, 0);
    int ends = 0;
    for (const qulonglong event : {TavloEventEnterPresent, TavloEventEnterComponent}) {
        const auto address = reinterpret_cast<quintptr>(static_cast<IUnknownEx*>(new CountedSerialize(ends)));
        send(event, 4711, {}, {}, QVariant(static_cast<qulonglong>(address)));
    }
    EXPECT_EQ(ends, 2);
}

} // namespace
