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

void writeFile(const QString& path, const QByteArray& text)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(text);
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
        EXPECT_GT(recorded.samples, 0); // on a busy machine the mix begins late
        EXPECT_LE(recorded.samples, 3 * 48000 + 4800);
    }
}

TEST(Host, PutsOnAShowFileWithItsCues)
{
    const QTemporaryDir folder;
    ASSERT_TRUE(QFile::copy(clipFile(clipFrom(0)), folder.filePath("clip.mp4")));
    writeFile(folder.filePath("show.xml"), R"(<show>
  <engineInfo><videoInfo><width value="192"/><height value="108"/></videoInfo><channelCount value="1"/>
    <pgmAudioDevName value="None"/><pvmAudioDevName value="None"/></engineInfo>
  <source><sourceInfo><type value="1"/><moviePathList><item value="clip.mp4"/></moviePathList>
    <playbackMode value="0"/></sourceInfo></source>
  <output><outputParam><recordDir value="."/><recordName value="cued"/><recordMode value="1"/></outputParam>
    <index value="2"/></output>
  <cue><time value="1"/><event value="TavloEventSetCrop"/><a1 value="TCH-S-0"/>
    <a2><enable value="1"/><cropRect_1 value="0.6"/></a2></cue>
</show>)");
    EXPECT_EQ(runHost({"check", "show.xml"}, folder.path()).status, 0);
    const HostRun run = runHost({"run", "show.xml", "--quiet"}, folder.path()); // to the end of its clip
    ASSERT_LE(run.status, 1) << run.err.toStdString() << run.out.toStdString();
    const Decoded recorded = decode(folder.filePath("cued.mkv"));
    ASSERT_EQ(recorded.error, QString());
    ASSERT_GT(recorded.numbers.size(), 100U);
    // Behind the last picture with a number stand only those whose number the cue has cropped away.
    const auto lastNumber =
        std::ranges::find_if(recorded.numbers.rbegin(), recorded.numbers.rend(), [](int number) { return number > 0; });
    const auto shown = recorded.numbers.rend() - lastNumber;
    EXPECT_GE(shown, run.status == 0 ? 20 : 0) << "but not before its time";
    EXPECT_LT(shown, static_cast<std::ptrdiff_t>(recorded.numbers.size())) << "the cue has come";
}

/// A recording that is there stays, and each line is an object that tells of the new one.
TEST(Host, TellsProgramsHowItStands)
{
    const QTemporaryDir folder;
    writeFile(folder.filePath("show.mkv"), "there already");
    const HostRun run = runHost({"switch", clipFile(clipFrom(0)), "--size", "192x108", "--seconds", "1.2", "--record",
                                 folder.filePath("show.mkv"), "--json"});
    ASSERT_LE(run.status, 1) << run.err.toStdString();
    const QStringList lines = run.out.split(u'\n', Qt::SkipEmptyParts);
    ASSERT_GE(lines.size(), 1);
    QJsonObject last;
    for (const QString& line : lines) {
        last = QJsonDocument::fromJson(line.toUtf8()).object();
        EXPECT_FALSE(last.isEmpty()) << line.toStdString();
    }
    EXPECT_TRUE(last.value("over").toBool());
    EXPECT_EQ(last.value("files").toArray(), QJsonArray{folder.filePath("show_1.mkv")});
    const QJsonObject output = last.value("outputs").toArray().at(0).toObject();
    if (last.value("losses").toArray().isEmpty()) {
        EXPECT_EQ(output.value("codedPictures").toInt(), 30);
        EXPECT_EQ(output.value("writtenPictures").toInt(), 30) << "all, the encoder's last ones among them";
    }
    EXPECT_EQ(decode(folder.filePath("show_1.mkv")).numbers.size(), output.value("writtenPictures").toInteger());
}

