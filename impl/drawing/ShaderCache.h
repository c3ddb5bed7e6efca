#pragma once

#include <QString>

namespace tavlo {

/// The folder in which this build keeps its compiled effects, with its separator. The engine keeps its effects in
/// "shader/" below, a canvas, which may be of another device, in the folder itself.
///
/// One of another build is of no use to anybody: where this build has none yet, all go. Thread of the caller.
/// \param cachePath  the folder that all builds share; empty gives an empty path, and nothing is kept
QString prepareShaderCache(const QString& cachePath);

} // namespace tavlo
