// How far from the wanted distance frames step, and what an event costs on its way through the frame thread.

#include <tavlo/InterfacePtr.h>
#include <tavlo/TavloPresentThread.h>

#include <QCoreApplication>
#include <QThread>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

class TimedEngine : public TavloPresentThread
{
public:
    explicit TimedEngine(size_t frames) { _steps.reserve(frames); }

    void waitForFrames()
    {
        while (!_full)
            QThread::msleep(10);
    }

    /// Distance of each frame from the one before, less the wanted one, in microseconds without sign, in order of size.
    std::vector<double> pacingErrors() const
    {
        std::vector<double> errors;
        for (size_t i = 1; i < _steps.size(); ++i) {
            const std::chrono::duration<double, std::micro> distance = _steps[i] - _steps[i - 1];
            errors.push_back(std::abs(distance.count() - static_cast<double>(frameInterval())));
        }
        std::sort(errors.begin(), errors.end());
        return errors;
    }

protected:
    bool onThreadStep(const quint64&, const quint64&, const quint64&) override
    {
        if (_steps.size() < _steps.capacity())
            _steps.push_back(Clock::now());
        else
            _full = true;
        return true;
    }

private:
    std::vector<Clock::time_point> _steps;
    std::atomic<bool> _full = false;
};

class CountingSink final : public tavlo::Implements<CountingSink, ITavloPresentThreadSink>
{
public:
    void onEvent(qulonglong, QVariant, QVariant, QVariant, QVariant, QVariant) override { ++count; }
    std::atomic<qint64> count = 0;
};

/// Paces frames for ten seconds and tells the error in microseconds.
void pacing(benchmark::State& state)
{
    const auto fps = static_cast<float>(state.range(0));
    for (auto _ : state) {
        TimedEngine engine(static_cast<size_t>(fps) * 10);
        engine.setFps(fps);
        engine.start(nullptr, TavloPresentThreadModeThread);
        engine.waitForFrames();
        engine.stop();
        const std::vector<double> errors = engine.pacingErrors();
        const auto at = [&errors](double part) {
            return errors[static_cast<size_t>(part * static_cast<double>(errors.size() - 1))];
        };
        state.counters["p50_us"] = at(0.5);
        state.counters["p99_us"] = at(0.99);
        state.counters["max_us"] = at(1.0);
    }
}
BENCHMARK(pacing)->Arg(25)->Arg(50)->Arg(60)->Iterations(1)->Unit(benchmark::kSecond);

/// Events a second through the frame thread, posted as fast as one thread can.
void events(benchmark::State& state)
{
    TavloPresentThread engine;
    CountingSink sink;
    engine.setFps(50.0F);
    engine.start(&sink, TavloPresentThreadModeThread);
    qint64 posted = 0;
    for (auto _ : state) {
        for (int i = 0; i < 1000; ++i)
            engine.postEvent(1, i, QStringLiteral("text"));
        posted += 1000;
        while (sink.count < posted)
            QThread::yieldCurrentThread();
    }
    state.SetItemsProcessed(posted);
    engine.stop();
}
BENCHMARK(events)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
