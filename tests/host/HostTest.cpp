// The reference host as a person runs it: its commands, what they print and how they end.

#include "output/OutputSupport.h"
#include "support/TestClips.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>

namespace tavlo::test {
namespace {

struct HostRun
{
    int status = -1;
    QString out, err;
};

HostRun runHost(const QStringList& arguments, const QString& folder = {})
{
    QProcess process;
    process.setWorkingDirectory(folder);
    process.start(QStringLiteral(TAVLO_HOST), arguments);
    HostRun run;
    if (process.waitForFinished(120'000) && process.exitStatus() == QProcess::NormalExit)
        run.status = process.exitCode();
    run.out = QString::fromUtf8(process.readAllStandardOutput());
    run.err = QString::fromUtf8(process.readAllStandardError());
    return run;
}

/// How much the summary says was lost.
qint64 lossesIn(const QString& summary)
{
    static const QRegularExpression line(QStringLiteral("^lost: .*: (\\d+)$"), QRegularExpression::MultilineOption);
    qint64 sum = 0;
    for (const auto& match : line.globalMatch(summary))
        sum += match.captured(1).toLongLong();
    return sum;
}

ClipForm clipFrom(int firstNumber)
{
    ClipForm form;
    form.frames = 150;
    form.firstNumber = firstNumber;
    return form;
}

/// Pictures that a recording leaves out between others of the same clip; a busy machine may show one for longer.
qint64 missingFrom(const std::vector<int>& numbers)
{
    qint64 sum = 0;
    for (std::size_t i = 1; i < numbers.size(); ++i) {
        const int step = numbers[i] - numbers[i - 1];
        if (std::abs(step) < 1000) {
            EXPECT_GE(step, 0) << "no picture comes back: " << i;
            sum += std::max(step - 1, 0);
        }
    }
    return sum;
}

TEST(Host, SwitchesAndRecordsWhatItIsGiven)
{
    const QTemporaryDir folder;
    const QString first = clipFile(clipFrom(0)), second = clipFile(clipFrom(2000));
    const HostRun run = runHost({"switch", first, second, "--size", "192x108", "--every", "1", "--take-time", "0",
                                 "--seconds", "3", "--record", folder.filePath("show.mp4"), "--snapshot",
                                 folder.filePath("view.png"), "--canvas", "640x360", "--quiet"});
    ASSERT_GE(run.status, 0) << run.err.toStdString();
    ASSERT_LE(run.status, 1) << run.err.toStdString();
    const qint64 lost = lossesIn(run.out);
    EXPECT_EQ(run.status, lost > 0 ? 1 : 0) << run.out.toStdString();
    EXPECT_EQ(QImage(folder.filePath("view.png")).size(), QSize(640, 360));

    const Decoded recorded = decode(folder.filePath("show.mp4"));
    ASSERT_EQ(recorded.error, QString());
    EXPECT_LE(missingFrom(recorded.numbers), lost) << testing::PrintToString(recorded.numbers);
    if (lost == 0) {
        ASSERT_EQ(recorded.numbers.size(), 75U);
        for (std::size_t i = 0; i < 75; ++i)
            EXPECT_EQ(recorded.numbers[i] >= 2000, i >= 25 && i < 50) << "the cuts stand at their frames: " << i;
        EXPECT_NEAR(static_cast<double>(recorded.samples), 3 * 48000, 4800);
    }
}

TEST(Host, PutsOnAShowFileWithItsCues)
{
    const QTemporaryDir folder;
    ASSERT_TRUE(QFile::copy(clipFile(clipFrom(0)), folder.filePath("clip.mp4")));
    QFile file(folder.filePath("show.xml"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(R"(<show>
  <engineInfo><videoInfo><width value="192"/><height value="108"/></videoInfo><channelCount value="1"/>
    <pgmAudioDevName value="None"/><pvmAudioDevName value="None"/></engineInfo>
  <source><sourceInfo><type value="1"/><moviePathList><item value="clip.mp4"/></moviePathList>
    <playbackMode value="0"/></sourceInfo></source>
  <output><outputParam><recordDir value="."/><recordName value="cued"/><recordMode value="1"/></outputParam></output>
  <cue><time value="1"/><event value="TavloEventSetCrop"/><a1 value="TCH-S-0"/>
    <a2><enable value="1"/><cropRect_1 value="0.6"/></a2></cue>
</show>)");
    file.close();
    EXPECT_EQ(runHost({"check", "show.xml"}, folder.path()).status, 0);
    const HostRun run = runHost({"run", "show.xml", "--quiet"}, folder.path()); // to the end of its clip
    ASSERT_LE(run.status, 1) << run.err.toStdString() << run.out.toStdString();
    const Decoded recorded = decode(folder.filePath("cued.mkv"));
    ASSERT_EQ(recorded.error, QString());
    ASSERT_GT(recorded.numbers.size(), 100U);
    EXPECT_EQ(recorded.numbers[80], 0) << "the cue crops the number away";
    if (run.status == 0) {
        EXPECT_GT(*std::max_element(recorded.numbers.begin(), recorded.numbers.begin() + 25), 0);
        EXPECT_EQ(recorded.numbers[26], 0);
    }
}

TEST(Host, TellsWhatIsWrongAndEndsWithItsNumber)
{
    const QTemporaryDir folder;
    const QString clip = clipFile(clipFrom(0));
    QFile show(folder.filePath("bad.xml"));
    ASSERT_TRUE(show.open(QIODevice::WriteOnly));
    show.write(
        "<show>\n<source><sourceInfo><type value=\"1\"/>\n<moviePathList><item value=\"none.mp4\"/></moviePathList>"
        "</sourceInfo></source>\n<cue><event value=\"TavloEventParty\"/></cue>\n<cue><time value=\"1\"/>"
        "<event value=\"TavloEventTransition\"/>\n<a3><effect value=\"sparkle\"/></a3></cue>\n</show>\n");
    show.close();
    struct Case
    {
        QStringList arguments;
        int status;
        QStringList words;
    };
    const std::vector<Case> cases{
        {{}, 2, {"usage: tavlo COMMAND", "switch"}},
        {{"dance"}, 2, {"usage"}},
        {{"--help"}, 0, {"usage: tavlo COMMAND", "switch"}},
        {{"switch", "--help"}, 0, {"--take-time SECONDS"}},
        {{"effects", "--help"}, 0, {"usage: tavlo effects [--json]"}},
        {{"switch"}, 2, {"wants 1 to 38 clips"}},
        {{"switch", "none.mp4"}, 2, {"none.mp4: there is no such file"}},
        {{"switch", clip, "--every", "often"}, 2, {"--every often: wants a number"}},
        {{"switch", clip, "--effect", "sparkle"}, 2, {"--effect sparkle", "tavlo effects"}},
        {{"switch", clip, "--size", "huge"}, 2, {"--size huge", "1280x720"}},
        {{"switch", clip, "--record", "a.avi"}, 2, {"a.avi: recordings are .mp4, .mkv or .ts"}},
        {{"switch", clip, "--stream", "gopher://x"}, 2, {"gopher://x: streams go to"}},
        {{"switch", clip, "--loudly"}, 2, {"loudly"}},
        {{"run", "none.xml"}, 2, {"none.xml: No such file"}},
        {{"run", "bad.xml"}, 2, {"bad.xml:2", "none.mp4"}},
        {{"check", "bad.xml"}, 1, {"bad.xml:4", "TavloEventParty", "bad.xml:6", "cue/a3: \"sparkle\" is no effect"}},
        {{"check", "none.xml"}, 2, {"none.xml: No such file"}},
        {{"probe", "none.mp4"}, 2, {"there is no such file"}},
        {{"probe", folder.filePath("bad.xml")}, 3, {"nothing in it can be played"}},
    };
    for (const Case& c : cases) {
        const HostRun run = runHost(c.arguments, folder.path());
        EXPECT_EQ(run.status, c.status) << c.arguments.join(u' ').toStdString();
        for (const QString& word : c.words)
            EXPECT_TRUE((run.out + run.err).contains(word)) << word.toStdString() << " in:\n"
                                                            << (run.out + run.err).toStdString();
    }
}

TEST(Host, ListsWhatThereIs)
{
    const auto rows = [](const QString& command) {
        return QJsonDocument::fromJson(runHost({command, QStringLiteral("--json")}).out.toUtf8()).array();
    };
    EXPECT_EQ(rows("effects").size(), 105);
    EXPECT_EQ(rows("filters").size(), 22);
    EXPECT_EQ(rows("devices").at(0).toObject().value("kind").toString(), QString("graphics"));
    EXPECT_EQ(rows("version").at(0).toObject().value("name").toString(), QString("tavlo"));
    const HostRun probed = runHost({"probe", clipFile(clipFrom(0)), "--json"});
    const QJsonObject found = QJsonDocument::fromJson(probed.out.toUtf8()).array().at(0).toObject();
    EXPECT_EQ(found.value("width").toInt(), 192);
    EXPECT_EQ(found.value("height").toInt(), 108);
    EXPECT_EQ(found.value("sampleRate").toInt(), 48000);
    EXPECT_NEAR(found.value("milliseconds").toInt(), 6000, 60);
}

TEST(Host, ControlCFinishesTheRecording)
{
    const QTemporaryDir folder;
    QProcess process;
    process.start(QStringLiteral(TAVLO_HOST),
                  {"switch", clipFile(clipFrom(0)), "--size", "192x108", "--record", folder.filePath("until.mp4")});
    process.setReadChannel(QProcess::StandardError);
    QByteArray status;
    while (!status.contains("50 frames") && process.waitForReadyRead(60'000))
        status += process.readAllStandardError();
    ASSERT_TRUE(status.contains("50 frames")) << status.toStdString();
    ASSERT_EQ(kill(static_cast<pid_t>(process.processId()), SIGINT), 0);
    ASSERT_TRUE(process.waitForFinished(60'000));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_LE(process.exitCode(), 1);
    const Decoded recorded = decode(folder.filePath("until.mp4"));
    EXPECT_EQ(recorded.error, QString());
    EXPECT_TRUE(recorded.plainIndex);
    EXPECT_GE(recorded.numbers.size(), 50U);
}

} // namespace
} // namespace tavlo::test
