#include "TestModule.h"

#include <stdexcept>

namespace {

int livingCounters = 0;

class TestCounter final : public tavlo::Implements<TestCounter, ITestCounter>
{
public:
    TestCounter() { ++livingCounters; }
    ~TestCounter() { --livingCounters; }

    int living() override { return livingCounters; }
};

} // namespace

extern "C" {

__attribute__((visibility("default"))) IUnknownEx* CreateTestCounter(const TavloInterfaceId& id, quint32 version)
{
    auto* const counter = new TestCounter;
    IUnknownEx* const found = counter->queryInterface(id, version);
    if (!found)
        counter->destroy();
    return found;
}

__attribute__((visibility("default"))) IUnknownEx* CreateThrowing(const TavloInterfaceId&, quint32)
{
    throw std::runtime_error("no");
}
}
