#pragma once

#include "graphics/SwapChain.h"

#include <QImage>

namespace tavlo::test {

/// What a window shows, in its present size, as a second client of the display server sees it; format RGB32. Null when
/// there is no display server or the window is not on the screen as a whole.
QImage windowPixels(graphics::NativeWindow window);

} // namespace tavlo::test
