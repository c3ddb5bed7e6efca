#pragma once

#include "graphics/Device.h"

#include <QString>

#include <string>

namespace tavlo::scene {

/// Keeps compiled programs as files, one for each pair of sources and driver: a change of either is another file. Frame
/// thread.
class ProgramCache
{
public:
    /// An empty folder keeps nothing.
    ProgramCache(graphics::Device& device, const std::string& folder);

    /// Null when it was never stored, or the driver does not take it back.
    graphics::ProgramPtr load(const std::string& vertexSource, const std::string& fragmentSource) const;

    /// A folder that cannot be written is a normal state: the next start compiles again.
    void store(const graphics::Program& program, const std::string& vertexSource,
               const std::string& fragmentSource) const;

private:
    QString fileOf(const std::string& vertexSource, const std::string& fragmentSource) const;

    graphics::Device& _device;
    const QString _folder; ///< empty: keeps nothing
};

} // namespace tavlo::scene
