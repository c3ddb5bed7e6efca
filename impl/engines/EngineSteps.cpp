#include "engines/EngineSteps.h"

#include <algorithm>

namespace tavlo {

bool runSteps(const std::vector<EngineStep>& steps, const std::function<bool(const QString&)>& announce)
{
    return std::ranges::all_of(steps,
                               [&announce](const EngineStep& step) { return announce(step.progress) && step.run(); });
}

} // namespace tavlo
