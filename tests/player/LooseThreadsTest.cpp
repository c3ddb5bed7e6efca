#include "TavloCommonModule/player/LooseThreads.h"

#include "support/PlayerSink.h"

#include <gtest/gtest.h>

namespace tavlo::test {
namespace {

/// A thread that hangs until it is let go, whatever it is told.
class Hanging
{
public:
    explicit Hanging(const char* place, const char* name = "hanging")
    {
        LooseThreads::instance().start(name, QLatin1String(place), {_shared, &_shared->ends}, [shared = _shared] {
            shared->begins.set_value();
            shared->letGo.get_future().wait();
            shared->isDone = true;
        });
    }

    void tellToEnd() const { _shared->ends = true; }
    void letGo() const { _shared->letGo.set_value(); }
    bool isDone() const { return _shared->isDone; }
    bool begins(std::chrono::seconds within = std::chrono::seconds(100))
    {
        return _begins.wait_for(within) == std::future_status::ready;
    }

private:
    struct Shared
    {
        std::atomic<bool> ends{false}, isDone{false};
        std::promise<void> begins, letGo;
    };

    const std::shared_ptr<Shared> _shared = std::make_shared<Shared>();
    const std::future<void> _begins = _shared->begins.get_future();
};

TEST(PlayerLooseThreads, WaitForWhomTheyReplace)
{
    Hanging first("camera"), beside("camera");
    EXPECT_TRUE(first.begins() && beside.begins()) << "nobody was told to end";
    first.tellToEnd();
    Hanging next("camera"), elsewhere("screen");
    Hanging given("camera", "tavlo-reader");
    EXPECT_TRUE(elsewhere.begins());
    given.tellToEnd();
    EXPECT_TRUE(readersEnd()) << "what is told to end waits for nobody";
    EXPECT_FALSE(given.begins(std::chrono::seconds(0)));
    EXPECT_FALSE(next.begins(std::chrono::seconds(0)));
    first.letGo();
    EXPECT_TRUE(next.begins());
    EXPECT_TRUE(first.isDone());
    for (const Hanging* thread : {&beside, &next, &elsewhere, &given}) {
        thread->tellToEnd(); // the end of the process waits for them
        thread->letGo();
    }
}

} // namespace
} // namespace tavlo::test
