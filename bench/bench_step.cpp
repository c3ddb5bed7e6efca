// What a frame of the whole engine costs: 4 and 8 channels that play pictures of the frame's size as decoders deliver
// them, the first of them keyed, without and with a running transition, at three sizes.
//
// Time is the processor's, of all threads, since a software renderer's are the process's own; `wall_ms` is what passes
// until the picture is drawn. `sources_ms`, `compose_ms` and `scene_ms` say which stage the work is in. `allocations`
// are the program's, `driver_allocations` those of the graphics driver.

#include "AllocationCount.h"
#include "drawing/PictureChroma.h"
#include "engines/TavloPresentEnginePrivate.h"
#include "sources/TavloPresentSourceMedia.h"
#include "sources/TavloPresentSourceUtil.h"

#include <QGuiApplication>
#include <QStandardPaths>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <ctime>
#include <vector>

namespace {

using namespace tavlo;
using Clock = std::chrono::steady_clock;

/// Milliseconds that all threads of the process have worked.
double processTime()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) * 1e-6;
}

/// A new I420 picture for each frame, of the frame's size.
class Camera final : public TavloPresentSourceMedia
{
public:
    using TavloPresentSourceMedia::TavloPresentSourceMedia;

    bool openSource(const tagTavloPresentSourceInfo& info) override
    {
        if (!TavloPresentSourceMedia::openSource(info))
            return false;
        _size = _engine.load()->renderSize();
        const auto width = static_cast<quint32>(_size.width()), height = static_cast<quint32>(_size.height());
        _planes = {width * height, width * height * 3 / 2};
        _texture =
            _site.device->createTexture({width, 2 * height, graphics::Format::R8_UNORM, graphics::Usage::Dynamic});
        _bytes.resize(std::size_t{2} * width * height);
        for (std::size_t i = 0; i < _bytes.size(); ++i)
            _bytes[i] = static_cast<std::byte>(i * 2654435761U >> 24);
        return _texture != nullptr;
    }

    void drawFrame(TavloDrawDX11&, const FrameStamps&) override
    {
        if (const auto mapped = _site.context->map(*_texture, graphics::MapMode::WriteDiscard))
            std::memcpy(mapped->data, _bytes.data(), _bytes.size());
        _site.context->unmap(_texture);
        drawPicture(tavloFourcc("I420"), _size, _planes, _texture, false);
    }

    static SourcePtr make(const SourceSite& site) { return SourcePtr::adopt(new Camera(site)); }

private:
    QSizeF _size;
    PlaneOffsets _planes;
    graphics::TexturePtr _texture;
    std::vector<std::byte> _bytes;
};

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
        const tagTavloPresentPictureChromaKey key{1, 0xff00ff00, 0.4F, 0.08F, 0.1F, {}};
        send(TavloEventSetChromaKey, 0, QVariant::fromValue(key));
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

    void moveTransition()
    {
        position = position > 0.9F ? 0.1F : position + 0.01F;
        stage->channels().program()->setFader(qreal{position});
    }

    /// The pictures are drawn, not just asked for.
    void finish() { stage->world().context()->flush().wait(std::chrono::seconds(5)); }

    Stage* stage = nullptr;
    std::unique_ptr<Engine> engine;
    float position = 0.0F; ///< of the transition
};

/// The work of each stage by itself, milliseconds.
struct StageTimes
{
    double sources = 0, compose = 0, scene = 0;

    void add(Room& room, quint64 frameId)
    {
        const FrameStamps stamps{0, frameId, frameId * 40000};
        ChannelSet& channels = room.stage->channels();
        room.stage->world().view()->beginFrame(stamps.time, stamps.frameId, stamps.clockMicroseconds);
        sources += costOf(room, [&] {
            for (TavloPresentChannelSource* const source : channels.sources())
                source->stepFrame(stamps);
        });
        compose += costOf(room, [&] {
            channels.preview()->stepFrame(stamps);
            channels.program()->stepFrame(stamps);
        });
        scene += costOf(room, [&] {
            room.stage->world().drawScene();
            room.stage->world().view()->endFrame();
        });
    }

private:
    template <class Work>
    static double costOf(Room& room, const Work& work)
    {
        const double before = processTime();
        work();
        room.finish();
        return processTime() - before;
    }
};

/// Arguments: channels, width, height, whether a transition runs, whether somebody looks at the canvas.
void step(benchmark::State& state)
{
    Room room(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)), static_cast<int>(state.range(2)));
    const bool takes = state.range(3) != 0, looks = state.range(4) != 0;
    const auto frame = [&room, takes, looks] {
        if (takes)
            room.moveTransition();
        if (looks)
            room.stage->world().canvasPicture();
        room.engine->doFrameStep();
        room.finish();
    };
    for (int i = 0; i < 20; ++i)
        frame();

    std::vector<double> milliseconds;
    for (auto _ : state) {
        const auto begin = Clock::now();
        frame();
        milliseconds.push_back(std::chrono::duration<double, std::milli>(Clock::now() - begin).count());
    }
    std::ranges::sort(milliseconds);
    state.counters["wall_ms"] = milliseconds[milliseconds.size() / 2];
    state.counters["wall_p99_ms"] = milliseconds[milliseconds.size() * 99 / 100];

    constexpr int samples = 25;
    {
        const bench::AllocationCount allocations;
        for (int i = 0; i < samples; ++i)
            frame();
        state.counters["allocations"] = static_cast<double>(allocations.count()) / samples;
        state.counters["driver_allocations"] = static_cast<double>(allocations.driverCount()) / samples;
    }
    StageTimes times;
    for (quint64 i = 0; i < samples; ++i) {
        if (takes)
            room.moveTransition();
        if (looks)
            room.stage->world().canvasPicture();
        times.add(room, i);
    }
    state.counters["sources_ms"] = times.sources / samples;
    state.counters["compose_ms"] = times.compose / samples;
    state.counters["scene_ms"] = times.scene / samples;
}

BENCHMARK(step)
    ->ArgNames({"channels", "width", "height", "transition", "canvas"})
    ->ArgsProduct({{4, 8}, {640}, {360}, {0, 1}, {0, 1}})
    ->ArgsProduct({{4, 8}, {960}, {540}, {0, 1}, {0}})
    ->ArgsProduct({{4, 8}, {1280}, {720}, {0, 1}, {0, 1}})
    ->MeasureProcessCPUTime()
    ->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    TavloPresentSourceUtil::setSourceMaker(TavloPresentSourceTypeMovieList, &Camera::make);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