TEST(Host, FadesToAKeyedChannel)
{
    const QTemporaryDir folder;
    ASSERT_TRUE(QFile::copy(clipFile(clipFrom(0)), folder.filePath("a.mp4")));
    ASSERT_TRUE(QFile::copy(clipFile(clipFrom(2000)), folder.filePath("b.mp4")));
    writeFile(folder.filePath("show.xml"), R"(<show><seconds value="3"/>
  <engineInfo><videoInfo><width value="192"/><height value="108"/></videoInfo><channelCount value="2"/>
    <pgmAudioDevName value="None"/><pvmAudioDevName value="None"/></engineInfo>
  <source><sourceInfo><type value="1"/><moviePathList><item value="a.mp4"/></moviePathList></sourceInfo></source>
  <source><sourceInfo><type value="1"/><moviePathList><item value="b.mp4"/></moviePathList></sourceInfo>
    <pictureFilter><lumaKeyParam><enable value="1"/><tolerance value="0.3"/></lumaKeyParam>
      <miscParam><backgroundColor value="4294967295"/></miscParam></pictureFilter></source>
  <cue><time value="1"/><event value="TavloEventTransition"/><a2 value="TCH-S-1"/>
    <a3><effect value="fade_Normal"/><duration value="0.4"/></a3></cue>
</show>)");
    const HostRun run =
        runHost({"run", "show.xml", "--quiet", "--record", folder.filePath("faded.mp4")}, folder.path());
    ASSERT_LE(run.status, 1) << run.err.toStdString();
    EXPECT_TRUE(run.out.contains("recorded: " + folder.filePath("faded.mp4"))) << run.out.toStdString();
    const Decoded recorded = decode(folder.filePath("faded.mp4"));
    ASSERT_EQ(recorded.error, QString());
    if (lossesIn(run.out) > 0)
        return; // a busy machine: where the fade stands is not known
    ASSERT_EQ(recorded.numbers.size(), 75U);
    for (std::size_t i = 0; i < 25; ++i)
        EXPECT_TRUE(recorded.numbers[i] >= 0 && recorded.numbers[i] < 150) << i << ": " << recorded.numbers[i];
    for (std::size_t i = 37; i < 75; ++i)
        EXPECT_EQ(recorded.numbers[i], 4095) << i << ": white stands where black was keyed away";
}

/// Every example in the pages is a show that is good.
TEST(Host, TheExamplesAreGood)
{
    const QTemporaryDir folder;
    ASSERT_TRUE(QDir(folder.path()).mkdir("clips"));
    for (const char* clip : {"A", "B", "C_green", "D"})
        writeFile(folder.filePath(QStringLiteral("clips/%1.mp4").arg(QLatin1String(clip))), "");
    ASSERT_TRUE(QFile::copy(QStringLiteral(TAVLO_DOCS "/examples/show.xml"), folder.filePath("0.xml")));

    QFile page(QStringLiteral(TAVLO_DOCS "/show-file.md"));
    ASSERT_TRUE(page.open(QIODevice::ReadOnly));
    static const QRegularExpression block(QStringLiteral("```xml\n(.*?)```"),
                                          QRegularExpression::DotMatchesEverythingOption);
    int count = 1;
    for (const auto& match : block.globalMatch(QString::fromUtf8(page.readAll())))
        writeFile(
            folder.filePath(QStringLiteral("%1.xml").arg(count++)),
            "<show><source><sourceInfo><type value=\"7\"/><url value=\"udp://127.0.0.1:9\"/></sourceInfo></source>" +
                match.captured(1).toUtf8() + "</show>");
    ASSERT_GT(count, 3);
    for (int i = 0; i < count; ++i) {
        const HostRun run = runHost({"check", QStringLiteral("%1.xml").arg(i)}, folder.path());
        EXPECT_EQ(run.status, 0) << run.out.toStdString();
    }
}

