#include "support/LogCapture.h"
#include "support/PlayerSink.h"
#include "support/TestClips.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>

#include <sys/stat.h>

#include <memory>
#include <random>
#include <vector>

namespace tavlo::test {
namespace {

constexpr int mutantsPerFormat = 26;

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll();
}

QString written(const QString& name, const QByteArray& content)
{
    QFile file(clipFolderFile(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
    return file.fileName();
}

/// Cut off, bits turned, pieces zeroed, doubled or exchanged.
QByteArray mutated(QByteArray bytes, std::mt19937& random)
{
    const auto below = [&](qsizetype limit) {
        return static_cast<qsizetype>(random() % static_cast<quint32>(std::max<qsizetype>(limit, 1)));
    };
    const qsizetype length = below(std::min<qsizetype>(bytes.size(), 4000));
    switch (random() % 5) {
    case 0:
        return bytes.left(below(bytes.size()));
    case 1:
        for (int i = 0; i < 40; ++i) // the header more often than the rest
            bytes[below(i % 2 ? bytes.size() : std::min<qsizetype>(bytes.size(), 2000))] ^=
                static_cast<char>(1 << (random() % 8));
        return bytes;
    case 2:
        return bytes.replace(below(bytes.size() - length), length, QByteArray(length, '\0'));
    case 3:
        return bytes.insert(below(bytes.size()), bytes.mid(below(bytes.size() - length), length));
    default:
        return bytes.remove(below(bytes.size() - length), length);
    }
}

/// Lists of broken files play side by side, each to its end or as far as it comes in a while.
TEST(PlayerBadInput, MutantsNeitherCrashNorHang)
{
    const std::vector<std::pair<const char*, const char*>> formats{
        {"mp4", "-c:v libx264 -preset ultrafast -c:a aac"},
        {"ts", "-c:v mpeg2video -c:a mp2"},
        {"mkv", "-c:v mpeg4 -c:a libopus"},
        {"avi", "-c:v mjpeg -c:a pcm_s16le"},
        {"flv", "-c:v flv -c:a libmp3lame -ar 44100"},
        {"webm", "-c:v libvpx -deadline realtime -c:a libvorbis"},
        {"mov", "-c:v prores_ks -c:a pcm_s24le"},
        {"mxf", "-c:v mpeg2video -c:a pcm_s16le"},
    };
    std::mt19937 random(20240607);
    const LogCapture log; // it would fill the screen
    std::vector<std::unique_ptr<PlayerStage>> stages;
    for (const auto& [suffix, options] : formats) {
        ClipForm form = codedClip(suffix, options, 5);
        form.width = 96;
        form.height = 64;
        const QByteArray whole = contentOf(clipFile(form));
        QStringList paths;
        for (int i = 0; i < mutantsPerFormat; ++i)
            paths << written(QStringLiteral("mutant%1.%2").arg(i).arg(form.suffix), mutated(whole, random));
        const auto& stage = stages.emplace_back(std::make_unique<PlayerStage>());
        stage->holdTime(0, 0);
        stage->play(paths);
    }
    for (const auto& stage : stages) {
        EXPECT_TRUE(stage->sink.waitForState({TavloSourcePlayerStateEnded, mutantsPerFormat - 1}))
            << "stands at " << stage->player->itemIndex() << " of " << stage->info.pathList.back().toStdString()
            << " time " << stage->place() << " of " << stage->length();
        stage->player->stop();
    }
}

TEST(PlayerBadInput, WhatIsNoClipIsRefused)
{
    const QString pipe = clipFolderFile(QStringLiteral("pipe.mp4"));
    QFile::remove(pipe); // of a round before
    ASSERT_EQ(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    const QStringList paths{
        written(QStringLiteral("empty.mp4"), {}),
        written(QStringLiteral("text.mp4"), QByteArray("Once upon a time there was a file of words.\n").repeated(40)),
        QDir::tempPath(),
        pipe,
        QStringLiteral("/dev/zero"),
    };
    const LogCapture log;
    PlayerStage stage;
    ASSERT_TRUE(stage.playToEnd(paths, 0, 0)) << log.lines().join(u'\n').toStdString();
    EXPECT_TRUE(stage.sink.pictures.empty());
    for (const QString& path : paths)
        EXPECT_GE(log.count(path.toUtf8().constData()), 1) << path.toStdString();
}

} // namespace
} // namespace tavlo::test
