#include "RandomRecord.h"
#include "RecordText.h"

#include "records/fields/AllFields.h"

#include <QLocale>

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>

using tavlo::test::fromText;
using tavlo::test::randomRecord;
using tavlo::test::RandomValues;
using tavlo::test::toText;

namespace {

template <class T>
void roundTrip(unsigned seed)
{
    RandomValues values(seed);
    const T record = randomRecord<T>(values);
    const QString text = toText(record);
    T back;
    ASSERT_TRUE(fromText(text, back)) << tavlo::recordName<T> << " seed " << seed;
    EXPECT_TRUE(record == back) << tavlo::recordName<T> << " seed " << seed << "\n"
                                << qPrintable(text.left(4000)) << "\n became \n"
                                << qPrintable(toText(back).left(4000));
    EXPECT_EQ(text, toText(back));
    const auto findings = TavloPresentUtil::checkXml(text, QLatin1String(tavlo::recordName<T>));
    for (const TavloXmlFinding& finding : findings)
        ADD_FAILURE() << tavlo::recordName<T> << ": " << qPrintable(finding.field) << " " << qPrintable(finding.text);
}

void roundTripAll(unsigned seeds)
{
    for (unsigned seed = 0; seed < seeds && !testing::Test::HasFailure(); ++seed) {
#define TAVLO_TRIP(Record) roundTrip<Record>(seed);
        TAVLO_FOR_EACH_RECORD(TAVLO_TRIP)
#undef TAVLO_TRIP
    }
}

} // namespace

TEST(RecordTest, EveryRecordComesBackEqual) { roundTripAll(16); }

TEST(RecordTest, TextIsTheSameInEveryLocale)
{
    const tagTavloShowDisplayItemInfo record{{0.25, 1e-7}, {-0.5, 1234567.125}, 0.1F, 0.75F, {0.5, 1.5, 2.5, 3.5}};
    const QString expected = toText(record);
    EXPECT_TRUE(expected.contains(QStringLiteral("\"0.25,1e-07\""))) << qPrintable(expected);
    EXPECT_TRUE(expected.contains(QStringLiteral("\"-0.5,1234567.125\""))) << qPrintable(expected);

    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    const char* const found = std::setlocale(LC_ALL, "de_DE.UTF-8");
    ASSERT_NE(found, nullptr) << "the build makes this locale for the tests";
    ASSERT_STREQ(std::localeconv()->decimal_point, ",");
    EXPECT_EQ(toText(record), expected);
    roundTripAll(4);
    std::setlocale(LC_ALL, "C");
    QLocale::setDefault(before);
}

TEST(RecordTest, ComparisonSeesEveryField)
{
    // Two random records of a type differ somewhere; a comparison that left out fields would often find them equal.
    tagTavloPresentSourceInfo a;
    tagTavloPresentSourceInfo b;
    b.stageInfo.properties.textProperties.resize(1);
    EXPECT_FALSE(a == b);
    b = a;
    b.irtmpParam = 1;
    EXPECT_FALSE(a == b) << "a field without an XML form counts";
    tagTavloShowPresentInfo c;
    tagTavloShowPresentInfo d;
    d.durationMode = 1;
    EXPECT_FALSE(c == d);
    tagTavloAudioEffectParam e;
    tagTavloAudioEffectParam f;
    f.equalizer.gains[9] = 1e-300;
    EXPECT_FALSE(e == f);
    tagTavloPresentControlledConfig g;
    tagTavloPresentControlledConfig h;
    h.commands.resize(1);
    EXPECT_FALSE(g == h);
}
