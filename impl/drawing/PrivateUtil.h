#pragma once

#include "graphics/Device.h"

#include <QRectF>
#include <QSizeF>
#include <QString>

/// Small graphics routines that all drawing shares. Thread of the context given; enumerations and sizes are checked
/// here, failures logged and returned as null or false.
namespace PrivateUtil {

using tavlo::graphics::Context;
using tavlo::graphics::ContextPtr;
using tavlo::graphics::Device;
using tavlo::graphics::DevicePtr;
using tavlo::graphics::Format;
using tavlo::graphics::TexturePtr;
using tavlo::graphics::Usage;

/// A texture that shaders can read; the processor can write it when the usage is dynamic. Null on failure.
TexturePtr createImageRes(const DevicePtr& device, int width, int height, Usage usage, Format format);

/// A picture file as a dynamic texture of R8G8B8A8_UNORM, straight alpha, top row first.
/// \param width, height  above 0: the picture is scaled to that size, its aspect disregarded; else it keeps its own
TexturePtr loadImageRes(const DevicePtr& device, Context& context, const QString& path, int width = 0, int height = 0);

/// The same from memory: width * height pixels of four bytes, red first.
TexturePtr createCurveRes(const DevicePtr& device, Context& context, const quint8* data, int width, int height);

/// Writes rows into a texture at column x and row y. A dynamic texture loses everything else that it held.
/// \param data      the first byte of row 0 of the data
/// \param pitch     bytes from one row of the data to the next; a whole row of that many bytes is written at the most
/// \param rowStart  first row of the data to write
bool UpdateSubresource(Context& context, const TexturePtr& texture, int x, int y, const quint8* data, int pitch,
                       int rowStart, int rowCount);

/// The source scaled to fit the target, its aspect kept, in the target's middle.
/// \param scaleOut  takes the scale; may be null
QRectF fitRect(QSizeF target, QSizeF source, double* scaleOut = nullptr);

/// The newest message of the device's debug log.
QString lastD3DMessage(const DevicePtr& device);

/// Logs which picture formats the device takes as input of a conversion and gives as its output.
void reportProcessorFormats(const DevicePtr& device);

} // namespace PrivateUtil
