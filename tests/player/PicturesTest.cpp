// How pictures come: their layouts, their colours, which way up.

#include "support/LogCapture.h"
#include "support/PlayerSink.h"
#include "support/TestClips.h"

#include <gtest/gtest.h>

#include <QFile>

namespace tavlo::test {
namespace {

TEST(PlayerPictures, HandsOnEachLayout)
{
    struct Case
    {
        const char* format;
        const char* suffix;
        quint32 chroma;
        const char* codec = "rawvideo";
    };
    const std::vector<Case> cases{
        {"yuv420p", "avi", tavloFourcc("I420")},  {"nv12", "nut", tavloFourcc("NV12")},
        {"nv21", "nut", tavloFourcc("NV21")},     {"yuyv422", "avi", tavloFourcc("YUY2")},
        {"uyvy422", "avi", tavloFourcc("UYVY")},  {"rgba", "nut", tavloFourcc("RGBA")},
        {"bgra", "nut", tavloFourcc("BGRA")},     {"bgr0", "nut", tavloFourcc("RV32")},
        {"rgb24", "nut", tavloFourcc("RGBA")},    {"yuv422p10le", "nut", tavloFourcc("NV12")},
        {"yuva420p", "nut", tavloFourcc("RGBA")}, {"yuvj420p", "avi", tavloFourcc("NV12"), "mjpeg"},
    };
    for (const bool odd : {false, true}) {
        for (const Case& c : cases) {
            SCOPED_TRACE(c.format);
            if (odd && (c.chroma == tavloFourcc("YUY2") || c.chroma == tavloFourcc("UYVY")))
                continue; // there is no half pair of pixels
            ClipForm form = codedClip(c.suffix, QStringLiteral("-c:v %1 -pix_fmt %2").arg(c.codec, c.format), 4);
            form.sound = false;
            form.width = odd ? 193 : 192;
            form.height = odd ? 107 : 108;
            PlayerStage stage;
            ASSERT_TRUE(stage.playToEnd({clipFile(form)}, 4, 0));
            EXPECT_EQ(stage.sink.videoInfo.chroma, c.chroma);
            EXPECT_EQ(stage.sink.videoInfo.sourceWidth, form.width);
            EXPECT_EQ(stage.sink.numbers(), (std::vector{0, 1, 2, 3}));
        }
    }
    const QString clip = clipFile(codedClip("nut", "-c:v rawvideo -pix_fmt rgba", 4));
    for (const bool hasPool : {true, false}) { // without one, pictures are plain
        PlayerStage stage;
        stage.sink.hasPool = hasPool;
        stage.sink.layouts = {tavloFourcc("NV12")}; // the sink has the last word
        ASSERT_TRUE(stage.playToEnd({clip}, 4, 0.16));
        EXPECT_EQ(stage.sink.videoInfo.chroma, tavloFourcc("NV12"));
        EXPECT_EQ(stage.sink.numbers(), (std::vector{0, 1, 2, 3}));
    }
}

/// Brightness of the last picture, which has to be planar or NV12.
int lumaAt(const PlayerSink& sink, int x, int y)
{
    return sink.lastPicture[static_cast<size_t>(y * sink.videoInfo.sourceWidth + x)];
}

TEST(PlayerPictures, AreTurnedAsTheirFileSays)
{
    const QString plain = clipFile(codedClip("mp4", "-c:v libx264 -preset ultrafast -colorspace bt709 -an", 1));
    for (const int angle : {90, 180, 270}) {
        SCOPED_TRACE(angle);
        const QString turned = clipFolderFile(QStringLiteral("turned%1.mp4").arg(angle));
        const QString tag = QStringLiteral("rotate=%1").arg(angle);
        ASSERT_TRUE(runFfmpeg({"-i", plain, "-c", "copy", "-metadata:s:v", tag, turned}));
        const QString asShown = clipFolderFile(QStringLiteral("turned.gray"));
        ASSERT_TRUE(runFfmpeg({"-i", turned, "-pix_fmt", "yuv420p", "-f", "rawvideo", asShown}));
        QFile file(asShown);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const QByteArray shown = file.readAll();
        PlayerStage stage;
        ASSERT_TRUE(stage.playToEnd({turned}, 1, 0));
        EXPECT_EQ(stage.sink.videoInfo.sourceWidth, angle == 180 ? 192 : 108);
        EXPECT_EQ(stage.sink.videoInfo.sourceHeight, angle == 180 ? 108 : 192);
        for (const auto& [x, y] : {std::pair(20, 20), std::pair(85, 20), std::pair(30, 90), std::pair(70, 80)}) {
            const auto expected = static_cast<quint8>(shown[y * stage.sink.videoInfo.sourceWidth + x]);
            EXPECT_NEAR(lumaAt(stage.sink, x, y), expected, 2) << x << ' ' << y;
        }
    }
}

TEST(PlayerPictures, LoseTheCombOfTheirFields)
{
    const QString fields = clipFolderFile(QStringLiteral("fields.ts"));
    ASSERT_TRUE(runFfmpeg({"-f", "lavfi", "-i",
                           "color=black:s=64x64:r=50,drawbox=x=0:y=0:w=64:h=64:t=fill:c=white:enable='not(mod(n,3))'",
                           "-vf", "interlace=lowpass=off", "-frames:v", "10", "-c:v", "mpeg2video", "-q:v", "2",
                           "-flags", "+ildct+ilme", fields}));
    const QString packed = clipFolderFile(QStringLiteral("fields-uyvy.nut")),
                  pairs = clipFolderFile(QStringLiteral("fields-nv12.nut"));
    ASSERT_TRUE(runFfmpeg({"-i", fields, "-c:v", "rawvideo", "-pix_fmt", "uyvy422", packed}));
    ASSERT_TRUE(runFfmpeg({"-i", fields, "-c:v", "rawvideo", "-pix_fmt", "nv12", pairs}));
    for (const auto& [mode, clip] : {std::pair(0, fields), std::pair(1, fields), std::pair(2, fields),
                                     std::pair(2, packed), std::pair(2, pairs)}) {
        PlayerStage stage;
        stage.info.deinterlaceMode = mode;
        stage.sink.layouts = {tavloFourcc("I420"), tavloFourcc("NV12")};
        ASSERT_TRUE(stage.playToEnd({clip}, 9, 0));
        EXPECT_GE(stage.sink.pictures.size(), 9U);
        const int step = std::abs(lumaAt(stage.sink, 32, 32) - lumaAt(stage.sink, 32, 33));
        EXPECT_EQ(step > 150, mode == 0) << mode; // a comb of the two fields, or not
    }
    // Frames that no filter takes are told of once, not each time.
    const QString strange = clipFolderFile(QStringLiteral("strange.nut"));
    ASSERT_TRUE(runFfmpeg({"-f", "rawvideo", "-pix_fmt", "uyyvyy411", "-s", "64x64", "-t", "0.2", "-i", "/dev/zero",
                           "-c", "copy", strange}));
    const LogCapture log;
    PlayerStage stage;
    stage.info.deinterlaceMode = 2;
    ASSERT_TRUE(stage.playToEnd({strange}, 0, 0));
    EXPECT_EQ(log.count("pictures stay as they are"), 1);
}

TEST(PlayerPictures, AStillOneStandsForFiveSecondsAtAnySpeed)
{
    const QString plain = clipFile({.frames = 1});
    const QString still = clipFolderFile(QStringLiteral("still 100%d.png"));
    ASSERT_TRUE(runFfmpeg({"-i", plain, "-frames:v", "1", "-update", "1", still}));
    PlayerStage stage;
    stage.holdTime(1, 0);
    stage.play({still});
    ASSERT_TRUE(stage.sink.waitForPictures(1));
    EXPECT_EQ(stage.length(), 5000);
    stage.player->setRate(4);
    ASSERT_TRUE(stage.sink.waitForState({TavloSourcePlayerStateEnded, 0}));
    stage.player->stop();
    EXPECT_EQ(stage.sink.numbers(), std::vector<int>{0});
}

/// Pictures of one colour: as the drawing takes them, whatever matrix they were made with.
TEST(PlayerPictures, ColoursComeByTheMatrixOfTheDrawing)
{
    const double red = 200 / 255.0, green = 60 / 255.0, blue = 30 / 255.0;
    const double luma = 0.2126 * red + 0.7152 * green + 0.0722 * blue;
    const double expected[] = {16 + 219 * luma, 128 + 224 * (blue - luma) / 1.8556, 128 + 224 * (red - luma) / 1.5748};
    struct Case
    {
        const char* matrix; ///< that the colour is coded by
        const char* tag;    ///< that says so; null says nothing
        int height;
        const char* format;
    };
    for (const Case& c : {Case{"bt601", "smpte170m", 64, "yuv420p"}, Case{"bt601", nullptr, 64, "yuv420p"},
                          Case{"bt709", "bt709", 64, "yuv420p"}, Case{"bt709", nullptr, 720, "yuv420p"},
                          Case{"bt601", "bt470bg", 720, "nv12"}, Case{"bt601", nullptr, 64, "yuv422p"}}) {
        SCOPED_TRACE(testing::Message() << c.matrix << ' ' << (c.tag ? c.tag : "") << ' ' << c.height << c.format);
        const QString clip = clipFolderFile(QStringLiteral("colour.mkv"));
        const QString source = QStringLiteral("color=c=0xC83C1E:s=64x%1:d=0.04,format=gbrp,"
                                              "scale=out_color_matrix=%2:out_range=tv,format=%3")
                                   .arg(c.height)
                                   .arg(QLatin1String(c.matrix), QLatin1String(c.format));
        const QStringList tag = c.tag ? QStringList{"-colorspace", c.tag} : QStringList();
        const char* const coder = QLatin1String(c.format) == QLatin1String("nv12") ? "libx264" : "ffv1";
        ASSERT_TRUE(runFfmpeg(QStringList{"-f", "lavfi", "-i", source, "-c:v", coder} + tag + QStringList{clip}));
        PlayerStage stage;
        stage.sink.layouts = {tavloFourcc("NV12")};
        ASSERT_TRUE(stage.playToEnd({clip}, 1, 0));
        const auto size = static_cast<size_t>(64 * c.height);
        EXPECT_NEAR(stage.sink.lastPicture[size / 2], expected[0], 2.5);
        EXPECT_NEAR(stage.sink.lastPicture[size], expected[1], 2.5);
        EXPECT_NEAR(stage.sink.lastPicture[size + 1], expected[2], 2.5);
    }
}

} // namespace
} // namespace tavlo::test
