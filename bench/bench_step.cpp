// What a frame of the whole engine costs: with 4 and 8 channels that play, without and with a running transition, at two
// sizes; how it is shared among its stages, and what it allocates.

#include "AllocationCount.h"
#include "engines/TavloPresentEnginePrivate.h"
#include "support/TestSource.h"

#include <QGuiApplication>
#include <QStandardPaths>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <vector>

namespace {

using namespace tavlo;
using Clock = std::chrono::steady_clock;

class Stage final : public TavloPresentEnginePrivate
{
public:
    using TavloPresentEnginePrivate::channels;
    using TavloPresentEnginePrivate::world;
};

class Engine final : public TavloPresentEngine
{
public:
    explicit Engine(std::unique_ptr<Stage> stage) : TavloPresentEngine(std::move(stage)) {}
};

/// An engine off screen with that many sources that play.
class Room
{
public:
    Room(int channelCount, int width, int height)
    {
        auto made = std::make_unique<Stage>();
        stage = made.get();
        engine = std::make_unique<Engine>(std::move(made));
        engine->start(nullptr, TavloPresentThreadModeStep);
        tagTavloPresentEngineInfo info;
        info.videoInfo.width = width;
        info.videoInfo.height = height;
        info.channelCount = static_cast<quint32>(channelCount);
        info.pgmAudioDevName = info.pvmAudioDevName = QStringLiteral("None");
        info.dataCachePath = QStandardPaths::writableLocation(QStandardPaths::CacheLocation);
        tagTavloWindowInfo window;
        window.rect = QRect(0, 0, 1280, 800);
        send(TavloEventCreateEngine, QVariant::fromValue(info), QVariant::fromValue(window));
        tagTavloPresentSourceInfo source;
        source.type = TavloPresentSourceTypeMovieList;
        for (int i = 0; i < channelCount; ++i)
            send(TavloEventOpenSource, i, QVariant::fromValue(source));
        send(TavloEventSelectChannel, TavloPresentChannelIDPVM, 1);
    }

    ~Room()
    {
        send(TavloEventDestroyEngine, {}, {});
        engine->stop();
    }

    void send(qulonglong event, const QVariant& a1, const QVariant& a2)
    {
        engine->postEvent(event, a1, a2);
        QCoreApplication::sendPostedEvents(engine.get());
    }

    test::TestSource::Rule rule;
    Stage* stage = nullptr;
    std::unique_ptr<Engine> engine;
};

/// Arguments: channels, width, height, whether a transition runs.
void step(benchmark::State& state)
{
    Room room(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)), static_cast<int>(state.range(2)));
    auto frame = [&room, &state, position = 0.0F]() mutable {
        if (state.range(3) != 0) {
            position = position > 0.9F ? 0.1F : position + 0.01F;
            room.stage->channels().program()->setFader(qreal{position});
        }
        room.engine->doFrameStep();
        room.stage->world().context()->flush().wait(
            std::chrono::seconds(5)); // the picture is drawn, not just asked for
    };
    for (int i = 0; i < 20; ++i)
        frame();

    std::vector<double> milliseconds;
    const bench::AllocationCount allocations;
    for (auto _ : state) {
        const auto begin = Clock::now();
        frame();
        milliseconds.push_back(std::chrono::duration<double, std::milli>(Clock::now() - begin).count());
    }
    state.counters["allocations"] = static_cast<double>(allocations.count()) / static_cast<double>(state.iterations());
    std::ranges::sort(milliseconds);
    state.counters["p50_ms"] = milliseconds[milliseconds.size() / 2];
    state.counters["p99_ms"] = milliseconds[milliseconds.size() * 99 / 100];
}

BENCHMARK(step)
    ->ArgNames({"channels", "width", "height", "transition"})
    ->ArgsProduct({{4, 8}, {640}, {360}, {0, 1}})
    ->ArgsProduct({{4, 8}, {1280}, {720}, {0, 1}})
    ->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
