#include "base/Log.h"
#include "base/ThreadCheck.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

int onItsThread(const tavlo::ThreadCheck& check)
{
    TAVLO_ON_THREAD(check, -1);
    return 1;
}

} // namespace

TEST(LogTest, MarksTheCallersLine)
{
    const tavlo::test::LogCapture log;
    const int line = __LINE__ + 1;
    tavlo::logFailure({"impl\\TavloCanvas", "TavloCanvas::present"}, QStringLiteral("failed to present"));
    ASSERT_EQ(log.lines().size(), 1);
    EXPECT_EQ(log.lines().first(),
              QStringLiteral("[impl\\TavloCanvas-%1 TavloCanvas::present] failed to present").arg(line));
}

TEST(ThreadCheckTest, LetsOnlyItsThreadPass)
{
    tavlo::ThreadCheck check;
    EXPECT_EQ(onItsThread(check), 1) << "unbound, every thread passes";
    std::thread([&check] { check.bind(); }).join();
    EXPECT_DEATH(onItsThread(check), "called on the wrong thread");
    check.bind();
    EXPECT_EQ(onItsThread(check), 1);
    std::thread([&check] {
        check.release();
        EXPECT_EQ(onItsThread(check), 1);
    }).join();
}
