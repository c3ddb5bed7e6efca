#include "engines/EngineStage.h"

#include <QDir>

using namespace tavlo;
using namespace tavlo::test;

namespace {

qsizetype openFiles() { return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::Files | QDir::System).size(); }

qsizetype threads() { return QDir(QStringLiteral("/proc/self/task")).entryList(QDir::Dirs).size(); }

class EngineLife : public EngineStage
{
public:
    Report createEngine(const tagTavloPresentEngineInfo& info, const tagTavloWindowInfo& window = windowInfo())
    {
        return send(TavloEventCreateEngine, QVariant::fromValue(info), QVariant::fromValue(window));
    }
};

TEST_F(EngineLife, TellsEachStepOfComingAndGoing)
{
    step(); // nothing to draw yet
    ASSERT_EQ(createEngine(engineInfo(2)).result, QVariant(0));
    EXPECT_EQ(
        inside->progress,
        QStringList({"Init d3d api ...", "Init render data ...", "Init resource path ...", "Check shader path ...",
                     "Set OpenGL ContextAttrs ...", "Create draw director ...", "Create d3d resource ...",
                     "Create canvas layer ...", "Create PGM channel ...", "Create PVM channel ...",
                     "Create source-1 channel ...", "Create source-2 channel ...", "Update window placement ..."}));
    EXPECT_EQ(reportsOf(TavloEventCreateProgress).size(), 13U);
    EXPECT_EQ(createEngine(engineInfo(2)).result, QVariant(-1)) << "it is there already";
    send(TavloEventDestroyEngine);
    const auto ending = reportsOf(TavloEventDestroyProgress);
    ASSERT_EQ(ending.size(), 4U);
    EXPECT_EQ(ending[0].a1.toString(), QStringLiteral("Destroy all channel ..."));
    EXPECT_EQ(ending[3].a1.toString(), QStringLiteral("Terminate d3d api ..."));
    step();
}

TEST_F(EngineLife, KeepsTheShaderCacheOfItsBuildAlone)
{
    const QDir root(cache.filePath(QStringLiteral("hlslObj")));
    ASSERT_TRUE(root.mkpath(QStringLiteral("1234")));
    ASSERT_EQ(createEngine(engineInfo(0)).result, QVariant(0));
    const QStringList kept = root.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    ASSERT_EQ(kept.size(), 1);
    EXPECT_NE(kept.first(), QStringLiteral("1234"));
    const QDir effects(root.filePath(kept.first() + QStringLiteral("/shader")));
    const auto files = effects.entryInfoList(QDir::Files);
    EXPECT_FALSE(files.isEmpty());
    send(TavloEventDestroyEngine);
    ASSERT_EQ(createEngine(engineInfo(0)).result, QVariant(0));
    EXPECT_EQ(effects.entryInfoList(QDir::Files), files);
}

TEST_F(EngineLife, IsDestroyedAndMadeAgainAfterAFailureOfAnyStep)
{
    for (int failing = 0; failing < 11; ++failing) {
        inside->progress.clear();
        inside->failingStep = failing;
        EXPECT_EQ(createEngine(engineInfo(1)).result, QVariant(-1)) << failing;
        step();
        send(TavloEventDestroyEngine);
    }
    inside->failingStep = -1;
    EXPECT_EQ(createEngine(engineInfo(1)).result, QVariant(0));
    step();
}

TEST_F(EngineLife, RefusesRecordsThatMakeNoEngineAndSaysWhy)
{
    const LogCapture log;
    auto info = engineInfo(1);
    info.videoInfo.fpsDen = 0;
    EXPECT_EQ(createEngine(info).result, QVariant(-1));
    EXPECT_EQ(log.count("frame rate of 25/0"), 1);
    EXPECT_EQ(createEngine(engineInfo(1), windowInfo(0, 0)).result, QVariant(-1));
    EXPECT_EQ(createEngine(engineInfo(65)).result, QVariant(-1));
    EXPECT_EQ(log.count("channelCount: 65"), 1);
    info = engineInfo(1);
    info.videoInfo.width = -1;
    EXPECT_EQ(createEngine(info).result, QVariant(-1));
}

TEST_F(EngineLife, LeavesNothingBehind)
{
    auto info = engineInfo(8);
    info.videoInfo.width = info.videoInfo.sourceWidth = 1280;
    info.videoInfo.height = info.videoInfo.sourceHeight = 720;
    const auto round = [this, &info] {
        create(info, windowInfo(), 8);
        step();
        send(TavloEventDestroyEngine);
        releaseSources();
    };
    round();
    const qsizetype filesAfterOne = openFiles();
    const qsizetype threadsAfterOne = threads();
    for (int i = 0; i < 2; ++i)
        round();
    EXPECT_EQ(openFiles(), filesAfterOne);
    EXPECT_EQ(threads(), threadsAfterOne);
}

TEST_F(EngineLife, TakesWholeFramesASecond)
{
    struct Rate
    {
        int num, den;
        quint64 interval; ///< microseconds
    };
    for (const Rate& rate : {Rate{25, 1, 40000}, Rate{50, 1, 20000}, Rate{30000, 1001, 34482}}) {
        auto info = engineInfo(0);
        info.videoInfo.fpsNum = rate.num;
        info.videoInfo.fpsDen = rate.den;
        ASSERT_EQ(createEngine(info).result, QVariant(0));
        EXPECT_EQ(engine->frameInterval(), rate.interval);
        send(TavloEventDestroyEngine);
    }
}

} // namespace
