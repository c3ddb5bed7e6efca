#include "scene/EventDispatcher.h"
#include "scene/EventListener.h"
#include "scene/RenderTexture.h"
#include "scene/SceneTest.h"

using namespace tavlo::scene;
using namespace tavlo::test;

namespace {

class Events : public SceneTest
{
public:
    /// A node that writes its letter down at each mouse event.
    RefPtr<Node> add(Node& parent, int z, char letter, bool stops = false)
    {
        RefPtr<Node> node = Node::create(*director);
        parent.addChild(node, z);
        listen(*node, letter, stops);
        return node;
    }

    RefPtr<EventListenerMouse> listen(Node& node, char letter, bool stops = false)
    {
        RefPtr<EventListenerMouse> listener = EventListenerMouse::create();
        listener->onMouseDown = listener->onMouseMove = [this, letter, stops](EventMouse& event) {
            heard += letter;
            if (stops)
                event.stopPropagation();
        };
        director->eventDispatcher().addEventListenerWithSceneGraphPriority(listener, &node);
        return listener;
    }

    std::string click(Vec2 at = {})
    {
        heard.clear();
        EventMouse event;
        event.location = at;
        event.type = EventMouse::Type::Down;
        event.button = MouseButton::Left;
        view->injectMouse(event);
        return heard;
    }

