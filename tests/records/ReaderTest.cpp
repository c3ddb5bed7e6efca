#include "RecordText.h"

#include "support/LogCapture.h"

#include <tavlo/records/AudioRecords.h>
#include <tavlo/records/ControlRecords.h>
#include <tavlo/records/EngineRecords.h>
#include <tavlo/records/OutputRecords.h>
#include <tavlo/records/PictureRecords.h>
#include <tavlo/records/ShowRecords.h>
#include <tavlo/records/SourceRecords.h>
#include <tavlo/records/VideoFilterRecords.h>

#include <gtest/gtest.h>

using tavlo::test::fromText;
using tavlo::test::LogCapture;
using tavlo::test::readChildren;
using tavlo::test::toText;

namespace {

/// The tags of a record's children in the order in which they are written.
QStringList writtenKeys(const QString& text)
{
    QDomDocument document;
    document.setContent(text);
    QStringList keys;
    for (QDomElement e = document.documentElement().firstChildElement(); !e.isNull(); e = e.nextSiblingElement())
        keys.append(e.tagName());
    return keys;
}

} // namespace

TEST(ReaderTest, KeepsWhatIsMissingAndSkipsWhatIsUnknown)
{
    tagTavloPresentEngineInfo before;
    before.channelCount = 12;
    before.resourcePath = QStringLiteral("/res");
    const auto after = readChildren(R"(a text <!-- a comment --> <nothing value="5"/> <pgmCount value="3"/>
        <videoInfo><width value="1280"/><unknown/></videoInfo>)",
                                    before);
    EXPECT_EQ(after.channelCount, 12U);
    EXPECT_EQ(after.resourcePath, QStringLiteral("/res"));
    EXPECT_EQ(after.pgmCount, 3U);
    EXPECT_EQ(after.videoInfo.width, 1280);
    EXPECT_EQ(after.videoInfo.height, 1080);
}

TEST(ReaderTest, WhatIsNoNumberIsZero)
{
    const auto info = readChildren<tagTavloPresentEngineInfo>(
        R"(<channelCount/><graphicsDeviceId value="first"/><doubleAudioSampleRateRender value="no"/>)");
    EXPECT_EQ(info.channelCount, 0U) << "no value attribute, not the default";
    EXPECT_EQ(info.graphicsDeviceId, 0);
    EXPECT_FALSE(info.doubleAudioSampleRateRender);
    EXPECT_TRUE(readChildren<tagTavloPresentEngineInfo>(R"(<doubleAudioSampleRateRender value="7"/>)")
                    .doubleAudioSampleRateRender);
    EXPECT_EQ(readChildren<tagTavloShowDisplayItemInfo>(R"(<alpha value="1,5"/>)").alpha, 0.0F);
}

TEST(ReaderTest, NumberedKeysFillTheirIndex)
{
    const auto mixer = readChildren<tagTavloPresentAudioMixerParam>(
        R"(<audioVolume_37 value="0.25"/><audioVolume_38 value="9"/><audioVolume_40 value="9"/>
           <audioVolume_-1 value="9"/><audioVolumePGM_0 value="0.5"/><audioVolumePGMDev_3 value="0.125"/>
           <audioEnable_2 value="-1"/>)");
    EXPECT_EQ(mixer.audioVolume[37], 0.25);
    EXPECT_EQ(mixer.audioVolume[0], 0.8) << "audioVolumePGM_0 is another array's";
    EXPECT_EQ(mixer.audioVolumePGM[0], 0.5);
    EXPECT_EQ(mixer.audioVolumePGMDev[3], 0.125);
    EXPECT_EQ(mixer.audioEnable[2], -1);

    const auto layout = readChildren<tagTavloShowLayoutInfo>(
        R"(<element_11><drawableId value="3"/></element_11><element_12><drawableId value="4"/></element_12>
           <background><path value="b.png"/></background>)");
    EXPECT_EQ(layout.element[11].drawableId, 3U);
    EXPECT_EQ(layout.element[10].drawableId, TavloPresentChannelIDNone);
    EXPECT_EQ(layout.background.path, QStringLiteral("b.png"));
}

