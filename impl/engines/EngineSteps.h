#pragma once

#include <QString>

#include <functional>
#include <vector>

namespace tavlo {

/// One step of creating or destroying an engine.
struct EngineStep
{
    QString progress;          ///< what the host is told before it
    std::function<bool()> run; ///< false: it failed, and told the log why
};

/// Runs steps in their order.
/// \param announce  hears each step's text first; false keeps the step from running
/// \return false at the first step that failed, those behind it not run
bool runSteps(const std::vector<EngineStep>& steps, const std::function<bool(const QString&)>& announce);

} // namespace tavlo
