#pragma once

#include "drawing/ITavloGraphicsRes.h"

namespace tavlo {

/// Draws, tiny and unseen, what an engine may have to draw: pictures of every layout with and without adjustment and
/// keys, every transition, every filter. A driver that compiles its code with the first draw of a program has done so
/// then, and no frame waits for it.
///
/// Thread of the context. Some tenths of a second where the driver finds its code on disk; half a minute where it finds
/// none, which is so once for each build and machine.
/// \param resources  with its images, without which filters and some transitions are drawn otherwise
void warmUpDrawing(ITavloGraphicsRes& resources, const graphics::DevicePtr& device,
                   const graphics::ContextPtr& context);

} // namespace tavlo