    std::string heard;
};

TEST_F(Events, reachTheTopmostFirst)
{
    const auto low = add(*root, 0, 'a'), high = add(*root, 7, 'b'), behind = add(*high, -1, 'c'),
               front = add(*high, 0, 'd');
    EXPECT_EQ(click(), ""); // nothing was drawn yet
    step();
    EXPECT_EQ(click(), "dbca");
    low->setZOrder(8);
    step();
    EXPECT_EQ(click(), "adbc");
    high->setVisible(false);
    step();
    EXPECT_EQ(click(), "a");
    high->setVisible(true);
    step();
    add(*high, 5, 's', true);
    listen(*front, 'e');
    step();
    EXPECT_EQ(click(), "as");
}

TEST_F(Events, reachNodesInsideRenderTextures)
{
    const RefPtr<RenderTexture> target = RenderTexture::create(*director, 20, 16);
    target->setAutoDraw(true);
    root->addChild(target);
    listen(*target, 't');
    const auto item = add(*target, 0, 'i'), above = add(*root, 1, 'a');
    step();
    EXPECT_EQ(click(), "ait");
}

TEST_F(Events, listenersMayChangeWhoListens)
{
    const auto first = add(*root, 0, 'a');
    const auto second = listen(*first, 'b'), third = listen(*first, 'c');
    const auto remover = listen(*add(*root, 1, 'x'), 'r');
    remover->onMouseDown = [&](EventMouse&) {
        heard += 'r';
        director->eventDispatcher().removeEventListener(second.get());
        listen(*first, 'n');
        third->setEnabled(false);
    };
    step();
    EXPECT_EQ(click(), "xra");
    director->eventDispatcher().removeEventListener(remover.get());
    EXPECT_EQ(click(), "xan");
    third->setEnabled(true);
    EXPECT_EQ(click(), "xacn");
    first->removeFromParent();
    EXPECT_EQ(click(), "x");
    EXPECT_EQ(director->eventDispatcher().listenerCount(), 1U);
}

TEST_F(Events, aNodeMayGoInItsOwnListener)
{
    RefPtr<Node> node = add(*root, 0, 'a');
    const auto last = listen(*node, 'z');
    Node* const lent = node.get();
    last->onMouseDown = [&, lent](EventMouse&) {
        director->autoReleasePool().add(RefPtr<Ref>(lent));
        lent->removeFromParent();
        node.reset();
        EXPECT_EQ(lent->name(), "still here"); // until the frame is over
        heard += 'z';
    };
    node->setName("still here");
    step();
    EXPECT_EQ(click(), "az");
    step();
    EXPECT_EQ(click(), "");
    EXPECT_EQ(director->eventDispatcher().listenerCount(), 0U);
}

TEST_F(Events, aListenerMayBeTheLastThatHoldsANode)
{
    const auto first = add(*root, 0, 'a');
    for (int i = 0; i < 3; ++i) {
        const RefPtr<Node> other = Node::create(*director);
        listen(*first, 'x')->onMouseUp = [other](EventMouse&) {};
        listen(*other, 'y');
    }
    add(*root, 1, 'z');
    first->removeFromParent();
    step();
    EXPECT_EQ(click(), "z");
    EXPECT_EQ(director->eventDispatcher().listenerCount(), 1U);
}

TEST_F(Events, overlappingNodesFindWhatLiesUnderTheMouse)
{
    const auto addAt = [this](char letter, Rect place, float scale, float degrees) {
        const RefPtr<Node> node = Node::create(*director);
        node->setPosition(place.x, place.y);
        node->setContentSize(place.size());
        node->setScale(scale);
        node->setRotation(degrees);
        root->addChild(node);
        listen(*node, letter)->onMouseDown = [this, letter, lent = node.get()](EventMouse& event) {
            const Size size = lent->contentSize();
            if (!Rect{0, 0, size.width, size.height}.contains(lent->convertToNodeSpace(event.location)))
                return;
            heard += letter;
            event.stopPropagation();
        };
    };
    addAt('a', {0, 0, 20, 20}, 1, 0);
    addAt('b', {10, 10, 10, 10}, 2, 0);  // to 30, 30
    addAt('c', {40, 20, 20, 10}, 1, 90); // clockwise: down from its corner, to 50, 0
    step();
    const struct
    {
        Vec2 at;
        const char* hears;
    } places[]{{{5, 5}, "a"},  {{9, 15}, "a"}, {{10, 10}, "b"}, {{29, 29}, "b"}, {{30, 15}, ""},
               {{19, 9}, "a"}, {{20, 9}, ""},  {{45, 10}, "c"}, {{45, 21}, ""},  {{55, 10}, ""}};
    for (const auto& place : places)
        EXPECT_EQ(click(place.at), place.hears) << place.at.x << ", " << place.at.y;
}

TEST_F(Events, tellOfAllFingersThatAreDown)
{
    std::string told;
    const auto tell = [&told](char what) {
        return [&told, what](EventTouch& event) {
            told += what + std::to_string(event.changed.id) + "/" + std::to_string(event.touches.size()) + " ";
            EXPECT_EQ(event.changed.startLocation.x, 1);
        };
    };
    const RefPtr<EventListenerTouch> listener = EventListenerTouch::create();
    listener->onTouchesBegan = tell('b');
    listener->onTouchesMoved = tell('m');
    listener->onTouchesEnded = tell('e');
    listener->onTouchesCancelled = tell('c');
    director->eventDispatcher().addEventListenerWithSceneGraphPriority(listener, root.get());
    step();
    view->injectTouch(TouchPhase::Moved, 9, {1, 1}); // of a finger that never came down
    view->injectTouch(TouchPhase::Began, 4, {1, 1});
    view->injectTouch(TouchPhase::Began, 9, {1, 1});
    view->injectTouch(TouchPhase::Began, 4, {2, 2}); // down already: it moved
    view->injectTouch(TouchPhase::Ended, 4, {3, 3});
    view->injectTouch(TouchPhase::Cancelled, 9, {3, 3});
    view->injectTouch(TouchPhase::Began, 4, {1, 5});
    EXPECT_EQ(told, "b4/1 b9/2 m4/2 e4/2 c9/1 b4/1 ");
    told.clear();
    view->injectTouch(TouchPhase::Began, 5, {1, 1});
    director->setOpenGLView(nullptr);
    EXPECT_EQ(told, "b5/2 c4/2 c5/1 ");
    director->setOpenGLView(view);
}

} // namespace
