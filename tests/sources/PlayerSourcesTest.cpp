#include "sources/PlayerSources.h"

#include <tavlo/records/SourceRecords.h>

#include <gtest/gtest.h>

using namespace tavlo;

namespace {

/// What a record makes of the player's records.
struct Described
{
    Described(DescribePlay* describe, const tagTavloPresentSourceInfo& info) : wanted(info.formatInfo)
    {
        name = describe(info, player, wanted);
    }

    bool asItComes() const { return wanted.videoInfo.sourceWidth == 0 && wanted.videoInfo.chroma == 0xffffffff; }

    tagTavloSourcePlayerInfo player;
    tagTavloMediaFormatInfo wanted;
    QString name;
};

Described url(const char* text)
{
    tagTavloPresentSourceInfo info;
    info.url = QString::fromLatin1(text);
    info.irtmpParam = 3;
    return {&describeUrl, info};
}

TEST(PlayerSources, ALocationsKindIsItsPrefix)
{
    EXPECT_EQ(url("rtmp://host/live").player.kind, TavloSourcePlayerKindMedia);
    EXPECT_EQ(url("tvmp://host:1").player.kind, TavloSourcePlayerKindTvmp);
    EXPECT_EQ(url("tvtp://host:1").player.kind, TavloSourcePlayerKindTvtp);
    EXPECT_EQ(url("TVTP://host:1").player.kind, TavloSourcePlayerKindMedia) << "prefixes are lower case";
    const Described fast = url("irtmp://host/live");
    EXPECT_EQ(fast.player.kind, TavloSourcePlayerKindFastRtmp);
    EXPECT_EQ(fast.player.pathList, QStringList{"3"});
    const Described pasted = url("  http://host/a.mp4\n");
    EXPECT_EQ(pasted.player.url, QLatin1String("http://host/a.mp4"));
    EXPECT_EQ(pasted.name, QLatin1String("  http://host/a.mp4\n"));
    EXPECT_TRUE(pasted.asItComes());
}

TEST(PlayerSources, AnNdiLocationIsSplitAtItsLastAt)
{
    EXPECT_EQ(url("ndi:a@b@ HOST ").player.pathList, (QStringList{"ndi:a@b", "HOST"}));
    EXPECT_EQ(url("ndi:@HOST").player.pathList, (QStringList{"ndi:", "HOST"}));
    EXPECT_EQ(url("ndi:a").player.pathList, QStringList{});
    EXPECT_EQ(url("ndi:a").player.kind, TavloSourcePlayerKindNDI);
    EXPECT_EQ(url("@ndi:").player.kind, TavloSourcePlayerKindMedia);
}

TEST(PlayerSources, OnlyModeOneLoops)
{
    tagTavloPresentSourceInfo info;
    for (const quint32 mode : {0U, 1U, 2U}) {
        info.playbackMode = mode;
        EXPECT_EQ(Described(&describeMovieList, info).player.playbackLoop, mode == 1);
        EXPECT_EQ(Described(&describeUrl, info).player.playbackLoop, mode == 1);
        EXPECT_EQ(Described(&describeDevice, info).player.playbackLoop, 1);
    }
}

TEST(PlayerSources, DevicesCarryTheirNamesAndCamerasTheirLogin)
{
    tagTavloPresentSourceInfo info;
    info.videoDeviceName = QStringLiteral("/dev/video7");
    info.audioDeviceName = QStringLiteral("hw:1");
    info.formatInfo.videoInfo.sourceWidth = 640;
    const Described device(&describeDevice, info);
    EXPECT_EQ(device.name, QLatin1String("/dev/video7 && hw:1"));
    EXPECT_EQ(device.wanted.videoInfo.sourceWidth, 640) << "the record's size is asked of the device";
    info.hkDevChannel = 0x102;
    const Described camera(&describeCamera, info);
    EXPECT_EQ(camera.player.channelNumber, 2) << "a byte";
    EXPECT_EQ(camera.player.deviceName, info.hkDevAddr);
    EXPECT_EQ(camera.player.audioDeviceName, info.hkDevUser);
    EXPECT_EQ(camera.player.audioDeviceDisplayName, info.hkDevPasswd);
    EXPECT_EQ(camera.name, QStringLiteral("HK - %1 - 258").arg(info.hkDevAddr));
    EXPECT_TRUE(camera.asItComes());
}

} // namespace
