#include <tavlo/TavloPresentUtil.h>

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// The findings of a text, each as "line:field: what".
std::vector<std::string> check(const char* text, const char* recordType)
{
    std::vector<std::string> lines;
    for (const TavloXmlFinding& finding :
         TavloPresentUtil::checkXml(QString::fromUtf8(text), QLatin1String(recordType)))
        lines.push_back(QStringLiteral("%1:%2: %3").arg(finding.line).arg(finding.field, finding.text).toStdString());
    return lines;
}

} // namespace

TEST(CheckTest, IsSilentWhereTheReaderTakesEverything)
{
    EXPECT_THAT(check(R"(<?xml version="1.0"?><!-- a comment -->
<engine><channelCount value="12"/><videoInfo><width value="1280"/></videoInfo></engine>)",
                      "tagTavloPresentEngineInfo"),
                IsEmpty());
}

TEST(CheckTest, NamesLineFieldAndWhatIsLost)
{
    EXPECT_THAT(check(R"(<engine language="en">
  <chanelCount value="12"/>
  <pgmCount value="many"/>
  <pgmCount value="-1"/>
  <doubleAudioSampleRateRender value="yes"/>
  <resourcePath>/res</resourcePath>
  <videoInfo value="1">
    <width value="12.5" unit="px"><deep/></width>
    <moduleWord value="70000"/>
  </videoInfo>
</engine>)",
                      "tagTavloPresentEngineInfo"),
                ElementsAre("1:: attribute \"language\" is ignored",
                            "2:chanelCount: is no field of tagTavloPresentEngineInfo and is ignored",
                            "3:pgmCount: \"many\" is no unsigned 32 bit integer and counts as 0",
                            "4:pgmCount: stands again; the last one counts",
                            "4:pgmCount: \"-1\" is no unsigned 32 bit integer and counts as 0",
                            "5:doubleAudioSampleRateRender: \"yes\" is neither 0 nor 1 and counts as 0",
                            "6:resourcePath: has no attribute \"value\" and counts as empty",
                            "6:resourcePath: text \"/res\" is ignored", //
                            "7:videoInfo: attribute \"value\" is ignored",
                            "8:videoInfo/width: \"12.5\" is no 32 bit integer and counts as 0",
                            "8:videoInfo/width: attribute \"unit\" is ignored",
                            "8:videoInfo/width/deep: is ignored: the element around it carries a value only",
                            "9:videoInfo/moduleWord: 70000 is above 65535 and counts as 4464"));
}

TEST(CheckTest, KnowsListsIndexesAndCompositeForms)
{
    EXPECT_THAT(check(R"(<mixer>
  <audioVolume_40 value="1"/>
  <audioVolume_x value="1"/>
  <audioVolume_0 value="0,5"/>
</mixer>)",
                      "tagTavloPresentAudioMixerParam"),
                ElementsAre("2:audioVolume_40: is ignored: the last index is 37",
                            "3:audioVolume_x: element counts as audioVolume_0",
                            "4:audioVolume_0: stands again; the last one counts",
                            "4:audioVolume_0: \"0,5\" is no number and counts as 0"));
    EXPECT_THAT(
        check(R"(<component>
  <cameraList><displayItemInfo><offset value="1"/></displayItemInfo><camera/></cameraList>
  <properties><textProperties><Property>
    <valueList><item value="a"/><item/><value value="b"/></valueList>
    <textInfo><rect value="1,2,3,x"/></textInfo>
  </Property></textProperties></properties>
</component>)",
              "tagTavloShowComponentInfo"),
        ElementsAre("2:cameraList/displayItemInfo/offset: \"1\" has 1 parts where 2 belong, separated by commas",
                    "2:cameraList/camera: is no \"displayItemInfo\" and adds an entry with the defaults",
                    "4:properties/textProperties/Property/valueList/item: "
                    "has no attribute \"value\" and counts as empty",
                    "4:properties/textProperties/Property/valueList/value: is no \"item\" and is ignored",
                    "5:properties/textProperties/Property/textInfo/rect: \"x\" is no number and counts as 0"));
    EXPECT_THAT(check(R"(<controlledConfig>
  <command><guid value="me"/><commTokenData value="0fz"/><switchVar1 type="int" value="x"/></command>
  <command><switchVar1 type="QColor" value="x"/></command>
</controlledConfig>)",
                      "tagTavloPresentControlledConfig"),
                ElementsAre("2:command/guid: \"me\" is no UUID and counts as none",
                            "2:command/commTokenData: \"0fz\" is no row of bytes in hexadecimal; \"0f\" is what counts",
                            "2:command/switchVar1: \"x\" is no int",
                            "3:command/switchVar1: type \"QColor\" is not known and counts as text"));
}

TEST(CheckTest, TellsTextsThatAreNoXmlAndTypesThatAreNone)
{
    EXPECT_THAT(check("<a>\n<b", "tagTavloShowLogoInfo"), testing::SizeIs(1));
    EXPECT_THAT(check("<a>\n<b", "tagTavloShowLogoInfo").front(), testing::HasSubstr("2:: no XML: "));
    EXPECT_THAT(check("<a/>", "tagTavloNothing"), ElementsAre("0:: \"tagTavloNothing\" is no type of record"));
    EXPECT_TRUE(TavloPresentUtil::recordTypes().contains(QStringLiteral("tagTavloPresentOutputParam")));
}
