// What a frame of the scene costs the processor: 1,000 sprites, 100 labels that stand still and a clock, at 1280 × 720.
// The time is that of collecting and handing over; the device draws on after it, which is measured apart.

#include "scene/Director.h"
#include "scene/GLView.h"
#include "scene/Label.h"
#include "scene/Layer.h"
#include "scene/Renderer.h"
#include "scene/Scene.h"
#include "scene/Sprite.h"
#include "scene/TextureCache.h"
#include "scene/text/TextPicture.h"

#include <QGuiApplication>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <new>

namespace {

thread_local long long allocations = 0; // of the frame's thread: the renderer of the device has threads of its own

} // namespace

void* operator new(std::size_t size)
{
    ++allocations;
    if (void* const memory = std::malloc(size))
        return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace {

using namespace tavlo;
using namespace tavlo::scene;

constexpr int spriteCount = 1000, labelCount = 100;
constexpr float width = 1280, height = 720;
constexpr int warmUps = 60;
constexpr std::uint64_t frameMicroseconds = 40000;

double threadSeconds()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

/// The scene, with what moves in it.
class Show
{
public:
    explicit Show(int textures)
    {
        director->setOpenGLView(view);
        director->startAnimation();
        const RefPtr<Scene> root = Scene::createWithSize(*director, view->frameSize());
        director->runWithScene(root);
        root->addChild(LayerColor::create(*director, {40, 40, 40, 255}));
        addSprites(*root, textures);
        for (int i = 0; i < labelCount; ++i) {
            const auto label = Label::createWithSystemFont(*director, "label " + std::to_string(i), {}, 18);
            label->setPosition(static_cast<float>(40 + i % 10 * 125), static_cast<float>(30 + i / 10 * 70));
            root->addChild(label);
        }
        clock = Label::createWithSystemFont(*director, "00:00:00", {}, 40);
        clock->setPosition(width / 2, height / 2);
        root->addChild(clock);
    }

    ~Show()
    {
        clock.reset();
        director->end();
        director->mainLoop();
    }

    void addSprites(Node& root, int textures)
    {
        std::vector<graphics::TexturePtr> pictures;
        for (int i = 0; i < textures; ++i) {
            QImage image(24, 24, QImage::Format_ARGB32_Premultiplied);
            image.fill(QColor::fromHsv(i * 360 / textures, 200, 220, 200));
            pictures.push_back(director->textureCache().createTexture(image));
        }
        for (int i = 0; i < spriteCount; ++i) {
            sprites.push_back(Sprite::createWithTexture(*director, pictures[static_cast<std::size_t>(i % textures)]));
            root.addChild(sprites.back());
        }
    }

    /// What a frame changes: every sprite moves and turns, and the clock shows the second.
    void change()
    {
        const auto turn = static_cast<float>(frame);
        for (std::size_t i = 0; i < sprites.size(); ++i) {
            const auto own = static_cast<float>(i);
            sprites[i]->setPosition(width / 2 + std::sin(own + turn / 50) * 600,
                                    height / 2 + std::cos(own * 1.3F) * 340);
            sprites[i]->setRotation(turn + own);
        }
        char text[16];
        const unsigned second = static_cast<unsigned>(frame / 25);
        std::snprintf(text, sizeof text, "%02u:%02u:%02u", second / 3600 % 24, second / 60 % 60, second % 60);
        clock->setString(text);
    }

    void draw()
    {
        ++frame;
        view->beginFrame(0, frame, frame * frameMicroseconds);
        change();
        director->mainLoop();
        view->endFrame();
    }

    void wait() { view->context()->flush().wait(std::chrono::seconds(10)); }

    const RefPtr<Director> director = Director::create();
    const RefPtr<GLViewImpl> view = GLViewImpl::createWithRect({}, {0, 0, width, height}, -1);
    std::vector<RefPtr<Sprite>> sprites;
    RefPtr<Label> clock;
    std::uint64_t frame = 0;
};

/// `state.range(0)`: textures that the sprites take turns with; 1 lets all of them go in one draw.
void frame(benchmark::State& state)
{
    Show show(static_cast<int>(state.range(0)));
    for (int i = 0; i < warmUps; ++i) {
        show.draw();
        show.wait();
    }
    long long made = 0, quiet = 0;
    const std::uint64_t rasters = show.clock->rasterCount();
    for (auto _ : state) {
        const long long before = allocations;
        const std::uint64_t rastersBefore = show.clock->rasterCount();
        const double start = threadSeconds();
        show.draw();
        state.SetIterationTime(threadSeconds() - start);
        if (show.clock->rasterCount() == rastersBefore) {
            made += allocations - before;
            ++quiet;
        }
        show.wait();
    }
    const RenderStatistics& statistics = show.director->renderer().statistics();
    state.counters["allocations"] = static_cast<double>(made) / static_cast<double>(std::max(quiet, 1LL));
    state.counters["draws"] = statistics.drawCalls;
    state.counters["vertices"] = statistics.vertices;
    state.counters["rasters/s"] =
        static_cast<double>(show.clock->rasterCount() - rasters) / (static_cast<double>(state.iterations()) / 25);
}

/// The tree walked and collected alone, with nothing handed to the device.
void collect(benchmark::State& state)
{
    Show show(1);
    show.draw();
    Renderer& renderer = show.director->renderer();
    for (auto _ : state) {
        renderer.beginFrame();
        renderer.beginTarget(show.view->backBuffer(), false, Color4F{});
        show.director->runningScene()->visit(renderer, {});
        renderer.endTarget();
        renderer.dropFrame();
    }
}

/// A clock's new second: shaped, painted and handed over.
void rasterClock(benchmark::State& state)
{
    Show show(1);
    TextPicture picture(*show.director);
    TextStyle style;
    style.fontSize = 40;
    unsigned second = 0;
    for (auto _ : state)
        picture.raster("00:00:" + std::to_string(10 + second++ % 50), style);
}

BENCHMARK(frame)->Arg(1)->Arg(2)->Arg(10)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(collect)->Unit(benchmark::kMicrosecond);
BENCHMARK(rasterClock)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
