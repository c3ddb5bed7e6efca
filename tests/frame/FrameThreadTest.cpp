#include <tavlo/InterfacePtr.h>
#include <tavlo/TavloPresentThread.h>

#include "support/LogCapture.h"

#include <QCoreApplication>
#include <QThread>

#include <gtest/gtest.h>

#include <sched.h>

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

using tavlo::test::LogCapture;

namespace {

/// What the sink hears, on the frame thread; read by the test when the object has stopped.
struct Report
{
    qulonglong event;
    QVariant result;
    QVariant a1;
    QVariant a2;
};

class RecordingSink final : public tavlo::Implements<RecordingSink, ITavloPresentThreadSink>
{
public:
    void onEvent(qulonglong event, QVariant result, QVariant a1, QVariant a2, QVariant, QVariant) override
    {
        reports.push_back({event, result, a1, a2});
        if (then)
            then();
    }

    std::vector<Report> reports;
    std::function<void()> then;
};

/// Notes on which thread its operations run.
class TestEngine : public TavloPresentThread
{
public:
    std::vector<quint64> frameIds;
    std::vector<QThread*> threads;
    std::atomic<int> frames = 0;
    int begins = 0;
    int ends = 0;

    void waitForFrames(int count)
    {
        for (const int wanted = frames + count; frames < wanted;)
            QThread::yieldCurrentThread();
    }

protected:
    void onThreadBegin() override
    {
        TavloPresentThread::onThreadBegin();
        ++begins;
        threads.push_back(QThread::currentThread());
    }

    bool onThreadStep(const quint64&, const quint64& frameId, const quint64&) override
    {
        frameIds.push_back(frameId);
        threads.push_back(QThread::currentThread());
        ++frames;
        return false; // has no effect
    }

    void onThreadEnd() override
    {
        ++ends;
        threads.push_back(QThread::currentThread());
        TavloPresentThread::onThreadEnd();
    }

    QVariant onThreadEvent(qulonglong event, QVariant&, QVariant& a2, QVariant&, QVariant&) override
    {
        threads.push_back(QThread::currentThread());
        if (event == 2)
            a2 = QStringLiteral("changed by the handler");
        return QVariant(static_cast<int>(event) * 10);
    }
};

constexpr TavloPresentThreadMode unnamedMode = static_cast<TavloPresentThreadMode>(7);

/// Checks that every poster's events came once and in order, from the first on, and counts them.
std::vector<int> countInOrder(const std::vector<Report>& reports, int posters)
{
    std::vector<int> counts(static_cast<size_t>(posters), 0);
    for (const Report& report : reports) {
        int& expected = counts[static_cast<size_t>(report.a1.toInt())];
        EXPECT_EQ(report.a2.toInt(), expected) << "of poster " << report.a1.toInt();
        ++expected;
    }
    return counts;
}

} // namespace

TEST(FrameThreadTest, RateBecomesAnInterval)
{
    TestEngine engine;
    EXPECT_EQ(engine.frameInterval(), 40000U);
    const std::vector<std::pair<float, quint64>> rates{{25.0F, 40000}, {30.0F, 33333}, {50.0F, 20000},
                                                       {0.0F, 15625},  {-5.0F, 15625}, {2e6F, 0}};
    for (const auto& [fps, interval] : rates) {
        engine.setFps(fps);
        EXPECT_EQ(engine.frameInterval(), interval) << fps;
    }
}

TEST(FrameThreadTest, RunsEverythingOnOneThreadAndCanStartAgain)
{
    TestEngine engine;
    RecordingSink sink;
    engine.setFps(1000.0F);
    for (int run = 1; run <= 3; ++run) {
        engine.frameIds.clear();
        engine.threads.clear();
        engine.start(&sink, TavloPresentThreadModeThread);
        EXPECT_GE(engine.frames, 1) << "start returns after the first frame";
        RecordingSink other;
        engine.start(&other, TavloPresentThreadModeStep);
        EXPECT_EQ(engine.sink(), &sink) << "start on a running object changes nothing";
        engine.postEvent(1);
        engine.waitForFrames(3);
        engine.stop();
        engine.stop();

        EXPECT_EQ(engine.begins, run);
        EXPECT_EQ(engine.ends, run);
        EXPECT_EQ(engine.thread(), QThread::currentThread()) << "the object is back";
        for (size_t i = 0; i < engine.frameIds.size(); ++i)
            ASSERT_EQ(engine.frameIds[i], i);
        for (const QThread* thread : engine.threads)
            ASSERT_EQ(thread, engine.threads.front());
        EXPECT_NE(engine.threads.front(), QThread::currentThread());
    }
    EXPECT_EQ(sink.reports.size(), 3U);
}

TEST(FrameThreadTest, WhatItStartsHasNormalPriority)
{
    TestEngine engine;
    RecordingSink sink;
    int own = SCHED_OTHER, started = -1;
    sink.then = [&] {
        own = sched_getscheduler(0) & ~SCHED_RESET_ON_FORK;
        std::thread([&] { started = sched_getscheduler(0); }).join();
    };
    engine.start(&sink, TavloPresentThreadModeThread);
    engine.postEvent(1);
    engine.stop();
    EXPECT_EQ(started, SCHED_OTHER);
    if (own == SCHED_OTHER)
        GTEST_SKIP() << "no real-time scheduling for this user";
    EXPECT_EQ(own, SCHED_RR);
}

