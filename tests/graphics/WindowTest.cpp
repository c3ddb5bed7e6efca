#include "graphics/GraphicsTest.h"

#include "support/LogCapture.h"

using namespace tavlo::graphics;
using namespace tavlo::test;

namespace {

class WindowGL : public GraphicsTest
{};

TEST_F(WindowGL, aChainOnAWrongWindowIsRefused)
{
    const LogCapture log;
    EXPECT_FALSE(device->createSwapChain(0, 64, 48));
    EXPECT_FALSE(device->createSwapChain(0x7fffff01, 64, 48));
    EXPECT_EQ(log.count(device->hasDisplay() ? "no such window" : "no display server for windows"), 2);
}

TEST_F(WindowGL, theBackBufferStaysWhileItIsShown)
{
    if (!device->hasDisplay())
        GTEST_SKIP() << "no display server";
    const auto window = Window::create("chain", {10, 10, 101, 53});
    ASSERT_TRUE(window);
    Window::processEvents();
    const SwapChainPtr chain = device->createSwapChain(window->handle(), 37, 23);
    ASSERT_TRUE(chain);
    const Quad quad(*device, "color = vec4(1.0, uv.y < 0.5 ? 1.0 : 0.0, 0.0, 1.0);");
    for (int turn = 0; turn < 3; ++turn) {
        ASSERT_TRUE(quad.draw(*context, chain->backBuffer(), nullptr));
        EXPECT_EQ(chain->present(*context), PresentResult::Presented);
        window->setPlace({20, 20, 64 + turn, 48});
        Window::processEvents();
    }
    const auto pixels = readBack(*device, *context, chain->backBuffer());
    EXPECT_EQ(pixels.at(1), 0);                              // first row: the bottom
    EXPECT_EQ(pixels.at(std::size_t{37} * 22 * 4 + 1), 255); // last row: the top
}

TEST_F(WindowGL, aWindowThatGoesUnderItsChainHarmsNobody)
{
    if (!device->hasDisplay())
        GTEST_SKIP() << "no display server";
    auto window = Window::create("gone", {0, 0, 32, 32});
    ASSERT_TRUE(window);
    const SwapChainPtr chain = device->createSwapChain(window->handle(), 32, 32);
    ASSERT_TRUE(chain);
    EXPECT_EQ(chain->present(*context), PresentResult::Presented);
    window.reset();
    for (int turn = 0; turn < 3; ++turn)
        chain->present(*context);
    const TexturePtr target = makeTarget(4, 4);
    EXPECT_TRUE(context->clearRenderTarget(target, {1, 1, 1, 1}));
    EXPECT_EQ(readBack(*device, *context, target).at(0), 255);
}

TEST(WindowPlaces, anEmptySizeIsRefused)
{
    const LogCapture log;
    EXPECT_FALSE(Window::create("none", {0, 0, 0, 10}));
    EXPECT_EQ(log.count("a window of no size"), 1);
}

} // namespace
