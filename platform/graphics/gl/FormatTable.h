#pragma once

#include "graphics/Format.h"
#include "graphics/gl/GlApi.h"

#include <array>
#include <cstddef>
#include <span>

namespace tavlo::graphics {

/// How a format is told to GL.
struct FormatRow
{
    Format format;
    std::string_view name;
    std::uint32_t bytes; ///< of a texel or a vertex element
    GLenum internal;     ///< 0: no texture
    GLenum transfer;
    GLenum type;
    std::array<GLenum, 4> swizzle; ///< what a shader sees as red, green, blue, alpha
    GLint vertexComponents;        ///< 0: no vertex element
    bool fullFloat;                ///< filtered only with an extension
};

std::span<const FormatRow> formatRows();

/// Null for UNKNOWN.
const FormatRow* formatRow(Format format);

/// Bytes between the rows of a mapped picture: a multiple of 64 bytes and of the texel.
std::uint32_t mappedPitch(const FormatRow& row, std::uint32_t width);

/// Bytes of a mapped picture, with the room behind its last row.
std::size_t mappedBytes(const FormatRow& row, std::uint32_t width, std::uint32_t height);

/// Texture storage for the bound texture, one level.
void allocateStorage(const FormatRow& row, std::uint32_t width, std::uint32_t height);

} // namespace tavlo::graphics
