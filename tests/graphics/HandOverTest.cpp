#include "graphics/GraphicsTest.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <mutex>
#include <thread>

using namespace tavlo::graphics;
using namespace tavlo::test;

namespace {

/// Writers and readers on threads of their own, with every way of mapping.
class HandOverGL : public testing::WithParamInterface<Transfer>, public GraphicsTest
{
public:
    HandOverGL() : GraphicsTest(GetParam()) {}
};

INSTANTIATE_TEST_SUITE_P(Ways, HandOverGL, everyTransfer, transferName);

template <class Item>
class Queue
{
public:
    void push(Item item)
    {
        const std::lock_guard guard(_lock);
        _items.push_back(std::move(item));
        _filled.notify_one();
    }

    Item pop()
    {
        std::unique_lock guard(_lock);
        _filled.wait(guard, [this] { return !_items.empty(); });
        Item item = std::move(_items.front());
        _items.pop_front();
        return item;
    }

private:
    std::mutex _lock;
    std::condition_variable _filled;
    std::deque<Item> _items;
};

struct Frame
{
    TexturePtr texture; ///< null ends
    CommandListPtr list;
    std::uint32_t number = 0;
};

constexpr std::uint32_t width = 64, height = 37;

// A row that tells its picture's number in every texel, so that a picture mixed from two shows.
std::array<std::uint32_t, width> rowOf(std::uint32_t number)
{
    std::array<std::uint32_t, width> row;
    row.fill(number * 2654435761U);
    return row;
}

void fill(const Mapped& mapped, std::uint32_t number)
{
    const auto row = rowOf(number);
    for (std::uint32_t y = 0; y < height; ++y)
        std::memcpy(mapped.data + std::size_t{y} * mapped.rowPitch, row.data(), sizeof row);
}

bool isWhole(const Mapped& mapped, std::uint32_t number)
{
    const auto row = rowOf(number);
    for (std::uint32_t y = 0; y < height; ++y) {
        if (std::memcmp(mapped.data + std::size_t{y} * mapped.rowPitch, row.data(), sizeof row) != 0)
            return false;
    }
    return true;
}

// One thread writes pictures, the frame thread draws each, a third reads what was drawn. Textures go round as in a
// player's pool: the writer has one back as soon as it was drawn, whether the device is done with it or not.
TEST_P(HandOverGL, picturesArriveWholeAndInOrder)
{
    const std::uint32_t count = GetParam() == Transfer::Best ? 10'000 : 1'000;
    Queue<TexturePtr> free, freeStaging;
    Queue<Frame> written;
    Queue<std::pair<TexturePtr, std::uint32_t>> drawnFrames;
    for (int i = 0; i < 2; ++i)
        free.push(makeTexture(Format::R8G8B8A8_UNORM, width, height, Usage::Dynamic));
    for (int i = 0; i < 4; ++i)
        freeStaging.push(makeTexture(Format::R8G8B8A8_UNORM, width, height, Usage::Staging));
    const ContextPtr deferred = device->createDeferredContext();
    ASSERT_TRUE(deferred);

    std::thread writer([&] {
        for (std::uint32_t number = 1; number <= count; ++number) {
            Frame frame{free.pop(), nullptr, number};
            const auto mapped = deferred->map(*frame.texture, MapMode::WriteDiscard);
            if (!mapped)
                break;
            fill(*mapped, number);
            deferred->unmap(frame.texture);
            frame.list = deferred->finishCommandList();
            written.push(std::move(frame));
        }
        written.push({});
        deferred->detach();
    });
    std::atomic<std::uint32_t> whole{0};
    std::thread reader([&] {
        for (;;) {
            const auto [staging, number] = drawnFrames.pop();
            if (!staging)
                return;
            if (const auto mapped = staging->mapRead()) {
                whole += isWhole(*mapped, number) ? 1 : 0;
                staging->unmapRead();
            }
            freeStaging.push(staging);
        }
    });

    const Quad quad(*device, "color = texelFetch(picture, ivec2(gl_FragCoord.xy), 0);");
    const TexturePtr target = makeTarget(width, height);
    std::uint32_t last = 0;
    bool drawn = true;
    for (Frame frame = written.pop(); frame.texture; frame = written.pop()) {
        drawn &= frame.number == ++last && context->executeCommandList(std::move(frame.list)) &&
                 quad.draw(*context, target, frame.texture);
        context->clearState();
        free.push(std::move(frame.texture)); // before the flush: the device still draws it
        const TexturePtr staging = freeStaging.pop();
        drawn &= context->copyResource(*staging, target);
        drawnFrames.push({staging, frame.number});
    }
    drawnFrames.push({});
    writer.join();
    reader.join();
    EXPECT_TRUE(drawn);
    EXPECT_EQ(last, count);
    EXPECT_EQ(whole.load(), count);
}

TEST_P(HandOverGL, aPictureShowsOnlyWhenItsListIsExecuted)
{
    const TexturePtr texture = makeTexture(Format::R8G8B8A8_UNORM, width, height, Usage::Dynamic);
    const TexturePtr staging = makeTexture(Format::R8G8B8A8_UNORM, width, height, Usage::Staging);
    ContextPtr deferred = device->createDeferredContext();
    const auto writeOnThread = [&](std::uint32_t number) {
        std::thread([&] {
            if (const auto mapped = deferred->map(*texture, MapMode::WriteDiscard)) {
                fill(*mapped, number);
                deferred->unmap(texture);
            }
            deferred->detach();
        }).join();
    };
    const auto finish = [&] {
        CommandListPtr list;
        std::thread([&] {
            list = deferred->finishCommandList();
            deferred->detach();
        }).join();
        return list;
    };
    const auto shows = [&](std::uint32_t number) {
        if (!context->copyResource(*staging, texture))
            return false;
        const auto mapped = staging->mapRead();
        const bool equal = mapped && isWhole(*mapped, number);
        staging->unmapRead();
        return equal;
    };
    const auto mapped = context->map(*texture, MapMode::WriteDiscard);
    ASSERT_TRUE(mapped);
    fill(*mapped, 1);
    context->unmap(texture);
    EXPECT_TRUE(shows(1));

    writeOnThread(2);
    writeOnThread(3); // nobody finished a list for 2: the newer takes its place
    CommandListPtr list = finish();
    EXPECT_TRUE(shows(1));
    EXPECT_TRUE(context->executeCommandList(std::move(list)));
    EXPECT_TRUE(shows(3));

    writeOnThread(4);
    finish().reset(); // dropped
    EXPECT_TRUE(shows(3));

    // What the context wrote into a list outlives it; what it never finished is gone without harm.
    writeOnThread(5);
    list = finish();
    writeOnThread(6);
    deferred.reset();
    EXPECT_TRUE(context->executeCommandList(std::move(list)));
    EXPECT_TRUE(shows(5));
    EXPECT_FALSE(context->finishCommandList());
    EXPECT_FALSE(context->executeCommandList(nullptr));
}

TEST_P(HandOverGL, aThreadWithoutContextMakesAndDropsObjects)
{
    std::atomic<bool> go{true};
    std::atomic<int> made{0};
    std::thread maker([&] {
        const auto content = pattern(12, 3, 5);
        while (go.load()) {
            const TexturePtr texture = device->createTexture({3, 3, Format::R8G8B8A8_UNORM}, content.data(), 12);
            made += texture != nullptr ? 1 : 0;
        }
    });
    const Quad quad(*device, "color = vec4(1.0);");
    for (int turn = 0; turn < 200 || made.load() < 50; ++turn) {
        const TexturePtr target = makeTarget(5, 5);
        ASSERT_TRUE(quad.draw(*context, target, nullptr));
        context->flush();
    }
    go.store(false);
    maker.join();
    EXPECT_EQ(device->lastMessage(), "");
}

// A draw with many textures fills the driver's lists of what its work refers to, while other threads have the driver
// look through them.
TEST_P(HandOverGL, manyTexturesAreDrawnWhileOthersWrite)
{
    constexpr std::uint32_t side = 8;
    const auto content = pattern(side * 4, side, 5);
    std::vector<TexturePtr> textures;
    for (int i = 0; i < 100; ++i)
        textures.push_back(device->createTexture({side, side, Format::R8G8B8A8_UNORM}, content.data(), side * 4));
    const ContextPtr deferred = device->createDeferredContext();
    const TexturePtr dynamic = makeTexture(Format::R8G8B8A8_UNORM, width, height, Usage::Dynamic);
    std::atomic<bool> go{true};
    std::thread writer([&] {
        while (go.load()) {
            if (const auto mapped = deferred->map(*dynamic, MapMode::WriteDiscard)) {
                fill(*mapped, 1);
                deferred->unmap(dynamic);
            }
            deferred->finishCommandList();
        }
        deferred->detach();
    });
    std::thread maker([&] {
        while (go.load())
            device->createTexture({side, side, Format::R8G8B8A8_UNORM}, content.data(), side * 4);
    });
    const Quad quad(*device, "color = texelFetch(picture, ivec2(gl_FragCoord.xy), 0);");
    const TexturePtr target = makeTarget(side, side);
    bool drawn = true;
    for (int turn = 0; turn < 100; ++turn) {
        for (const TexturePtr& texture : textures)
            drawn &= quad.draw(*context, target, texture);
        context->flush();
    }
    go.store(false);
    writer.join();
    maker.join();
    EXPECT_TRUE(drawn);
    EXPECT_EQ(device->lastMessage(), "");
}

TEST_P(HandOverGL, fencesPassInOrderAndOutliveTheirContext)
{
    const ContextPtr deferred = device->createDeferredContext();
    const TexturePtr target = makeTarget(16, 16);
    std::vector<Fence> fences;
    for (int i = 0; i < 200; ++i) { // more than are kept
        ASSERT_TRUE(context->clearRenderTarget(target, {0, 0, 0, 1}));
        fences.push_back(context->flush());
    }
    bool reached = true;
    std::thread([&] { reached = fences.back().wait(std::chrono::seconds(10)); }).join();
    EXPECT_TRUE(reached);
    EXPECT_TRUE(std::ranges::all_of(fences, &Fence::passed));
    EXPECT_TRUE(Fence().passed());
}

} // namespace
