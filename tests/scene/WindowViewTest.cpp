#include "scene/EventDispatcher.h"
#include "scene/EventListener.h"
#include "scene/SceneTest.h"

#include <xcb/xcb.h>

#include <cstdlib>
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

/// The newest child of a window.
xcb_window_t childOf(xcb_connection_t* connection, xcb_window_t parent)
{
    xcb_query_tree_reply_t* tree = xcb_query_tree_reply(connection, xcb_query_tree(connection, parent), nullptr);
    const int count = tree ? xcb_query_tree_children_length(tree) : 0;
    const xcb_window_t child = count > 0 ? xcb_query_tree_children(tree)[count - 1] : XCB_NONE;
    std::free(tree);
    return child;
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
    send(XCB_BUTTON_PRESS, 3, 7, 4, XCB_MOD_MASK_CONTROL);
    send(XCB_MOTION_NOTIFY, 0, 8, 5, XCB_BUTTON_MASK_3);
    send(XCB_BUTTON_RELEASE, 3, 9, 6, XCB_BUTTON_MASK_3);
    send(XCB_BUTTON_PRESS, 5, 9, 6, 0); // the wheel, towards the person
    send(XCB_BUTTON_PRESS, 9, 9, 6, 0); // a button that nobody knows
    for (int turn = 0; turn < 500 && heard.size() < 4; ++turn) {
        frame();
        std::this_thread::yield();
    }
    ASSERT_EQ(heard.size(), 4U);
    EXPECT_EQ(heard[0].type, EventMouse::Type::Down);
    EXPECT_EQ(heard[0].button, MouseButton::Right);
    EXPECT_EQ(heard[0].location, (Vec2{7, 49}));
    EXPECT_TRUE(heard[0].isControlDown() && heard[0].isHeld(MouseButton::Right));
    EXPECT_EQ(heard[1].type, EventMouse::Type::Move);
    EXPECT_TRUE(heard[1].isHeld(MouseButton::Right));
    EXPECT_EQ(heard[2].type, EventMouse::Type::Up);
    EXPECT_FALSE(heard[2].isHeld(MouseButton::Right));
    EXPECT_EQ(heard[3].scroll, (Vec2{0, -1}));
}

TEST_F(WindowView, movesWithItsPlacementAndSurvivesItsHost)
{
    frame();
    ASSERT_TRUE(view->setWindowPlacement({30, 40, 64, 32}));
    frame();
    xcb_get_geometry_reply_t* place =
        xcb_get_geometry_reply(connection.get(), xcb_get_geometry(connection.get(), window), nullptr);
    ASSERT_TRUE(place);
    EXPECT_EQ((std::array{int{place->x}, int{place->y}, int{place->width}, int{place->height}}),
              (std::array{30, 40, 64, 32}));
    std::free(place);
    EXPECT_EQ(view->backBuffer()->desc().width, 64U);
    host.reset();
    frame();
    EXPECT_TRUE(view->setWindowPlacement({30, 40, 65, 33})); // goes on off screen
    frame();
    EXPECT_FALSE(view->isBottomRowFirst());
}

} // namespace