/// Each row is a show with one fault, and the words that tell it.
TEST(Host, ChecksWhatCannotWork)
{
    struct Case
    {
        const char *inside, *words;
    };
    const QByteArray source =
        R"(<source><sourceInfo><type value="7"/><url value="udp://127.0.0.1:9"/></sourceInfo></source>)";
    const std::vector<Case> cases{
        {R"(<cue><event value="TavloEventCloseSource"/><a1 value="0"/></cue>)", "cue: has no \"time\""},
        {R"(<cue><time value="1"/><event value="TavloEventSelectChannel"/><a1 value="PVM"/></cue>)", "has no \"a2\""},
        {R"(<cue><time value="1"/><event value="TavloEventCloseSource"/><a1/></cue>)", "no attribute \"value\""},
        {R"(<cue><time value="1"/><event value="TavloEventCloseSource"/><a1 value="TCH-S-64"/></cue>)",
         "is no number or channel"},
        {R"(<cue><time value="1"/><event value="TavloEventCloseSource"/><a1 value="TCH-S-12"/></cue>)",
         "12 is no channel here"},
        {R"(<cue><time value="1"/><event value="TavloEventCloseSource"/><a1 value="PGM"/></cue>)",
         "4097 is no channel here"},
        {R"(<cue><time value="nan"/><event value="TavloEventCloseSource"/><a1 value="0"/></cue>)", "cue/time: \"nan\""},
        {R"(<cue><time value="1"/><event value="TavloEventSetBlendLayer"/><a1 value="PGM"/><a2 value="none.mp4"/></cue>)",
         "there is no file"},
        {R"(<cue><time value="1"/><event value="TavloEventSaveChannelPicture"/><a1 value="8192"/><a2 value="no/a.png"/></cue>)",
         "there is no folder"},
        {R"(<cue><time value="1"/><event value="TavloEventOpenSource"/><a1 value="0"/><a2><type value="1"/><moviePathList><item value="none.mp4"/></moviePathList></a2></cue>)",
         "cue/a2: there is no file"},
        {R"(<cue><time value="1"/><event value="TavloEventAddLogo"/></cue>)", "this build makes no items"},
        {R"(<source><channel value="0"/><sourceInfo><type value="7"/><url value="udp://127.0.0.1:9"/></sourceInfo></source>)",
         "channel 0 has a source already"},
        {R"(<source><sourceInfo><type value="8"/><webUrl value="a"/></sourceInfo></source>)",
         "makes no source of type 8"},
        {R"(<source><channel value="1.5"/><sourceInfo><type value="7"/><url value="udp://127.0.0.1:9"/></sourceInfo></source>)",
         "source/channel: \"1.5\""},
        {R"(<engineInfo><channelCount value="65"/></engineInfo>)", "1 to 64 channels, not 65"},
        {R"(<engineInfo><videoInfo><fpsNum value="30000"/><fpsDen value="1001"/></videoInfo></engineInfo>)",
         "30000/1001 is no whole number"},
        {R"(<engineInfo><videoInfo><width value="853"/><height value="480"/></videoInfo></engineInfo><output><type value="0"/></output>)",
         "853x480 cannot be recorded"},
        {R"(<output><type value="4"/></output>)", "4 is no type of an output"},
        {R"(<seconds value="1"/><seconds value="2"/>)", "stands here twice"},
    };
    const QTemporaryDir folder;
    for (const Case& c : cases) {
        writeFile(folder.filePath("show.xml"), "<show>" + source + c.inside + "</show>");
        const HostRun run = runHost({"check", "show.xml"}, folder.path());
        EXPECT_EQ(run.status, 2) << c.inside;
        EXPECT_TRUE(run.out.contains(QLatin1String(c.words))) << c.words << " in:\n" << run.out.toStdString();
        EXPECT_EQ(run.out.count(u'\n'), 1) << "and nothing else:\n" << run.out.toStdString();
    }
}

TEST(Host, TellsWhatIsWrongAndEndsWithItsNumber)
{
    const QTemporaryDir folder;
    const QString clip = clipFile(clipFrom(0));
    writeFile(
        folder.filePath("bad.xml"),
        "<show>\n<source><sourceInfo><type value=\"1\"/>\n<moviePathList><item value=\"none.mp4\"/></moviePathList>"
        "</sourceInfo></source>\n<cue><time value=\"1\"/><event value=\"TavloEventParty\"/></cue>\n<cue><time "
        "value=\"1\"/>"
        "<event value=\"TavloEventTransition\"/>\n<a2 value=\"0\"/><a3><effect "
        "value=\"sparkle\"/></a3></cue>\n</show>\n");
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
        {{"switch", clip, "--size", "853x480", "--record", "a.mp4"}, 2, {"853x480 cannot be recorded"}},
        {{"switch", clip, "--fps", "29.97"}, 2, {"--fps 29.97: wants a whole number"}},
        {{"switch", clip, "--seconds", "nan"}, 2, {"--seconds nan: wants a number"}},
        {{"switch", clip, "--record-period", "9"}, 2, {"--record-period: wants a --record"}},
        {{"switch", clip, "--snapshot", "no/a.png"}, 2, {"--snapshot no/a.png: there is no folder"}},
        {{"switch", clip, "--size", "192x108", "--seconds", "0.2", "--quiet", "--snapshot", "a.nothing"},
         1,
         {"a.nothing: the picture could not be written"}},
        {{"switch", clip, "--loudly"}, 2, {"loudly"}},
        {{"effects", "--loudly"}, 2, {"usage: tavlo effects"}},
        {{"run", "none.xml"}, 2, {"none.xml: No such file"}},
        {{"run", "bad.xml"}, 2, {"bad.xml:2", "none.mp4"}},
        {{"check", "bad.xml"}, 2, {"bad.xml:4", "TavloEventParty", "bad.xml:6", "cue/a3: \"sparkle\" is no effect"}},
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
    EXPECT_EQ(found.value("fps").toDouble(), 25.0);
    EXPECT_EQ(found.value("sampleRate").toInt(), 48000);
    EXPECT_NEAR(found.value("milliseconds").toInt(), 6000, 60);
}

TEST(Host, ShowsNoWindowWithoutADisplay)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DISPLAY"), QStringLiteral(":99999"));
    environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(TAVLO_HOST), {"switch", clipFile(clipFrom(0)), "--window"});
    ASSERT_TRUE(process.waitForFinished(60'000));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process.exitCode(), 3);
    EXPECT_TRUE(process.readAllStandardError().contains("\":99999\" does not answer"));
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
