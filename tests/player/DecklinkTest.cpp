// Cards that GStreamer reads. There is none here: its elements refuse, or others stand in their place.

#include "shared/VlcTypes.h"
#include "support/LogCapture.h"
#include "support/PlayerSink.h"

#include <gst/gst.h>
#include <gtest/gtest.h>

#include <map>
#include <mutex>
#include <string>

namespace tavlo::test {
namespace {

/// What stands in for the elements of a card was told, and what it does.
struct FakeCard
{
    using Properties = std::map<std::string, std::string>;
    std::mutex lock;
    Properties properties, soundProperties;
    GstElement* source = nullptr; ///< of pictures, the newest; not owned
};

FakeCard card;

/// A bin under the name of a card's element, around a live test source.
struct FakeElement
{
    static constexpr const char* names[] = {"device-number", "mode", "connection", "video-format",
                                            "drop-no-signal-frames"};

    static void setProperty(GObject* object, guint id, const GValue* value, GParamSpec*)
    {
        const std::lock_guard guard(card.lock);
        const bool isPictures = static_cast<void*>(object) == card.source;
        (isPictures ? card.properties : card.soundProperties)[names[id - 1]] = g_value_get_string(value);
    }

    static void initClass(gpointer type, gpointer)
    {
        auto* const object = static_cast<GObjectClass*>(type);
        object->set_property = setProperty;
        for (guint id = 1; id <= std::size(names); ++id)
            g_object_class_install_property(
                object, id, g_param_spec_string(names[id - 1], nullptr, nullptr, nullptr, G_PARAM_WRITABLE));
    }

    static void fill(GTypeInstance* instance, const char* launch)
    {
        auto* const bin = reinterpret_cast<GstBin*>(instance);
        GstElement* const inside = gst_parse_bin_from_description(launch, TRUE, nullptr);
        gst_bin_add(bin, inside);
        GstPad* const out = gst_element_get_static_pad(inside, "src");
        gst_element_add_pad(&bin->element, gst_ghost_pad_new("src", out));
        gst_object_unref(out);
    }

    static void initPictures(GTypeInstance* instance, gpointer)
    {
        fill(instance, "videotestsrc is-live=true pattern=solid-color foreground-color=0xffc83c1e ! "
                       "capsfilter caps=video/x-raw,format=UYVY,width=66,height=720,framerate=50/1,colorimetry=bt709");
        const std::lock_guard guard(card.lock);
        card.properties.clear();
        card.source = reinterpret_cast<GstElement*>(instance);
    }

    static void initSound(GTypeInstance* instance, gpointer)
    {
        fill(instance, "audiotestsrc is-live=true freq=1000 samplesperbuffer=960 ! "
                       "capsfilter caps=audio/x-raw,format=S16LE,rate=48000,channels=2");
    }

    static void registerAs(const char* name, GInstanceInitFunc init)
    {
        const GTypeInfo info{sizeof(GstBinClass), nullptr, nullptr, initClass, nullptr, nullptr,
                             sizeof(GstBin),      0,       init,    nullptr};
        gst_element_register(nullptr, name, GST_RANK_PRIMARY,
                             g_type_register_static(GST_TYPE_BIN, (std::string("fake-") + name).c_str(), &info, {}));
    }
};

void playCard(PlayerStage& stage)
{
    stage.info.kind = TavloSourcePlayerKindDecklink;
    stage.info.deviceName = QStringLiteral("3");
    stage.info.deviceDisplayName = QStringLiteral("1080p29.97");
    stage.info.inputNode = QStringLiteral("Optical SDI");
    stage.info.audioInputSignal = QStringLiteral("embedded");
    stage.play({});
}

TEST(PlayerDecklink, WithoutACardItIsToldAndAwaited)
{
    const LogCapture log;
    PlayerStage stage;
    playCard(stage);
    EXPECT_TRUE(waitUntil([&] { return log.count("failed to open Decklink 3 (1080p2997)") > 1; }))
        << log.lines().join(u'\n').toStdString();
    EXPECT_EQ(stage.player->state(), TavloSourcePlayerStateOpening);
    stage.player->stop();
    for (QString* const field : {&stage.info.deviceDisplayName, &stage.info.inputNode, &stage.info.deviceName}) {
        playCard(stage);
        *field = QStringLiteral("1 ! filesink location=x");
        stage.play({});
        EXPECT_EQ(stage.player->state(), TavloSourcePlayerStateStopped) << "it would be another element";
    }
}

TEST(PlayerDecklink, ACardPlaysAndIsAwaitedWhenItFails)
{
    gst_init(nullptr, nullptr);
    FakeElement::registerAs("decklinkvideosrc", FakeElement::initPictures);
    FakeElement::registerAs("decklinkaudiosrc", FakeElement::initSound);
    const LogCapture log;
    PlayerStage stage;
    playCard(stage);
    ASSERT_TRUE(stage.sink.waitForPictures(5)) << log.lines().join(u'\n').toStdString();
    ASSERT_TRUE(stage.sink.waitFor([&] { return stage.sink.blocks.size() > 50; }));
    EXPECT_EQ(stage.player->state(), TavloSourcePlayerStatePlaying);
    const size_t states = stage.sink.stateCount();
    {
        const std::lock_guard guard(card.lock);
        EXPECT_EQ(card.properties, (FakeCard::Properties{{"device-number", "3"},
                                                         {"mode", "1080p2997"},
                                                         {"connection", "optical-sdi"},
                                                         {"video-format", "8bit-yuv"},
                                                         {"drop-no-signal-frames", "true"}}));
        EXPECT_EQ(card.soundProperties, (FakeCard::Properties{{"device-number", "3"}, {"connection", "embedded"}}));
        GST_ELEMENT_ERROR(card.source, RESOURCE, READ, ("the cable is out"), (nullptr));
    }
    ASSERT_TRUE(stage.sink.waitForState({TavloSourcePlayerStateOpening, 0}, states));
    EXPECT_EQ(log.count("the cable is out"), 1);
    const size_t before = stage.sink.pictureCount();
    ASSERT_TRUE(stage.sink.waitForPictures(before + 5));
    stage.player->stop();
    EXPECT_EQ(stage.sink.videoInfo.chroma, tavloFourcc("UYVY"));
    EXPECT_EQ(stage.sink.videoInfo.sourceWidth, 66);
    EXPECT_EQ(stage.sink.videoInfo.fpsNum, 50 * stage.sink.videoInfo.fpsDen);
    const double luma = 0.2126 * 200 + 0.7152 * 60 + 0.0722 * 30;
    EXPECT_NEAR(stage.sink.lastPicture[0], 128 + 224 * (30 - luma) / 1.8556 / 255, 1.5);
    EXPECT_NEAR(stage.sink.lastPicture[1], 16 + 219 * luma / 255, 1.5);
    EXPECT_GT(std::ranges::count(stage.sink.blocks, 3, &PlayerSink::Block::second), 10);
}

} // namespace
} // namespace tavlo::test
