#pragma once

namespace tavlo::graphics {

/// Mesa's software renderer draws on threads of its own, and who needs their pictures waits for them. Where the calling
/// thread has real-time priority they get the lowest one, so that decoders and encoders do not hold them up; else
/// nothing happens.
void raiseDrawingThreads();

} // namespace tavlo::graphics
