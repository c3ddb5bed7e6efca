#include "engines/EngineStage.h"

#include "scene/Layer.h"

using namespace tavlo;
using namespace tavlo::scene;
using namespace tavlo::test;

namespace {

constexpr int pgm = static_cast<int>(TavloPresentChannelIDPGM);
constexpr int pvm = static_cast<int>(TavloPresentChannelIDPVM);

/// A rectangle, in place of every logo.
class BoxItem final : public TavloShowVisibleItem
{
public:
    BoxItem(const ItemSite& site, const tagTavloShowLogoInfo& info) : TavloShowVisibleItem(site), _id(info.uuid)
    {
        _node = LayerColor::create(*site.director, {255, 0, 0, 255}, {80, 40});
        _node->setPosition(100, 60);
        site.parent->addChild(_node);
    }
    ItemKind itemKind() const override { return ItemKind::Logo; }
    QString itemUuid() const override { return _id; }

private:
    QString _id;
};

class Pointer : public EngineStage
{
public:
    void SetUp() override
    {
        TavloShowItemUtil::setItemMakers(
            {.logo = [](const ItemSite& site, const tagTavloShowLogoInfo& info) -> ItemPtr {
                return std::make_unique<BoxItem>(site, info);
            }});
        create(2, 2);
        tagTavloShowLogoInfo info;
        info.uuid = QStringLiteral("box");
        send(TavloEventAddLogo, pvm, QVariant::fromValue(info));
        step();
    }
    void TearDown() override { TavloShowItemUtil::setItemMakers({}); }

    /// A place in a channel's frame, as one in the view.
    Vec2 inView(int channel, float x, float y)
    {
        const Rect& rect = inside->channels().find(channel)->innerRect();
        return {rect.minX() + x * rect.width / frameWidth, rect.minY() + y * rect.height / frameHeight};
    }

    void mouse(EventMouse::Type type, Vec2 at, MouseButton button = MouseButton::None, std::uint8_t modifiers = 0)
    {
        EventMouse event;
        event.type = type;
        event.location = at;
        event.button = button;
        event.modifiers = modifiers;
        if (type == EventMouse::Type::Down)
            event.heldButtons = static_cast<std::uint8_t>(1U << static_cast<unsigned>(button));
        inside->world().view()->injectMouse(event);
        step();
    }

    void touch(TouchPhase phase, int finger, Vec2 at)
    {
        inside->world().view()->injectTouch(phase, finger, at);
        step();
    }

    std::vector<tagTavloShowPresentPlacement> placements() const
    {
        std::vector<tagTavloShowPresentPlacement> all;
        for (const Report& report : reportsOf(TavloEventPlacementChanged))
            all.push_back(report.a2.value<tagTavloShowPresentPlacement>());
        return all;
    }
};

TEST_F(Pointer, ADragTellsTheHostWhoMovesTheItem)
{
    using Type = EventMouse::Type;
    mouse(Type::Down, inView(pvm, 110, 70), MouseButton::Left);
    mouse(Type::Move, inView(pvm, 130, 90));
    mouse(Type::Up, inView(pvm, 140, 100), MouseButton::Left);
    const auto told = placements();
    ASSERT_EQ(told.size(), 2U);
    EXPECT_EQ(told[0].name, QStringLiteral("box"));
    EXPECT_EQ(told[0].type, 2);
    EXPECT_NEAR(told[0].rect.x(), 120, 0.1);
    EXPECT_NEAR(told[0].rect.y(), 80, 0.1);
    EXPECT_NEAR(told[0].rect.width(), 80, 0.1);
    EXPECT_NEAR(told[1].relativeRect.x(), 130.0 / frameWidth, 0.001);
    EXPECT_NEAR(told[1].relativeRect.y(), 1.0 - 90.0 / frameHeight, 0.001) << "from the top";
    EXPECT_TRUE(source(0).messages.empty()) << "the item took it";
    EXPECT_EQ(reportsOf(TavloEventPlacementChanged)[0].a1.toInt(), 65535);
    EXPECT_EQ(shot(pvm).at(105, frameHeight - 65), (Pixel{255, 0, 0, 255})) << "it stands where it stood";

    send(TavloEventSetPresentPlacement, {}, QVariant::fromValue(told[1]));
    step();
    EXPECT_NE(shot(pvm).at(105, frameHeight - 65), (Pixel{255, 0, 0, 255}));
    EXPECT_EQ(shot(pvm).at(205, frameHeight - 95), (Pixel{255, 0, 0, 255}));
}

TEST_F(Pointer, TwoFingersScale)
{
    touch(TouchPhase::Began, 1, inView(pvm, 110, 70));
    touch(TouchPhase::Began, 2, inView(pvm, 150, 70));
    touch(TouchPhase::Moved, 2, inView(pvm, 190, 70));
    step();
    EXPECT_GT(shot(pvm).at(200, frameHeight - 65).r, 140) << "twice as wide, under the mark";
    touch(TouchPhase::Ended, 2, inView(pvm, 190, 70));
    touch(TouchPhase::Ended, 1, inView(pvm, 110, 70));
    EXPECT_TRUE(placements().empty());
}

TEST_F(Pointer, WhatHitsNoItemGoesToTheShownSource)
{
    using Type = EventMouse::Type;
    mouse(Type::Down, inView(pvm, 20, 30), MouseButton::Left);
    mouse(Type::Move, inView(pvm, 25, 30));
    mouse(Type::Up, inView(pvm, 25, 30), MouseButton::Left);
    send(TavloEventSelectChannel, pvm, 1);
    touch(TouchPhase::Began, 1, inView(pvm, 20, 30));
    touch(TouchPhase::Ended, 1, inView(pvm, 20, 30));
    const auto& messages = source(0).messages;
    ASSERT_EQ(messages.size(), 3U);
    EXPECT_EQ(messages[0].message, 513U);
    EXPECT_NEAR(messages[0].x, 20, 1);
    EXPECT_NEAR(messages[0].y, frameHeight - 30, 1);
    EXPECT_EQ(messages[1].message, 512U);
    EXPECT_EQ(messages[2].message, 514U);
    EXPECT_EQ(source(1).messages.size(), 2U);
}

TEST_F(Pointer, AClickOnASourceSelectsIt)
{
    using Type = EventMouse::Type;
    mouse(Type::Up, inView(1, 50, 50), MouseButton::Left);
    EXPECT_EQ(inside->channels().preview()->shownChannel(), 1);
    mouse(Type::Down, inView(1, 50, 50), MouseButton::Right);
    EXPECT_EQ(inside->channels().program()->programChannel(), 0) << "without the Control key";
    mouse(Type::Down, inView(1, 50, 50), MouseButton::Right, ControlKey);
    EXPECT_EQ(inside->channels().program()->programChannel(), 1);
    const std::size_t before = reportsOf(TavloEventSelectChannel).size();
    const Rect& outer = inside->channels().find(0)->viewRect();
    mouse(Type::Up, {outer.minX() + 0.5F, outer.minY() + 0.5F}, MouseButton::Left);
    mouse(Type::Down, inView(pgm, 50, 50), MouseButton::Left);
    EXPECT_EQ(reportsOf(TavloEventSelectChannel).size(), before) << "the border is nobody's, and PGM has no menu";
}

} // namespace
