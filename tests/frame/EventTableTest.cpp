#include "frame/EventTable.h"
#include "support/LogCapture.h"

#include <tavlo/records/PictureRecords.h>

#include <gtest/gtest.h>

using tavlo::EventArguments;
using tavlo::EventTable;
using tavlo::payload;
using tavlo::test::LogCapture;

namespace {

QVariant dispatch(const EventTable& table, qulonglong event, QVariant a1 = {}, QVariant&& a3 = {})
{
    QVariant a2, a4;
    return table.dispatch(event, {a1, a2, a3, a4});
}

} // namespace

TEST(EventTableTest, RunsTheHandlerOfTheCode)
{
    const EventTable table({
        {TavloEventSetCrop, [](EventArguments a) { return QVariant(a.a1.toInt() + 1); }},
        {TavloEventDisplayPresentItem, [](EventArguments a) { return a.a3 = "changed"; }},
    });
    EXPECT_EQ(dispatch(table, 0x20007, 41), QVariant(42));
    QVariant a3;
    dispatch(table, 0x100003, {}, std::move(a3)); // a reference: the handler's change shows
    EXPECT_EQ(a3, QVariant("changed"));
}

TEST(EventTableTest, UnknownAndFailedEventsShareOneEnd)
{
    const EventTable table({{TavloEventCreateEngine, [](EventArguments) { return std::nullopt; }}});
    const LogCapture log;
    for (const qulonglong event : {0x10000ULL, 0x100008ULL, 0x100018ULL, ~0ULL})
        EXPECT_EQ(dispatch(table, event), QVariant(-1));
    EXPECT_EQ(log.count("failed to handle event :"), 4);
    EXPECT_EQ(log.count("0x100018 TavloEventSourcePlaylistEnd"), 1);
    EXPECT_EQ(log.count("0xffffffffffffffff"), 1);
}

TEST(EventTableTest, AWrongPayloadIsADefaultRecord)
{
    using Key = tagTavloPresentPictureLumaKey;
    Key key;
    key.threshold = 0.25F;
    EXPECT_TRUE(payload<Key>(QVariant::fromValue(key)) == key);
    EXPECT_TRUE(payload<Key>(QVariant(7)) == Key());
    EXPECT_TRUE(payload<Key>({}) == Key());
    EXPECT_EQ(payload<int>(QVariant("12")), 12) << "Qt's own types are converted";
    EXPECT_EQ(payload<QString>(QVariant(3)), "3");
    EXPECT_EQ(QMetaType::fromName("tagTavloPresentPictureLumaKey"), QMetaType::fromType<Key>());
}
