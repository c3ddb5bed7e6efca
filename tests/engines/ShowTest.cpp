// A clip through the whole engine on its own thread: played, composed, recorded, and read back from the file.

#include "engines/TavloPresentEnginePrivate.h"
#include "output/OutputSupport.h"
#include "support/LogCapture.h"
#include "support/TestClips.h"

#include <tavlo/records/OutputRecords.h>

#include <QCoreApplication>
#include <QDir>
#include <QRegularExpression>
#include <QThread>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <memory>

using namespace tavlo;
using namespace tavlo::test;

namespace {

/// Plays what it is told of, and knows when the list has ended.
class Host final : public Implements<Host, ITavloPresentThreadSink>
{
public:
    void destroy() override {}
    void onEvent(qulonglong event, QVariant result, QVariant a1, QVariant a2, QVariant, QVariant) override
    {
        auto* const source = reinterpret_cast<ITavloPresentSource*>(a2.toULongLong());
        if (event == TavloEventCreateEngine)
            created = result == QVariant(0);
        else if (event == TavloEventSourceOpened && source)
            source->play();
        else if (event == TavloEventSourcePlaylistEnd)
            ended = true;
        else if (event == TavloEventDestroyEngine)
            destroyed = true;
        if ((event == TavloEventSourceOpened || event == TavloEventSourceClosed) && source)
            source->release();
        (void)a1;
    }

    std::atomic<bool> created = false, ended = false, destroyed = false;
};

bool waitFor(const std::atomic<bool>& flag)
{
    for (int i = 0; i < 6000 && !flag; ++i) {
        QCoreApplication::processEvents();
        QThread::msleep(10);
    }
    return flag;
}

/// The pictures that the player and the source say they left out: the figures in these lines.
int toldLosses(const LogCapture& log)
{
    static const QRegularExpression line(QStringLiteral("^(player: pictures left out|source: pictures that)"));
    static const QRegularExpression figure(QStringLiteral("\\b(\\d+)\\b"));
    int sum = 0;
    for (const QString& text : log.lines()) {
        if (!text.contains(line))
            continue;
        for (const QRegularExpressionMatch& match : figure.globalMatch(text))
            sum += match.captured(1).toInt();
    }
    return sum;
}

TEST(Show, AClipGoesThroughTheEngineIntoAFile)
{
    ClipForm form;
    form.frames = 60;
    const QString clip = clipFile(form);
    ClipForm tail; // what the end of the recording may cut off
    tail.frames = 20;
    tail.firstNumber = form.frames;
    const QString end = clipFile(tail);
    ASSERT_FALSE(clip.isEmpty() || end.isEmpty());
    const LogCapture log;
    const QTemporaryDir folder;

    Host host;
    TavloPresentEngine engine;
    engine.start(&host, TavloPresentThreadModeThread);
    tagTavloPresentEngineInfo info;
    info.videoInfo.width = info.videoInfo.sourceWidth = form.width;
    info.videoInfo.height = info.videoInfo.sourceHeight = form.height;
    info.channelCount = 2;
    info.pgmAudioDevName = info.pvmAudioDevName = QStringLiteral("None");
    info.dataCachePath = folder.path();
    tagTavloWindowInfo window;
    window.rect = QRect(0, 0, 320, 200);
    engine.postEvent(TavloEventCreateEngine, QVariant::fromValue(info), QVariant::fromValue(window));
    ASSERT_TRUE(waitFor(host.created));

    const tagTavloPresentOutputParam param = Stage::param(folder.path());
    engine.postEvent(TavloEventStartOutput, 0, 0, QVariant::fromValue(param));
    tagTavloPresentSourceInfo source;
    source.type = TavloPresentSourceTypeMovieList;
    source.moviePathList = {clip, end};
    source.playbackMode = 0;
    engine.postEvent(TavloEventOpenSource, 0, QVariant::fromValue(source));
    EXPECT_TRUE(waitFor(host.ended));
    tagTavloOutputStatistics statistics;
    engine.getOutputStatistics(statistics);
    engine.postEvent(TavloEventStopOutput, 0, 0);
    engine.postEvent(TavloEventDestroyEngine);
    EXPECT_TRUE(waitFor(host.destroyed));
    engine.stop();

    const QStringList files = QDir(folder.path()).entryList({QStringLiteral("*.mp4")});
    ASSERT_EQ(files.size(), 1);
    const Decoded recorded = decode(folder.filePath(files.first()));
    EXPECT_EQ(recorded.error, QString());
    EXPECT_GT(recorded.samples, 48000);
    std::vector<int> shown = recorded.numbers;
    std::erase(shown, -1); // the black before the clip
    EXPECT_TRUE(std::ranges::is_sorted(shown)) << "no picture comes back";
    shown.erase(std::ranges::unique(shown).begin(), shown.end());
    // Each picture of the clip is in the file, or in the account of whoever left it out.
    std::erase_if(shown, [&](int number) { return number >= form.frames; });
    const auto inFile = static_cast<qint64>(shown.size());
    const auto told = toldLosses(log) + static_cast<qint64>(statistics.droppedPictures + statistics.recordDropped);
    EXPECT_LE(form.frames - inFile, told) << testing::PrintToString(shown) << log.lines().join(u'\n').toStdString();
    EXPECT_GT(inFile, 0);
}

} // namespace
