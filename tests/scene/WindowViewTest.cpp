#include "scene/EventDispatcher.h"
#include "scene/EventListener.h"
#include "scene/Layer.h"
#include "scene/SceneTest.h"

#include <xcb/xcb.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <thread>

using namespace tavlo;
using namespace tavlo::scene;
using namespace tavlo::test;

namespace {

struct Disconnect
{
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};
using Connection = std::unique_ptr<xcb_connection_t, Disconnect>;

struct FreeReply
{
    void operator()(void* reply) const { std::free(reply); }
};
template <class T>
using Reply = std::unique_ptr<T, FreeReply>;

/// The newest child of a window.
xcb_window_t childOf(xcb_connection_t* connection, xcb_window_t parent)
{
    const Reply<xcb_query_tree_reply_t> tree{
        xcb_query_tree_reply(connection, xcb_query_tree(connection, parent), nullptr)};
    const int count = tree ? xcb_query_tree_children_length(tree.get()) : 0;
    return count > 0 ? xcb_query_tree_children(tree.get())[count - 1] : XCB_NONE;
}

class WindowView : public testing::Test
{
public:
    void SetUp() override
    {
        connection.reset(xcb_connect(nullptr, nullptr));
        if (xcb_connection_has_error(connection.get()) != 0)
            GTEST_SKIP() << "no display server";
        host = graphics::Window::create("host", {0, 0, 300, 200});
        ASSERT_TRUE(host);
        view = GLViewImpl::createWithRect({}, {10, 20, 101, 53}, -1, host->handle());
        ASSERT_TRUE(view);
        if (!view->isBottomRowFirst())
            GTEST_SKIP() << "no windows on this device";
        director = Director::create();
        director->setOpenGLView(view);
        scene = Scene::createWithSize(*director, view->frameSize());
        director->runWithScene(scene);
        window = childOf(connection.get(), static_cast<xcb_window_t>(host->handle()));
        ASSERT_NE(window, static_cast<xcb_window_t>(XCB_NONE));
    }

    void TearDown() override
    {
        scene.reset();
        if (!director)
            return;
        director->end();
        director->mainLoop();
    }

    void frame()
    {
        view->beginFrame(0, 0, 0);
        director->mainLoop();
        view->endFrame();
    }

    /// As many frames as it takes the display server; false when it never comes true.
    bool framesUntil(const std::function<bool()>& isTrue)
    {
        for (int turn = 0; turn < 5000; ++turn) {
            frame();
            if (isTrue())
                return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return false;
    }

    std::array<int, 4> place()
    {
        const Reply<xcb_get_geometry_reply_t> found{
            xcb_get_geometry_reply(connection.get(), xcb_get_geometry(connection.get(), window), nullptr)};
        return found ? std::array{int{found->x}, int{found->y}, int{found->width}, int{found->height}}
                     : std::array<int, 4>{};
    }

    /// What the window shows: blue, green and red from the low byte up.
    std::uint32_t shown(int x, int y)
    {
        const Reply<xcb_get_image_reply_t> image{
            xcb_get_image_reply(connection.get(),
                                xcb_get_image(connection.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, window,
                                              static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), 1, 1, ~0U),
                                nullptr)};
        std::uint32_t pixel = 0;
        if (image && xcb_get_image_data_length(image.get()) >= 4)
            std::memcpy(&pixel, xcb_get_image_data(image.get()), sizeof pixel);
        return pixel & 0xffffff;
    }

    void send(std::uint8_t type, std::uint8_t detail, int x, int y, std::uint16_t state)
    {
        xcb_button_press_event_t event{};
        event.response_type = type;
        event.detail = detail;
        event.event = window;
        event.event_x = static_cast<std::int16_t>(x);
        event.event_y = static_cast<std::int16_t>(y);
        event.state = state;
        xcb_send_event(connection.get(), 0, window,
                       XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE | XCB_EVENT_MASK_POINTER_MOTION,
                       reinterpret_cast<const char*>(&event));
        std::free(xcb_get_input_focus_reply(connection.get(), xcb_get_input_focus(connection.get()), nullptr));
    }

