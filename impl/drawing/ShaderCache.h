#pragma once

#include <QString>

namespace tavlo {

/// The folder in which this build keeps its compiled effects, with its separator; the effects stand in "shader/" below.
///
/// One of another build is of no use to anybody: where this build has none yet, all go. Thread of the caller.
/// \param cachePath  the folder that all builds share; empty gives an empty path, and nothing is kept
QString prepareShaderCache(const QString& cachePath);

} // namespace tavlo