TEST(FrameThreadTest, ReportsResultAndArgumentsAsTheHandlerLeftThem)
{
    TestEngine engine;
    RecordingSink sink;
    engine.postEvent(9, QStringLiteral("before start"));
    engine.start(&sink, TavloPresentThreadModeThread);
    engine.postEvent(1, 11, 12);
    engine.postEvent(2, 21, 22);
    engine.stop();
    engine.postEvent(9, QStringLiteral("after stop"));
    QCoreApplication::processEvents();

    ASSERT_EQ(sink.reports.size(), 2U);
    EXPECT_EQ(sink.reports[0].event, 1U);
    EXPECT_EQ(sink.reports[0].result, QVariant(10));
    EXPECT_EQ(sink.reports[0].a2, QVariant(12));
    EXPECT_EQ(sink.reports[1].a1, QVariant(21));
    EXPECT_EQ(sink.reports[1].a2, QVariant(QStringLiteral("changed by the handler")));
}

TEST(FrameThreadTest, EveryEventOfFourPostersIsReportedOnceAndInOrder)
{
    constexpr int posters = 4;
    constexpr int events = 25'000;
    TestEngine engine;
    RecordingSink sink;
    engine.setFps(200.0F);
    engine.start(&sink, TavloPresentThreadModeThread);
    std::vector<std::thread> threads;
    for (int poster = 0; poster < posters; ++poster) {
        threads.emplace_back([&engine, poster] {
            for (int i = 0; i < events; ++i)
                engine.postEvent(1, poster, i);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    engine.stop(); // with many still pending
    EXPECT_EQ(countInOrder(sink.reports, posters), std::vector<int>(posters, events));
}

TEST(FrameThreadTest, StopAmongPostersLosesNothingThatWasAccepted)
{
    constexpr int posters = 4;
    TestEngine engine;
    RecordingSink sink;
    engine.setFps(500.0F);
    for (int run = 0; run < 20; ++run) {
        sink.reports.clear();
        std::atomic<bool> posting = true;
        engine.start(&sink, TavloPresentThreadModeThread);
        std::vector<std::thread> threads;
        for (int poster = 0; poster < posters; ++poster) {
            threads.emplace_back([&engine, &posting, poster] {
                for (int i = 0; posting; ++i)
                    engine.postEvent(1, poster, i);
            });
        }
        engine.waitForFrames(2);
        engine.stop();
        const size_t reported = sink.reports.size();
        posting = false;
        for (std::thread& thread : threads)
            thread.join();
        QCoreApplication::processEvents();
        EXPECT_EQ(sink.reports.size(), reported) << "nothing comes after stop";
        countInOrder(sink.reports, posters);
        ASSERT_FALSE(HasFailure()) << "run " << run;
    }
}

TEST(FrameThreadTest, StepModeRunsOnTheCallersThread)
{
    TestEngine engine;
    RecordingSink sink;
    engine.doFrameStep();
    EXPECT_EQ(engine.frames, 0) << "not started";
    engine.start(&sink, TavloPresentThreadModeStep);
    engine.doFrameStep();
    engine.doFrameStep();
    EXPECT_EQ(engine.frameIds, (std::vector<quint64>{0, 1, 2}));
    EXPECT_EQ(engine.getCurrentFps(), 0.0);

    engine.postEvent(1);
    EXPECT_TRUE(sink.reports.empty()) << "events wait for the caller's loop";
    QCoreApplication::processEvents();
    EXPECT_EQ(sink.reports.size(), 1U);
    engine.postEvent(2);
    engine.stop();
    EXPECT_EQ(sink.reports.size(), 2U) << "stop handles what is pending";
    EXPECT_EQ(engine.ends, 1);
    for (const QThread* thread : engine.threads)
        EXPECT_EQ(thread, QThread::currentThread());
    engine.doFrameStep();
    EXPECT_EQ(engine.frames, 3);

    engine.start(nullptr, unnamedMode);
    engine.doFrameStep();
    EXPECT_EQ(engine.frames, 4) << "one frame at the start, none from doFrameStep";
    engine.stop();
}

TEST(FrameThreadTest, AHandlerMayCallStop)
{
    const LogCapture log;
    TestEngine engine;
    RecordingSink sink;
    sink.then = [&engine] { engine.stop(); };

    engine.start(&sink, TavloPresentThreadModeStep);
    engine.postEvent(1);
    engine.postEvent(2);
    QCoreApplication::processEvents();
    EXPECT_EQ(sink.reports.size(), 2U);
    EXPECT_EQ(engine.ends, 1);

    engine.start(&sink, TavloPresentThreadModeThread);
    engine.postEvent(1);
    engine.waitForFrames(2);
    engine.stop();
    EXPECT_EQ(log.count("not from the frame thread"), 1) << "there it could only wait for itself";
    EXPECT_EQ(engine.ends, 2);
}
