// The engine on its own thread, with sound from the threads of sources and events from the host's.

#include "engines/TavloPresentEnginePrivate.h"
#include "support/TestSource.h"

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <mutex>
#include <thread>

using namespace tavlo;
using namespace tavlo::test;

namespace {

/// Holds the sources that it hears of, as a host does.
class Host final : public Implements<Host, ITavloPresentThreadSink>
{
public:
    ~Host()
    {
        for (ITavloPresentSource* const source : _references)
            source->release();
    }

    void destroy() override {}

    /// Frame thread.
    void onEvent(qulonglong event, QVariant result, QVariant a1, QVariant a2, QVariant, QVariant) override
    {
        const std::lock_guard guard(_lock);
        ++_heard[event];
        auto* const source = reinterpret_cast<ITavloPresentSource*>(a2.toULongLong());
        const bool carries = event == TavloEventSourceOpened || event == TavloEventSourceClosed;
        if (carries && source && result == QVariant(0) && a1.isValid())
            _references.push_back(source);
    }

    /// How often the event was reported.
    int heard(qulonglong event)
    {
        const std::lock_guard guard(_lock);
        return _heard[event];
    }

    TestSource& source(std::size_t index)
    {
        const std::lock_guard guard(_lock);
        return *dynamic_cast<TestSource*>(_references.at(index));
    }

    /// Any thread but the frame thread. False when it takes more than a minute.
    bool hears(qulonglong event, int times)
    {
        for (int i = 0; i < 6000 && heard(event) < times; ++i) {
            QCoreApplication::processEvents();
            QThread::msleep(10);
        }
        return heard(event) >= times;
    }

private:
    std::mutex _lock;
    std::map<qulonglong, int> _heard;
    std::vector<ITavloPresentSource*> _references;
};

void change(TavloPresentEngine& engine, int turn)
{
    tagTavloPresentAudioMixerParam mixer;
    mixer.audioVolume[0] = 0.1 * (turn % 10);
    engine.postEvent(TavloEventSetAudioMixer, {}, QVariant::fromValue(mixer));
    const tagTavloPresentTransitionEffectParam param{turn % 2 == 0 ? 0 : 22, 0.05F, 0};
    engine.postEvent(TavloEventTransition, {}, turn % 3, QVariant::fromValue(param));
    engine.postEvent(TavloEventSetTransitionPos, {}, 0.1F * static_cast<float>(turn % 11));
    engine.postEvent(TavloEventSelectChannel, TavloPresentChannelIDPVM, turn % 3);
    tagTavloAudioEffectParam effect;
    engine.postEvent(TavloEventSetChannelAudioEffect, turn % 3, QVariant::fromValue(effect));
}

TEST(EngineThreads, SoundAndEventsMeetTheFrameThread)
{
    const QTemporaryDir cache;
    const TestSource::Rule rule;
    Host host;
    TavloPresentEngine engine;
    engine.start(&host, TavloPresentThreadModeThread);
    tagTavloPresentEngineInfo info;
    info.videoInfo.width = 160;
    info.videoInfo.height = 90;
    info.channelCount = 3;
    info.pgmAudioDevName = info.pvmAudioDevName = QStringLiteral("None");
    info.dataCachePath = cache.path();
    tagTavloWindowInfo window;
    window.rect = QRect(0, 0, 320, 200);
    engine.postEvent(TavloEventCreateEngine, QVariant::fromValue(info), QVariant::fromValue(window));
    tagTavloPresentSourceInfo source;
    source.type = TavloPresentSourceTypeMovieList;
    for (int i = 0; i < 3; ++i)
        engine.postEvent(TavloEventOpenSource, i, QVariant::fromValue(source));
    ASSERT_TRUE(host.hears(TavloEventOpenSource, 3));

    std::vector<std::thread> audio;
    for (std::size_t i = 0; i < 3; ++i) {
        audio.emplace_back([&tone = host.source(i), i] {
            for (int block = 0; block < 100; ++block) {
                tone.pushTone(440.0 * static_cast<double>(i + 1));
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
            }
        });
    }
    constexpr int turns = 40;
    for (int turn = 0; turn < turns; ++turn) {
        change(engine, turn);
        EXPECT_GE(std::atomic_ref(engine.getAudioLevel().pgmLevel[0][0]).load(), 0.0F);
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    for (std::thread& thread : audio)
        thread.join();
    EXPECT_TRUE(host.hears(TavloEventTransition, turns));
    EXPECT_GT(engine.getAudioLevel().sourceLevel[2][0], 10.0F);
    for (int i = 0; i < 3; ++i)
        engine.postEvent(TavloEventCloseSource, i);
    engine.postEvent(TavloEventDestroyEngine);
    EXPECT_TRUE(host.hears(TavloEventDestroyEngine, 1));
    engine.stop();
}

} // namespace