    Connection connection;
    std::unique_ptr<graphics::Window> host;
    RefPtr<GLViewImpl> view;
    RefPtr<Director> director;
    RefPtr<Scene> scene;
    xcb_window_t window = XCB_NONE;
};

TEST_F(WindowView, bringsTheMouseToTheScene)
{
    std::vector<EventMouse> heard;
    const RefPtr<EventListenerMouse> listener = EventListenerMouse::create();
    listener->onMouseDown = listener->onMouseUp = listener->onMouseMove =
        listener->onMouseScroll = [&heard](EventMouse& event) { heard.push_back(event); };
    director->eventDispatcher().addEventListenerWithSceneGraphPriority(listener, scene.get());
    frame();
    send(XCB_BUTTON_PRESS, 3, 7, 0, XCB_MOD_MASK_CONTROL);
    send(XCB_MOTION_NOTIFY, 0, 8, 52, XCB_BUTTON_MASK_3);
    send(XCB_BUTTON_RELEASE, 3, 9, 6, XCB_BUTTON_MASK_3);
    send(XCB_BUTTON_PRESS, 5, 9, 6, 0); // the wheel, towards the person
    send(XCB_BUTTON_PRESS, 9, 9, 6, 0); // a button that nobody knows
    ASSERT_TRUE(framesUntil([&] { return heard.size() >= 4; }));
    ASSERT_EQ(heard.size(), 4U);
    EXPECT_EQ(heard[0].type, EventMouse::Type::Down);
    EXPECT_EQ(heard[0].button, MouseButton::Right);
    EXPECT_EQ(heard[0].location, (Vec2{7, 52})); // the topmost row of 53
    EXPECT_EQ(heard[1].location, (Vec2{8, 0}));  // the lowest
    EXPECT_TRUE(heard[0].isControlDown() && heard[0].isHeld(MouseButton::Right));
    EXPECT_EQ(heard[1].type, EventMouse::Type::Move);
    EXPECT_TRUE(heard[1].isHeld(MouseButton::Right));
    EXPECT_EQ(heard[2].type, EventMouse::Type::Up);
    EXPECT_FALSE(heard[2].isHeld(MouseButton::Right));
    EXPECT_EQ(heard[3].scroll, (Vec2{0, -1}));
}

TEST_F(WindowView, movesWithItsPlacement)
{
    const RefPtr<LayerColor> top = LayerColor::create(*director, {200, 0, 0, 255}, {500, 500});
    top->setPosition(0, 31); // the uppermost row of 32
    scene->addChild(top);
    director->setClearColor({0, 0, 1, 1});
    frame();
    ASSERT_TRUE(view->setWindowPlacement({30, 40, 64, 32}));
    frame();
    EXPECT_EQ(place(), (std::array{30, 40, 64, 32}));
    EXPECT_EQ(view->backBuffer()->desc().width, 64U);
    EXPECT_TRUE(framesUntil([&] { return shown(63, 0) == 0xc80000 && shown(63, 1) == 0xff && shown(0, 31) == 0xff; }));

    const auto tooLarge = static_cast<float>(view->device()->maxTextureSize() + 1);
    EXPECT_FALSE(view->setWindowPlacement({0, 0, 64, tooLarge}));
    frame();
    EXPECT_TRUE(view->isBottomRowFirst());
    EXPECT_EQ(place(), (std::array{30, 40, 64, 32}));
    EXPECT_EQ(view->frameSize(), (Size{64, 32}));
}

TEST_F(WindowView, goesOnOffScreenWhenItsHostGoes)
{
    int cancelled = 0;
    const RefPtr<EventListenerTouch> listener = EventListenerTouch::create();
    listener->onTouchesCancelled = [&cancelled](EventTouch&) { ++cancelled; };
    director->eventDispatcher().addEventListenerWithSceneGraphPriority(listener, scene.get());
    frame();
    view->injectTouch(TouchPhase::Began, 3, {1, 1});
    host.reset();
    EXPECT_TRUE(framesUntil([&] { return !view->isBottomRowFirst(); }));
    EXPECT_EQ(cancelled, 1);
    EXPECT_TRUE(view->setWindowPlacement({30, 40, 65, 33}));
    frame();
    EXPECT_EQ(view->backBuffer()->desc().width, 65U);
}

} // namespace
