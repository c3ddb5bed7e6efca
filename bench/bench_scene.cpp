// What a frame of the scene costs the processor: 1,000 sprites, 100 labels that stand still, a clock, a clipped crawl, a
// render texture, marks and an action, at 1280 × 720. The time is that of collecting and handing over; the device draws
// on after it, which is measured apart. Allocations are those of all threads but the driver's own, in frames without a
// new text. Then what a new text costs the frame's thread, by its look.

#include "AllocationCount.h"
#include "scene/Action.h"
#include "scene/ClippingRectangleNode.h"
#include "scene/Director.h"
#include "scene/DrawNode.h"
#include "scene/GLView.h"
#include "scene/Label.h"
#include "scene/Layer.h"
#include "scene/RenderTexture.h"
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
#include <ctime>

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

std::string longText()
{
    std::string text;
    while (text.size() < 800)
        text += "Breaking news from the studio, ";
    return text.substr(0, 800);
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
        addFrills(*root);
    }

    ~Show()
    {
        clock.reset();
        crawl.reset();
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

    /// One of each kind that a show has beside sprites and labels.
    void addFrills(Node& root)
    {
        const RefPtr<RenderTexture> screen = RenderTexture::create(*director, 320, 180);
        screen->setAutoDraw(true);
        screen->setClearFlags(RenderTexture::clearColorBit);
        screen->addChild(Sprite::createWithTexture(*director, sprites.front()->texture()));
        screen->setPosition(1000, 500);
        root.addChild(screen);
        const RefPtr<DrawNode> marks = DrawNode::create(*director);
        for (int i = 0; i < 12; ++i) {
            const auto left = static_cast<float>(i * 100);
            marks->drawRect({left, 300}, {left + 96, 300}, {left + 96, 200}, {left, 200}, {1, 0, 0, 1});
        }
        marks->runAction(MoveTo::create(1e6F, {100, 100}));
        root.addChild(marks);
        const RefPtr<ClippingRectangleNode> band = ClippingRectangleNode::create(*director);
        band->setClippingRegion({100, 20, width - 200, 60});
        crawl = Label::createWithSystemFont(*director, longText(), {}, 40);
        band->addChild(crawl);
        root.addChild(band);
    }

    /// What a frame changes: every sprite moves and turns, the crawl runs, and the clock shows the second.
    void change()
    {
        const auto turn = static_cast<float>(frame);
        crawl->setPosition(width - turn * 3.3F, 50);
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
    RefPtr<Label> clock, crawl;
    std::uint64_t frame = 0;
};

/// The mean of a second of frames, those with a new text left out.
double allocationsOfQuietFrames(Show& show)
{
    qint64 made = 0, quiet = 0;
    for (int i = 0; i < 25; ++i) {
        const std::uint64_t rastersBefore = show.clock->rasterCount();
        const bench::AllocationCount allocations;
        show.draw();
        show.wait();
        if (show.clock->rasterCount() != rastersBefore)
            continue;
        made += allocations.count();
        ++quiet;
    }
    return static_cast<double>(made) / static_cast<double>(std::max<qint64>(quiet, 1));
}

/// `state.range(0)`: textures that the sprites take turns with; 1 lets all of them go in one draw.
void frame(benchmark::State& state)
{
    Show show(static_cast<int>(state.range(0)));
    for (int i = 0; i < warmUps; ++i) {
        show.draw();
        show.wait();
    }
    const std::uint64_t rasters = show.clock->rasterCount();
    for (auto _ : state) {
        const double start = threadSeconds();
        show.draw();
        state.SetIterationTime(threadSeconds() - start);
        show.wait();
    }
    const RenderStatistics& statistics = show.director->renderer().statistics();
    state.counters["allocations"] = allocationsOfQuietFrames(show);
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

/// A new text on the frame's thread: shaped, painted and handed over. `allocations` are those of one.
void newText(benchmark::State& state, const std::string& text, const TextStyle& style)
{
    Show show(1);
    TextPicture picture(*show.director);
    unsigned count = 0;
    const auto change = [&] {
        picture.shape(std::to_string(10 + count++ % 50) + text, style);
        picture.raster(style);
    };
    change();
    for (auto _ : state) {
        change();
        state.PauseTiming();
        show.wait();
        state.ResumeTiming();
    }
    const bench::AllocationCount allocations;
    change();
    state.counters["allocations"] = static_cast<double>(allocations.count());
}

TextStyle look(float outline, float shadowBlur)
{
    TextStyle style;
    style.fontSize = 40;
    style.outlineSize = outline;
    style.outlineColor = {0, 0, 0, static_cast<std::uint8_t>(outline > 0 ? 255 : 0)};
    style.shadowColor = {0, 0, 0, static_cast<std::uint8_t>(shadowBlur > 0 ? 200 : 0)};
    style.shadowOffset = {3, -3};
    style.shadowBlur = shadowBlur;
    return style;
}

BENCHMARK_CAPTURE(newText, clock, ":12:34", look(0, 0))->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(newText, styledClock, ":12:34", look(3, 6))->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(newText, crawl, longText(), look(0, 0))->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(newText, outlinedCrawl, longText(), look(3, 0))->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(newText, styledCrawl, longText(), look(3, 6))->Unit(benchmark::kMicrosecond);
BENCHMARK(frame)->Arg(1)->Arg(2)->Arg(10)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(collect)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
