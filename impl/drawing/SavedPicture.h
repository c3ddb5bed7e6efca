#pragma once

#include "graphics/Context.h"
#include "graphics/Device.h"
#include "graphics/Texture.h"

#include <QSize>
#include <QString>

namespace tavlo {

/// Saves a texture of four bytes a pixel as a picture file in the format of its suffix (PNG without one). The copy is asked of the device; waiting for it, scaling and writing are done on a pool thread. The file is
/// there whole or not at all; a failure is told in the log. Frame thread.
///
/// \param size            pixels; empty keeps the texture's own
/// \param bottomRowFirst  the texture keeps its bottom row first, as that of a window does
void savePicture(graphics::Device& device, graphics::Context& context, const graphics::TexturePtr& texture,
                 const QString& path, QSize size, bool bottomRowFirst = false);

} // namespace tavlo
