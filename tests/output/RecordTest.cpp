#include "OutputSupport.h"
#include "support/LogCapture.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QProcess>

#include <gtest/gtest.h>

#include <sys/mount.h>

#include <atomic>
#include <random>
#include <thread>
#include <tuple>

namespace {

using namespace tavlo::test;

constexpr int record = TavloPresentOutputTypeRecord;

QStringList filesIn(const QString& folder)
{
    QStringList paths;
    QDirIterator files(folder, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext())
        paths.append(files.next());
    paths.sort();
    return paths;
}

/// Pictures of files, one behind the other, and how many samples.
std::pair<std::vector<int>, qint64> joined(const QStringList& files)
{
    std::vector<std::vector<int>> parts;
    qint64 samples = 0;
    for (const QString& file : files) {
        const Decoded decoded = decode(file);
        parts.push_back(decoded.numbers);
        samples += decoded.samples;
    }
    std::ranges::sort(parts);
    std::vector<int> numbers;
    for (const std::vector<int>& part : parts)
        numbers.insert(numbers.end(), part.begin(), part.end());
    return {numbers, samples};
}

/// No picture is missing between the first and the last one.
void expectInARow(const std::vector<int>& numbers, size_t least)
{
    ASSERT_GE(numbers.size(), least);
    EXPECT_EQ(numbers, numbersFrom(numbers.front(), static_cast<int>(numbers.size())));
}

/// Sound against the pictures that it belongs to.
void expectInSync(const Decoded& decoded)
{
    ASSERT_GT(decoded.numbers.size(), size_t{Programme::beepEvery});
    for (size_t i = 1; i < decoded.numbers.size(); ++i)
        EXPECT_TRUE(decoded.numbers[i] % Programme::beepEvery != 0 || decoded.beepsAt(decoded.times[i]))
            << "no tone sets in with picture " << decoded.numbers[i] << " at " << decoded.times[i];
}

void expectColors(const Decoded& decoded)
{
    ASSERT_FALSE(decoded.colors.empty());
    for (int field = 0; field < 6; ++field)
        for (size_t i = 0; i < 3; ++i)
            EXPECT_NEAR(decoded.colors[static_cast<size_t>(field)][i], Programme::fieldColor(field)[i], 3)
                << "field " << field << " component " << i;
}

void expectPerfect(const tagTavloOutputStatistics& statistics)
{
    EXPECT_EQ(statistics.droppedPictures + statistics.droppedBlocks + statistics.encoderDropped, 0U);
    EXPECT_EQ(statistics.repeatedPictures + statistics.skippedPictures + statistics.silentSamples, 0U);
    EXPECT_EQ(statistics.recordDropped, 0U);
}

class RecordGL : public testing::TestWithParam<std::tuple<Stage::Way, quint32, quint32>>
{};

TEST_P(RecordGL, DecodesToWhatWasCommitted)
{
    const auto [way, mode, codec] = GetParam();
    const QTemporaryDir folder;
    Stage stage(way);
    tagTavloPresentOutputParam param = Stage::param(folder.path());
    param.recordMode = mode;
    param.videoCodec = codec;
    param.encoderSettings[0] = codec == 0 ? mode : 0; // bidirectional pictures
    stage.start(record, param);
    stage.commit(0, 70);
    expectPerfect(stage.statistics());
    stage.stop(record);

    const QStringList files = filesIn(folder.path());
    ASSERT_EQ(files.size(), 1);
    const Decoded decoded = decode(files[0]);
    EXPECT_EQ(decoded.error, QString());
    EXPECT_EQ(decoded.numbers, numbersFrom(0, 70));
    EXPECT_NEAR(static_cast<double>(decoded.samples), 70 * 1920, 3 * 1024);
    EXPECT_EQ(decoded.plainIndex, mode == 2);
    expectInSync(decoded);
    expectColors(decoded);
}

using Way = Stage::Way;
INSTANTIATE_TEST_SUITE_P(Modes, RecordGL,
                         testing::Combine(testing::Values(Way::Graphics, Way::Memory), testing::Values(0U, 1U, 2U),
                                          testing::Values(0U)));
INSTANTIATE_TEST_SUITE_P(Ways, RecordGL,
                         testing::Combine(testing::Values(Way::Pictures, Way::BottomFirst), testing::Values(2U),
                                          testing::Values(0U)));
INSTANTIATE_TEST_SUITE_P(HEVC, RecordGL,
                         testing::Combine(testing::Values(Way::Pictures), testing::Values(0U, 2U),
                                          testing::Values(1U)));

/// No coded picture waits for the encoder here, so most are lost; none may be lost without a word.
TEST(Record, EachPictureIsInTheFileOrInOneAccount)
{
    for (const Way way : {Way::Pictures, Way::Memory}) {
        const QTemporaryDir folder;
        Stage stage(way);
        stage.start(record, Stage::param(folder.path()));
        std::atomic<int> committed = 0;
        std::thread stopping([&] {
            while (committed < 100)
                std::this_thread::yield();
            stage.stop(record);
        });
        for (; committed < 200; ++committed) { // fewer than the file's queue holds
            stage.commit(committed, 1, false);
            if (committed % 10 == 0)
                stage.commit(committed, 1, false); // beyond the rate
        }
        stopping.join();
        stage.stop(record); // comes behind the last picture

        const tagTavloOutputStatistics statistics = stage.statistics();
        EXPECT_EQ(openPictures(statistics), 0);
        EXPECT_EQ(statistics.recordWritten, statistics.codedPictures);
        EXPECT_EQ(statistics.recordDropped, 0U);
        std::vector<int> numbers = decode(filesIn(folder.path()).value(0)).numbers;
        EXPECT_EQ(numbers.size(), statistics.recordWritten);
        numbers.erase(std::ranges::unique(numbers).begin(), numbers.end());
        EXPECT_EQ(numbers.size(), statistics.codedPictures - statistics.repeatedPictures);
    }
}

/// Those around the size that the pool's blocks begin with.
TEST(Record, TakesBlocksOfSoundOfAnySize)
{
    const QTemporaryDir folder;
    Stage stage(Way::Pictures);
    tagTavloPresentOutputParam param = Stage::param(folder.path());
    stage.start(record, param);
    qint64 samples = 0;
    for (int bytes = 8100; bytes < 8400; bytes += 4) {
        const std::vector<quint8> sound(static_cast<size_t>(bytes), 1);
        stage.target.commitAudioData(sound.data(), bytes, Programme::begin + samples * 1'000'000 / Programme::rate);
        stage.commitPicture(static_cast<int>(samples * Programme::fps / Programme::rate));
        stage.stop(TavloPresentOutputTypeNet); // comes behind both
        samples += bytes / 4;
    }
    stage.stop(record);
    EXPECT_EQ(stage.statistics().droppedBlocks + stage.statistics().silentSamples, 0U);
    const Decoded decoded = decode(filesIn(folder.path()).value(0));
    EXPECT_NEAR(static_cast<double>(decoded.samples), static_cast<double>(samples), 3 * 1024);
}

/// Half a minute of it takes some seconds.
TEST(Record, SplitsWithoutLosingAPictureOrASample)
{
    struct Case
    {
        quint32 mode, period;
        int count;
    };
    for (const Case& one : {Case{0, 1, 80}, Case{1, 1, 80}, Case{2, 10, 30 * Programme::fps}}) {
        SCOPED_TRACE("mode " + std::to_string(one.mode));
        const QTemporaryDir folder, wholes;
        Stage stage(Way::Pictures);
        tagTavloPresentOutputParam param = Stage::param(folder.path());
        param.recordMode = one.mode;
        param.recordPeriod = one.period;
        param.tsRecordEnabled = 1; // the same in one file
        param.tsRecordDir = wholes.path();
        param.tsRecordSegmentSeconds = 3600;
        stage.start(record, param);
        stage.commit(0, one.count);
        expectPerfect(stage.statistics());
        stage.stop(record);

        const Decoded whole = decode(filesIn(wholes.path()).value(0));
        EXPECT_EQ(whole.numbers, numbersFrom(0, one.count));
        EXPECT_NEAR(static_cast<double>(whole.samples), one.count * 1920 + 1024, 1024); // the codec's own block before
        expectInSync(whole);
        const QStringList files = filesIn(folder.path()); // show, show_1, show_2
        EXPECT_EQ(files.size(), 3);
        EXPECT_EQ(joined(files), std::pair(whole.numbers, whole.samples));
    }
}

TEST(Record, KeepsSegmentsBesideItAndRemovesThoseThatAreTooOld)
{
    const QTemporaryDir folder;
    const QString segments = folder.filePath(QStringLiteral("ts"));
    const QDateTime now = QDateTime::currentDateTime();
    const QStringList foreign{"day/10_00_00.ts", "2026-01-02/show.ts", "2026-01-02/10_00_00.txt",
                              "2026-01-02/deep/10_00_00.ts"};
    const QStringList old{"2026-01-02/10_00_00.ts", "2026-01-02/10_00_00_12.ts", "2026-01-03/10_00_00.ts"};
    const QString young = QStringLiteral("2026-01-02/10_01_00.ts");
    for (const QString& name : foreign + old + QStringList{young}) {
        QFile file(segments + QLatin1Char('/') + name);
        QDir().mkpath(QFileInfo(file).path());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_TRUE(file.setFileTime(now.addSecs(name == young ? -60 : -7200), QFileDevice::FileModificationTime));
    }
    Stage stage(Way::Pictures);
    tagTavloPresentOutputParam param = Stage::param(folder.path());
    param.tsRecordEnabled = 1;
    param.tsRecordDir = segments;
    param.tsRecordSegmentSeconds = 1;
    param.tsRecordKeepSeconds = 3600;
    stage.start(record, param);
    stage.commit(0, 80);
    stage.stop(record);

    QStringList files = filesIn(segments);
    for (const QString& name : foreign + QStringList{young})
        EXPECT_TRUE(files.removeOne(segments + QLatin1Char('/') + name)) << name.toStdString();
    EXPECT_FALSE(QDir(segments + QStringLiteral("/2026-01-03")).exists());
    ASSERT_EQ(files.size(), 3); // nothing that is old, and what was written now
    EXPECT_EQ(joined(files).first, numbersFrom(0, 80));
    EXPECT_EQ(decode(folder.filePath(QStringLiteral("show.mp4"))).numbers, numbersFrom(0, 80));
}

TEST(Record, NamesItsFilesByTimeAndOverwritesNone)
{
    const QTemporaryDir folder;
    tagTavloPresentOutputParam param = Stage::param(folder.path());
    param.recordName = QStringLiteral("${PROGRAMNAME}_${TIME}");
    param.recordTimeFormat = QStringLiteral("'day'/'hour'");
    for (int i = 0; i < 2; ++i) {
        Stage stage(Way::Pictures);
        stage.start(record, param);
        stage.commit(0, 3);
    } // the target's end closes the file
    EXPECT_EQ(filesIn(folder.path()), (QStringList{folder.filePath(QStringLiteral("show_day/hour.mp4")),
                                                   folder.filePath(QStringLiteral("show_day/hour_1.mp4"))}));
    EXPECT_EQ(decode(folder.filePath(QStringLiteral("show_day/hour_1.mp4"))).numbers, numbersFrom(0, 3));
}

TEST(Record, GoesOnWhenItsFolderComesBack)
{
    const QTemporaryDir folder;
    const QString place = folder.filePath(QStringLiteral("disk"));
    QFile obstacle(place);
    ASSERT_TRUE(obstacle.open(QIODevice::WriteOnly));
    LogCapture log;
    Stage stage(Way::Pictures);
    stage.start(record, Stage::param(place));
    stage.commit(0, 15);
    while (stage.statistics().recordState != tagTavloOutputStatistics::Waiting)
        std::this_thread::yield();
    EXPECT_EQ(log.count("cannot record, and tries again"), 1);
    obstacle.remove();
    int number = 15;
    while (stage.statistics().recordState != tagTavloOutputStatistics::Running)
        stage.commit(number++, 1);
    const int first = number;
    stage.commit(number, 30);
    EXPECT_GT(stage.statistics().recordDropped, 0U);
    stage.stop(record);
    const QStringList files = filesIn(place);
    ASSERT_EQ(files.size(), 1);
    const std::vector<int> numbers = decode(files[0]).numbers;
    ASSERT_GE(numbers.size(), 30U);
    EXPECT_EQ(numbers.back(), (first + 29) & 0xfff);
}

/// A file system of its own, so small that it can be filled.
class SmallDisk
{
public:
    ~SmallDisk() { umount(bytes().constData()); }