TEST(ReaderTest, CompositeFormsTakeThePartsThatAreThere)
{
    tagTavloShowTextInfo before;
    before.rect = {1, 2, 30, 40};
    const QRectF moved = readChildren(R"(<rect value="10,20"/>)", before).rect;
    EXPECT_EQ(moved, QRectF(10, 20, 21, 22)) << "the edges move, the far ones stay";
    EXPECT_EQ(readChildren(R"(<rect value=",,5"/>)", before).rect, QRectF(0, 0, 5, 42));

    tagTavloPresentHDMIOutputInfo hdmi;
    EXPECT_EQ(readChildren(R"(<videoRegion value="0,0,1920,1080"/>)", hdmi).videoRegion, QRect(0, 0, 1920, 1080));
    EXPECT_TRUE(toText(hdmi).contains(QStringLiteral("\"0,0,0,0\""))) << "the null rectangle";
    EXPECT_EQ(readChildren<tagTavloVideoProcessLogo>(R"(<pos value="0.5"/>)").pos, QPointF(0.5, 0.0));
}

TEST(ReaderTest, ListsAppendAndStringsReplace)
{
    tagTavloPresentSourceInfo before;
    before.moviePathList = {QStringLiteral("old.mp4")};
    const auto source =
        readChildren(R"(<moviePathList><item value="a b.mp4"/><other/><item/></moviePathList>)", before);
    EXPECT_EQ(source.moviePathList, (QStringList{QStringLiteral("a b.mp4"), QString()}));

    QList<tagTavloShowPresentTimelineInfo> timelines(1);
    ASSERT_TRUE(fromText(QStringLiteral(R"(<timelines><timeline><loop value="1"/></timeline><foreign><loop value="1"/>
                                            </foreign></timelines>)"),
                         timelines));
    ASSERT_EQ(timelines.size(), 3);
    EXPECT_EQ(timelines[1].loop, 1);
    EXPECT_EQ(timelines[2].loop, 0) << "a foreign element adds a default entry";
    EXPECT_EQ(writtenKeys(toText(timelines)), QStringList(3, QStringLiteral("timeline")));
}

TEST(ReaderTest, FieldsOfUnusualForm)
{
    const auto effect =
        readChildren<tagTavloAudioEffectParam>(R"(<preset value="9"><gains_4 value="6"/><bands value="10"/></preset>)");
    EXPECT_EQ(effect.preset, 9U);
    EXPECT_EQ(effect.equalizer.gains[4], 6.0);
    EXPECT_EQ(effect.equalizer.bands, 10);

    const auto present = readChildren<tagTavloShowPresentInfo>(R"(<durationMode value="2"/>)");
    EXPECT_EQ(present.durationMode, 2U);
    EXPECT_FALSE(toText(present).contains(QStringLiteral("durationMode")));

    EXPECT_EQ(writtenKeys(toText(tagTavloPresentPictureColorAdjust())),
              (QStringList{"enable", "contrast", "brightness", "hue", "saturation"}));

    tagTavloPresentControlledConfig config;
    config.commands.resize(2);
    config.commands[0].commTokenData = QByteArray::fromHex("00ff10");
    config.commands[0].switchVar1 = 4096U;
    const QString text = toText(config);
    EXPECT_EQ(writtenKeys(text).mid(4, 3), (QStringList{"httpPort", "bindIP", "allowIP"}));
    EXPECT_EQ(writtenKeys(text).mid(9), QStringList(2, QStringLiteral("command")));
    EXPECT_TRUE(text.contains(QStringLiteral(R"(<commTokenData value="00ff10"/>)")));
    EXPECT_TRUE(text.contains(QStringLiteral(R"(<switchVar1 type="uint" value="4096"/>)")));
    EXPECT_TRUE(text.contains(QStringLiteral(R"(<switchVar2 type="" value=""/>)")));
}

