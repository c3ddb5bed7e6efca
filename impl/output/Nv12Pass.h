#pragma once

#include "drawing/TavloDrawDX11.h"
#include "graphics/Device.h"

#include <memory>

namespace tavlo {

/// Turns a texture of red, green, blue into NV12 (BT.709, limited range) on the graphics processor.
///
/// The result is packed: four bytes of the picture in each texel, first the rows of luma, then those of the
/// interleaved chroma, each of which is the mean of four pixels. So 1.5 bytes a pixel come back to memory.
class Nv12Pass
{
public:
    /// Null, the reason in the log, where the device cannot. Any thread. \param rows  how sources keep their rows
    static std::unique_ptr<Nv12Pass> create(const graphics::DevicePtr& device, int width, int height, Rows rows);

    /// What a texture that takes the result looks like, and how a staging texture of it does.
    static graphics::TextureDesc packedDesc(int width, int height, graphics::Usage usage);

    /// Draws the source's picture. Frame thread. Leaves the context with the targets it found and nothing else.
    /// \return the result, top row first; null when it could not be drawn
    graphics::TexturePtr convert(graphics::Context& context, const graphics::TexturePtr& source);

private:
    Nv12Pass() = default;

    bool makeProgram(graphics::Device& device, const char* body, graphics::ProgramPtr& program);
    bool drawPart(graphics::Context& context, const graphics::ProgramPtr& program, const graphics::TexturePtr& source,
                  int firstRow, int rowCount);

    // fixed after create
    int _width = 0, _height = 0;
    Rows _rows = Rows::TopFirst;
    graphics::TexturePtr _packed;
    graphics::ProgramPtr _luma, _chroma;
    graphics::BufferPtr _vertices;
    std::shared_ptr<const graphics::InputLayout> _layout;
};

} // namespace tavlo
