#include "graphics/gl/FormatProbe.h"

#include <array>
#include <cstddef>

namespace tavlo::graphics {

namespace {

constexpr std::uint32_t side = 4;

bool noError()
{
    bool clean = true;
    while (glGetError() != GL_NO_ERROR)
        clean = false;
    return clean;
}

FormatSupport probeTarget(const FormatRow& row, GLuint texture)
{
    const bool depth = row.format == Format::D24_UNORM_S8_UINT;
    GLuint frame = 0;
    glGenFramebuffers(1, &frame);
    glBindFramebuffer(GL_FRAMEBUFFER, frame);
    glFramebufferTexture2D(GL_FRAMEBUFFER, depth ? GL_DEPTH_STENCIL_ATTACHMENT : GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D,
                           texture, 0);
    FormatSupport found = FormatSupport::None;
    if (glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE) {
        // What shows the red channel as alpha could be drawn into, but would take the wrong channel.
        if (depth)
            found |= FormatSupport::DepthStencil;
        else if (row.format != Format::A8_UNORM)
            found |= FormatSupport::RenderTarget;
        std::array<std::byte, std::size_t{side} * side * 2 * 16> pixels{};
        if (!depth) {
            glReadPixels(0, 0, side, side, row.transfer, row.type, pixels.data());
            if (noError())
                found |= FormatSupport::ReadBack;
        }
    }
    glDeleteFramebuffers(1, &frame);
    return found;
}

} // namespace

FormatSupport probeFormat(const FormatRow& row, bool filtersFloat)
{
    FormatSupport found = row.vertexComponents > 0 ? FormatSupport::VertexBuffer : FormatSupport::None;
    if (row.internal == 0)
        return found;
    noError();
    GLuint texture = 0;
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    allocateStorage(row, side, side);
    if (noError()) {
        found |= FormatSupport::Texture2D | FormatSupport::ShaderLoad;
        if (row.format != Format::D24_UNORM_S8_UINT && (!row.fullFloat || filtersFloat))
            found |= FormatSupport::ShaderSample;
        found |= probeTarget(row, texture);
    }
    glBindTexture(GL_TEXTURE_2D, 0);
    glDeleteTextures(1, &texture);
    noError();
    return found;
}

} // namespace tavlo::graphics
