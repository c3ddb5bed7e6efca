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
    QVariant result, a1, a2;

    bool operator==(const Report&) const = default;
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
    int begins = 0, ends = 0;

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
        noteThread();
    }

    bool onThreadStep(const quint64&, const quint64& frameId, const quint64&) override
    {
        frameIds.push_back(frameId);
        noteThread();
        ++frames;
        return false; // has no effect
    }

    void onThreadEnd() override
    {
        ++ends;
        noteThread();
        TavloPresentThread::onThreadEnd();
    }

    QVariant onThreadEvent(qulonglong event, QVariant&, QVariant& a2, QVariant&, QVariant&) override
    {
        noteThread();
        if (event == 2)
            a2 = "changed by the handler";
        return QVariant(static_cast<int>(event) * 10);
    }

private:
    void noteThread() { threads.push_back(QThread::currentThread()); }
};

constexpr int posterCount = 4;

class FrameThreadTest : public testing::Test
{
protected:
    /// Each poster goes on while `more` says so.
    std::vector<std::thread> startPosters(std::function<bool(int)> more)
    {
        std::vector<std::thread> posters;
        for (int poster = 0; poster < posterCount; ++poster) {
            posters.emplace_back([this, more, poster] {
                for (int i = 0; more(i); ++i)
                    engine.postEvent(1, poster, i);
            });
        }
        return posters;
    }

    /// Checks that every poster's events came once and in order, from the first on, and counts them.
    std::vector<int> countInOrder()
    {
        std::vector<int> counts(posterCount, 0);
        for (const Report& report : sink.reports)
            EXPECT_EQ(report.a2.toInt(), counts[report.a1.toUInt()]++) << "of poster " << report.a1.toInt();
        return counts;
    }

    RecordingSink sink;
    TestEngine engine;
};

} // namespace

TEST_F(FrameThreadTest, RateBecomesAnInterval)
{
    EXPECT_EQ(engine.frameInterval(), 40000U);
    const std::vector<std::pair<float, quint64>> rates{{25.0F, 40000}, {30.0F, 33333}, {50.0F, 20000},
                                                       {0.0F, 15625},  {-5.0F, 15625}, {2e6F, 0}};
    for (const auto& [fps, interval] : rates) {
        engine.setFps(fps);
        EXPECT_EQ(engine.frameInterval(), interval) << fps;
    }
}

TEST_F(FrameThreadTest, RunsEverythingOnOneThreadAndCanStartAgain)
{
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

TEST_F(FrameThreadTest, WhatItStartsHasNormalPriority)
{
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

TEST_F(FrameThreadTest, ReportsResultAndArgumentsAsTheHandlerLeftThem)
{
    engine.postEvent(9, "before start");
    engine.start(&sink, TavloPresentThreadModeThread);
    engine.postEvent(1, 11, 12);
    engine.postEvent(2, 21, 22);
    engine.stop();
    engine.postEvent(9, "after stop");
    QCoreApplication::processEvents();

    ASSERT_EQ(sink.reports.size(), 2U);
    EXPECT_EQ(sink.reports[0], (Report{1, 10, 11, 12}));
    EXPECT_EQ(sink.reports[1], (Report{2, 20, 21, "changed by the handler"}));
}

TEST_F(FrameThreadTest, EveryEventOfFourPostersIsReportedOnceAndInOrder)
{
    constexpr int events = 25'000;
    engine.setFps(200.0F);
    engine.start(&sink, TavloPresentThreadModeThread);
    for (std::thread& poster : startPosters([](int i) { return i < events; }))
        poster.join();
    engine.stop(); // with many still pending
    EXPECT_EQ(countInOrder(), std::vector<int>(posterCount, events));
}

TEST_F(FrameThreadTest, StopAmongPostersLosesNothingThatWasAccepted)
{
    engine.setFps(500.0F);
    for (int run = 0; run < 20; ++run) {
        sink.reports.clear();
        std::atomic<bool> posting = true;
        engine.start(&sink, TavloPresentThreadModeThread);
        auto posters = startPosters([&](int) { return posting.load(); });
        engine.waitForFrames(2);
        engine.stop();
        const size_t reported = sink.reports.size();
        posting = false;
        for (std::thread& poster : posters)
            poster.join();
        QCoreApplication::processEvents();
        EXPECT_EQ(sink.reports.size(), reported) << "nothing comes after stop";
        countInOrder();
        ASSERT_FALSE(HasFailure()) << "run " << run;
    }
}

TEST_F(FrameThreadTest, StepModeRunsOnTheCallersThread)
{
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

    engine.start(nullptr, static_cast<TavloPresentThreadMode>(7));
    engine.doFrameStep();
    EXPECT_EQ(engine.frames, 4) << "one frame at the start, none from doFrameStep";
    engine.stop();
}

TEST_F(FrameThreadTest, AHandlerMayCallStop)
{
    const LogCapture log;
    sink.then = [&] { engine.stop(); };

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
