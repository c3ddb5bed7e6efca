#include "scene/Action.h"
#include "scene/ActionManager.h"
#include "scene/SceneTest.h"

using namespace tavlo::scene;
using namespace tavlo::test;

namespace {

class Actions : public SceneTest
{
public:
    void SetUp() override
    {
        SceneTest::SetUp();
        node = Node::create(*director);
        root->addChild(node);
    }

    RefPtr<Node> node;
};

TEST_F(Actions, movesByTheClockThatIsPassed)
{
    node->setPosition(10, 20);
    node->runAction(MoveTo::create(2, {30, -20}));
    step();
    EXPECT_EQ(node->position(), (Vec2{10, 20})); // the first frame shows the start
    step(500'000);
    EXPECT_EQ(node->position(), (Vec2{15, 10}));
    clock -= 400'000; // a clock that goes back stops everything and turns nothing back
    step(0);
    EXPECT_EQ(node->position(), (Vec2{15, 10}));
    step(1'000'000);
    EXPECT_EQ(node->position(), (Vec2{21, -2}));
    step(5'000'000);
    EXPECT_EQ(node->position(), (Vec2{30, -20}));
    EXPECT_EQ(node->runningActionCount(), 0U);
    director->stopAnimation();
    node->runAction(MoveTo::create(0, {0, 0}));
    step();
    EXPECT_EQ(node->position(), (Vec2{30, -20}));
}

TEST_F(Actions, sequencesHandLeftOverTimeOn)
{
    std::vector<int> calls;
    node->runAction(Sequence::create(
        {MoveTo::create(1, {10, 0}), CallFunc::create([&] { calls.push_back(1); }), MoveTo::create(0.7F, {10, 70}),
         nullptr, CallFuncN::create([&](Node& who) { calls.push_back(&who == node.get() ? 2 : 9); })}));
    step();
    step(1'350'000);
    EXPECT_EQ(calls, (std::vector{1}));
    EXPECT_NEAR(node->position().y, 35, 0.001);
    step(350'000);
    EXPECT_EQ(calls, (std::vector{1, 2}));
    EXPECT_EQ(node->position(), (Vec2{10, 70}));
}

TEST_F(Actions, aCallMayStopAndStartAnything)
{
    int rounds = 0;
    std::function<void(Node&)> again = [&](Node& who) {
        ++rounds;
        who.stopActionByTag(1000);
        const RefPtr<Action> action =
            Sequence::create({MoveTo::create(0.1F, {static_cast<float>(rounds), 0}), CallFuncN::create(again),
                              CallFunc::create([] { ADD_FAILURE() << "ran on though it was stopped"; })});
        action->setTag(1000);
        who.runAction(action);
    };
    again(*node);
    for (int i = 0; i < 30; ++i)
        step(60'000);
    EXPECT_EQ(rounds, 11); // begins with the frame after the call: three frames a round
    EXPECT_EQ(node->runningActionCount(), 1U);
    EXPECT_TRUE(node->actionByTag(1000));
    node->stopActionByTag(1000);
    EXPECT_EQ(director->actionManager().size(), 0U);
}

TEST_F(Actions, goWithTheirNode)
{
    int calls = 0;
    const auto count = [&] { return CallFunc::create([&] { ++calls; }); };
    node->runAction(count());
    node->removeFromParent();
    step();
    EXPECT_EQ(calls, 0);

    root->addChild(node);
    node->removeFromParent(false); // keeps what it does
    node->runAction(count());
    step();
    EXPECT_EQ(calls, 1);

    // The last holder lets go in the middle of the node's own action.
    node->runAction(Sequence::create({CallFunc::create([&] { node.reset(); }), count()}));
    step();
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(director->actionManager().size(), 0U);

    node = Node::create(*director);
    node->runAction(count());
    node.reset();
    step();
    EXPECT_EQ(calls, 2);

    // Functions that are the last to hold nodes with actions of their own, which go while the list is tidied.
    node = Node::create(*director);
    for (int i = 0; i < 3; ++i) {
        const RefPtr<Node> other = Node::create(*director);
        node->runAction(CallFunc::create([other] {}));
        other->runAction(count());
    }
    node->runAction(count());
    step();
    EXPECT_EQ(calls, 6);
    for (int i = 0; i < 3; ++i) {
        const RefPtr<Node> other = Node::create(*director);
        node->runAction(CallFunc::create([other] {}));
        other->runAction(count());
    }
    node->stopAllActions();
    EXPECT_EQ(director->actionManager().size(), 0U);
}

} // namespace