TEST(ReaderTest, DocumentsOfAComponent)
{
    tagTavloShowComponentInfo component;
    component.name = QStringLiteral("Stübe \"A\"");
    component.cameraList.resize(2);
    QString text = TavloPresentUtil::toXMLString(component);
    EXPECT_TRUE(text.startsWith(QStringLiteral("<?xml version=\"1.0\"")));
    EXPECT_TRUE(text.contains(QStringLiteral("\n<param>\n    <name value=")));
    tagTavloShowComponentInfo back;
    ASSERT_TRUE(TavloPresentUtil::fromXMLString(text, back));
    EXPECT_TRUE(back == component);

    const LogCapture log;
    const QString deep = QStringLiteral("<a>").repeated(200'000) + QStringLiteral("</a>").repeated(200'000);
    for (QString bad : {QStringLiteral("<param>\n  <name"), QString(), QStringLiteral("no xml"), deep}) {
        EXPECT_FALSE(TavloPresentUtil::fromXMLString(bad, back));
        EXPECT_TRUE(back == component) << "the record stays as it was";
    }
    EXPECT_EQ(log.count("xml parse err: "), 4);
    EXPECT_TRUE(log.lines().first().startsWith(QStringLiteral("xml parse err: 2 "))) << "the line, then the column";
}

TEST(ReaderTest, CharactersThatXmlCannotCarryAreLeftOut)
{
    tagTavloShowComponentInfo component;
    component.name = QStringLiteral("a\u0001b\uFFFFc") + QChar(0xD800) + QStringLiteral("d");
    QString text = TavloPresentUtil::toXMLString(component);
    tagTavloShowComponentInfo back;
    ASSERT_TRUE(TavloPresentUtil::fromXMLString(text, back));
    EXPECT_EQ(back.name, QStringLiteral("abcd"));
}

TEST(ReaderTest, EmptySources)
{
    const auto isEmpty = [](auto change) {
        tagTavloPresentSourceInfo source;
        change(source);
        return TavloPresentUtil::isEmptySource(source);
    };
    EXPECT_TRUE(isEmpty([](auto&) {}));
    EXPECT_TRUE(isEmpty([](auto& s) { s.type = TavloPresentSourceTypeURL; }));
    EXPECT_TRUE(isEmpty([](auto& s) { s.type = TavloPresentSourceTypeURL, s.url = QStringLiteral("dummy"); }));
    EXPECT_FALSE(isEmpty([](auto& s) { s.type = TavloPresentSourceTypeURL, s.url = QStringLiteral("srt://x"); }));
    EXPECT_FALSE(isEmpty([](auto& s) { s.type = TavloPresentSourceTypeDevice; }));
    EXPECT_TRUE(isEmpty([](auto& s) {
        s.type = TavloPresentSourceTypeDevice;
        s.videoDeviceName = s.audioDeviceName = QStringLiteral("None");
    }));
    EXPECT_FALSE(isEmpty([](auto& s) { s.type = TavloPresentSourceTypeMovieList; }));
}

TEST(OutputParamTest, ResetMakesOutputsDiffer)
{
    tagTavloPresentOutputParam param;
    EXPECT_EQ(param.recordDir, QStringLiteral("d:\\records\\vod\\0\\"));
    EXPECT_EQ(param.multicastAddress, QStringLiteral("234.0.0.1"));
    EXPECT_EQ(param.push2Paths[3], QStringLiteral("/live_0"));
    param.videoBitrate = 9000;
    param.ndiOption = QStringLiteral("gone after the reset");
    param.reset(3, true);
    EXPECT_EQ(param.videoBitrate, 9000U) << "the encoders are not the worker's";
    EXPECT_TRUE(param.ndiOption.isEmpty());
    EXPECT_EQ(param.httpPort, 8286);
    EXPECT_EQ(param.multicastPort, 8206);
    EXPECT_EQ(param.rtspPort, 8296U);
    EXPECT_EQ(param.peerPort, 18206);
    EXPECT_EQ(param.sdpPort, 10760);
    EXPECT_EQ(param.peerAddress, QStringLiteral("192.168.0.4"));
    EXPECT_EQ(param.extRange, (std::array<qint64, 2>{0, -1}));
}