    bool mounts() const { return mount("tmpfs", bytes().constData(), "tmpfs", 0, "size=16m") == 0; }
    QString path() const { return _folder.path(); }

    /// Leaves no room at all. \return whether it came to that
    bool fill()
    {
        QFile ballast(ballastPath());
        const bool opened = ballast.open(QIODevice::WriteOnly | QIODevice::Unbuffered);
        while (opened && ballast.write(QByteArray(4096, 'x')) > 0) {
        }
        return ballast.size() > 0;
    }
    void empty() { QFile::remove(ballastPath()); }

private:
    QByteArray bytes() const { return path().toUtf8(); }
    QString ballastPath() const { return _folder.filePath(QStringLiteral("ballast")); }

    const QTemporaryDir _folder;
};

TEST(Record, GoesOnInANewFileWhenAFullDiskHasRoomAgain)
{
    SmallDisk disk;
    if (!disk.mounts())
        GTEST_SKIP() << "mounting a small file system is the administrator's";
    LogCapture log;
    Stage stage(Way::Pictures);
    stage.start(record, Stage::param(disk.path()));
    int number = 50;
    stage.commit(0, number);
    ASSERT_TRUE(disk.fill());
    while (stage.statistics().recordState != tagTavloOutputStatistics::Waiting)
        stage.commit(number++, 1);
    EXPECT_EQ(log.count("cannot record, and tries again"), 1);
    disk.empty();
    while (stage.statistics().recordState != tagTavloOutputStatistics::Running)
        stage.commit(number++, 1);
    stage.commit(number, 30);
    stage.stop(record);
    const tagTavloOutputStatistics statistics = stage.statistics();
    EXPECT_EQ(statistics.recordWritten + statistics.recordDropped, statistics.codedPictures);
    EXPECT_EQ(statistics.droppedPictures + statistics.encoderDropped, 0U);

    const QStringList files = filesIn(disk.path());
    ASSERT_EQ(files.size(), 2);
    const std::vector<int> before = decode(files[0]).numbers, behind = decode(files[1]).numbers;
    ASSERT_NO_FATAL_FAILURE(expectInARow(before, 50 - Programme::fps));
    EXPECT_EQ(before.front(), 0);
    ASSERT_NO_FATAL_FAILURE(expectInARow(behind, 30));
    EXPECT_EQ(behind.back(), number + 29);
}

TEST(Record, KilledAtAnyMomentItPlaysUpToItsLastSecond)
{
    std::random_device random; // any moment will do
    for (const quint32 mode : {0U, 1U, 2U, 2U}) {
        const QTemporaryDir folder;
        QProcess recorder;
        recorder.start(QCoreApplication::applicationDirPath() + QStringLiteral("/output-recorder"),
                       {folder.path(), QString::number(mode)});
        const int last = 40 + static_cast<int>(random() % 80);
        int committed = 0;
        while (committed < last && (recorder.canReadLine() || recorder.waitForReadyRead()))
            if (recorder.canReadLine())
                committed = recorder.readLine().toInt();
        recorder.kill();
        recorder.waitForFinished();
        ASSERT_GE(committed, last);
        SCOPED_TRACE("killed behind picture " + std::to_string(committed) + " mode " + std::to_string(mode));

        const QStringList files = filesIn(folder.path());
        ASSERT_EQ(files.size(), 1);
        const std::vector<int> numbers = decode(files[0]).numbers;
        ASSERT_NO_FATAL_FAILURE(expectInARow(numbers, 1));
        EXPECT_EQ(numbers.front(), 0);
        EXPECT_GE(numbers.back(), committed - Programme::fps);
    }
}

} // namespace
