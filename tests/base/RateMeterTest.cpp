#include <tavlo/CBitrateCalculater.h>

#include <gtest/gtest.h>

namespace {

qint64 simulatedNow = 0; // microseconds

/// A meter that is fed in simulated time.
class RateMeterTest : public testing::Test
{
protected:
    void SetUp() override { simulatedNow = 5'000'000'000; }

    /// Delivers that count every interval for that long, all in microseconds.
    void feed(unsigned long count, qint64 interval, qint64 duration)
    {
        for (const qint64 end = simulatedNow + duration; simulatedNow < end;) {
            simulatedNow += interval;
            meter.Deliver(count);
        }
    }

    double perSecond(bool now = true) { return meter.samplerateCurrent(now) * 1000.0; }

    CBitrateCalculater meter{[] { return simulatedNow; }};
};

} // namespace

TEST_F(RateMeterTest, IsExactForSteadyInput)
{
    for (const qint64 interval : {40'000, 33'333, 16'667, 20'000, 1'000, 137, 400'000, 3'000'000}) {
        feed(3, interval, 4 * std::max<qint64>(interval, 1'000'000));
        const double perMillisecond = 3.0 * 1000.0 / static_cast<double>(interval);
        for (const qint64 later : {qint64{0}, interval * 9 / 10}) { // between two deliveries it reads the same
            simulatedNow += later;
            EXPECT_NEAR(meter.samplerateCurrent(true), perMillisecond, perMillisecond * 1e-12) << interval;
            EXPECT_NEAR(meter.kbpsCurrent(true), perMillisecond * 8.0, perMillisecond * 1e-11) << interval;
            simulatedNow -= later;
        }
    }
}

TEST_F(RateMeterTest, FollowsAChangeInASecondAndForgetsAPause)
{
    EXPECT_EQ(perSecond(), 0.0);
    feed(1, 20'000, 10'000'000);
    feed(1, 40'000, 1'040'000);
    EXPECT_NEAR(perSecond(), 25.0, 1e-9);
    feed(1, 20'000, 1'010'000);
    EXPECT_NEAR(perSecond(), 50.0, 1e-9);
    feed(1, 40'000, 1'040'000);
    simulatedNow += 500'000;
    EXPECT_LT(perSecond(), 17.0);
    EXPECT_NEAR(perSecond(false), 25.0, 1e-9) << "as of the last delivery";
    simulatedNow += 500'000;
    EXPECT_EQ(perSecond(), 0.0);
    feed(1, 40'000, 1'040'000);
    EXPECT_NEAR(perSecond(), 25.0, 1e-9);
}

TEST_F(RateMeterTest, StaysRightOverHoursAndLargeCounts)
{
    feed(4'000'000'000UL, 33'367, 3LL * 3600 * 1'000'000);
    EXPECT_NEAR(meter.samplerateCurrent(true) / (4e9 * 1000.0 / 33'367.0), 1.0, 1e-12);
}
