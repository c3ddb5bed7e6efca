#include "DrawRoom.h"

#include "drawing/PictureChroma.h"

#include <QImage>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <new>

namespace {

std::atomic<qint64> made = 0;

} // namespace

void* operator new(std::size_t size)
{
    ++made;
    if (void* const memory = std::malloc(size))
        return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace tavlo::bench {

using namespace graphics;

namespace {

constexpr int warmUps = 8;

/// Milliseconds: with the software renderer those that all threads of the process have worked, with a graphics
/// processor those that went by until it was done.
double workTime()
{
    timespec time{};
    clock_gettime(room().device->adapter().software ? CLOCK_PROCESS_CPUTIME_ID : CLOCK_MONOTONIC, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) * 1e-6;
}

double costOf(const std::function<void()>& draw)
{
    const double before = workTime();
    draw();
    room().finish();
    return workTime() - before;
}

} // namespace

qint64 allocations() { return made; }

Room::Room() : device(Device::create()), context(device->immediateContext()), store(new TavloGraphicsRes)
{
    context->attach();
    const auto begin = std::chrono::steady_clock::now();
    store->create(ITavloGraphicsRes::WithoutImages, device, context, cache.path() + QLatin1Char('/'));
    firstStartSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    store->create(0, device, context, cache.path() + QLatin1Char('/'));
}

std::unique_ptr<TavloDrawDX11> Room::makeDraw(QSizeF size)
{
    auto draw = std::make_unique<TavloDrawDX11>();
    draw->create(store.get(), nullptr, device, context, {}, size);
    return draw;
}

Room& room()
{
    static Room made;
    return made;
}

Source::Source(quint32 fourcc, QSizeF pictureSize) : chroma(fourcc), size(pictureSize)
{
    const auto width = static_cast<quint32>(size.width()), height = static_cast<quint32>(size.height());
    TextureDesc desc{width, height, Format::R8G8B8A8_UNORM, Usage::Dynamic};
    if (chroma == tavloFourcc("I420")) {
        desc.format = Format::R8_UNORM;
        desc.height = 2 * height;
        planes = {width * height, width * height * 3 / 2};
    }
    texture = room().device->createTexture(desc);
    const auto mapped = room().context->map(*texture, MapMode::WriteDiscard);
    for (std::size_t i = 0; i < std::size_t{mapped->rowPitch} * desc.height; ++i)
        mapped->data[i] = static_cast<std::byte>(i * 2654435761U >> 24);
    room().context->unmap(texture);
}

TexturePtr slope(QSize size, quint32 from)
{
    const TextureDesc desc{static_cast<quint32>(size.width()), static_cast<quint32>(size.height()),
                           Format::R8G8B8A8_UNORM, Usage::Dynamic};
    TexturePtr texture = room().device->createTexture(desc);
    const auto mapped = room().context->map(*texture, MapMode::WriteDiscard);
    QImage picture(reinterpret_cast<uchar*>(mapped->data), size.width(), size.height(),
                   static_cast<int>(mapped->rowPitch), QImage::Format_RGBA8888);
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            picture.setPixel(x, y, from + static_cast<QRgb>((x / 8) << 8 | y / 4));
    }
    room().context->unmap(texture);
    return texture;
}

void measure(benchmark::State& state, const std::function<void()>& draw)
{
    for (int i = 0; i < warmUps; ++i) {
        draw();
        room().finish();
    }
    qint64 count = 0;
    for (auto _ : state) {
        const qint64 before = allocations();
        draw();
        count += allocations() - before;
        room().finish();
    }
    state.counters["allocations"] = benchmark::Counter(static_cast<double>(count), benchmark::Counter::kAvgIterations);
}

void measureInCopies(benchmark::State& state, const std::function<void()>& draw)
{
    static const Source source(chromaRgba, {1280, 720});
    static const auto target = room().makeDraw(source.size);
    const auto copy = [] {
        target->drawPicture(source.chroma, source.texture, source.size, {}, nullptr, true, false, false);
    };
    for (int i = 0; i < warmUps; ++i) {
        costOf(copy);
        costOf(draw);
    }
    // The least of each: what a neighbour on the same core takes away is never a gain.
    double least = 1e9, leastCopy = 1e9;
    qint64 count = 0;
    for (auto _ : state) {
        leastCopy = std::min(leastCopy, costOf(copy));
        const qint64 before = allocations();
        least = std::min(least, costOf(draw));
        count += allocations() - before;
    }
    state.counters["allocations"] = benchmark::Counter(static_cast<double>(count), benchmark::Counter::kAvgIterations);
    state.counters["copies"] = least / leastCopy;
    state.counters["ms"] = least;
}

} // namespace tavlo::bench
