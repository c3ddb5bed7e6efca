#include "graphics/gl/FormatTable.h"

#include <algorithm>

namespace tavlo::graphics {

namespace {

constexpr std::array<GLenum, 4> asIs{GL_RED, GL_GREEN, GL_BLUE, GL_ALPHA};
constexpr std::array<GLenum, 4> opaque{GL_RED, GL_GREEN, GL_BLUE, GL_ONE};
constexpr std::array<GLenum, 4> alphaOnly{GL_ZERO, GL_ZERO, GL_ZERO, GL_RED};

constexpr FormatRow rows[] = {
    {Format::R32G32B32A32_FLOAT, "R32G32B32A32_FLOAT", 16, GL_RGBA32F, GL_RGBA, GL_FLOAT, asIs, 4, true},
    {Format::R32G32B32_FLOAT, "R32G32B32_FLOAT", 12, 0, GL_RGB, GL_FLOAT, asIs, 3, true},
    {Format::R16G16B16A16_FLOAT, "R16G16B16A16_FLOAT", 8, GL_RGBA16F, GL_RGBA, GL_HALF_FLOAT, asIs, 4, false},
    {Format::R32G32_FLOAT, "R32G32_FLOAT", 8, GL_RG32F, GL_RG, GL_FLOAT, asIs, 2, true},
    {Format::R10G10B10A2_UNORM, "R10G10B10A2_UNORM", 4, GL_RGB10_A2, GL_RGBA, GL_UNSIGNED_INT_2_10_10_10_REV, asIs, 0,
     false},
    {Format::R11G11B10_FLOAT, "R11G11B10_FLOAT", 4, GL_R11F_G11F_B10F, GL_RGB, GL_UNSIGNED_INT_10F_11F_11F_REV, asIs, 0,
     false},
    {Format::R8G8B8A8_UNORM, "R8G8B8A8_UNORM", 4, GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE, asIs, 4, false},
    {Format::R8G8B8A8_UNORM_SRGB, "R8G8B8A8_UNORM_SRGB", 4, GL_SRGB8_ALPHA8, GL_RGBA, GL_UNSIGNED_BYTE, asIs, 0, false},
    {Format::R16G16_FLOAT, "R16G16_FLOAT", 4, GL_RG16F, GL_RG, GL_HALF_FLOAT, asIs, 2, false},
    {Format::R32_FLOAT, "R32_FLOAT", 4, GL_R32F, GL_RED, GL_FLOAT, asIs, 1, true},
    {Format::D24_UNORM_S8_UINT, "D24_UNORM_S8_UINT", 4, GL_DEPTH24_STENCIL8, GL_DEPTH_STENCIL, GL_UNSIGNED_INT_24_8,
     asIs, 0, false},
    {Format::R8G8_UNORM, "R8G8_UNORM", 2, GL_RG8, GL_RG, GL_UNSIGNED_BYTE, asIs, 2, false},
    {Format::R16_FLOAT, "R16_FLOAT", 2, GL_R16F, GL_RED, GL_HALF_FLOAT, asIs, 1, false},
    {Format::R16_UNORM, "R16_UNORM", 2, GL_R16_EXT, GL_RED, GL_UNSIGNED_SHORT, asIs, 1, false},
    {Format::R8_UNORM, "R8_UNORM", 1, GL_R8, GL_RED, GL_UNSIGNED_BYTE, asIs, 1, false},
    {Format::A8_UNORM, "A8_UNORM", 1, GL_R8, GL_RED, GL_UNSIGNED_BYTE, alphaOnly, 0, false},
    {Format::B8G8R8A8_UNORM, "B8G8R8A8_UNORM", 4, GL_BGRA_EXT, GL_BGRA_EXT, GL_UNSIGNED_BYTE, asIs, 0, false},
    {Format::B8G8R8X8_UNORM, "B8G8R8X8_UNORM", 4, GL_BGRA_EXT, GL_BGRA_EXT, GL_UNSIGNED_BYTE, opaque, 0, false},
    {Format::NV12, "NV12", 1, GL_R8, GL_RED, GL_UNSIGNED_BYTE, asIs, 0, false},
};

} // namespace

std::span<const FormatRow> formatRows() { return rows; }

const FormatRow* formatRow(Format format)
{
    const auto* found = std::ranges::find(rows, format, &FormatRow::format);
    return found == std::end(rows) ? nullptr : found;
}

std::string_view formatName(Format format)
{
    const FormatRow* row = formatRow(format);
    return row ? row->name : std::string_view{};
}

Format formatFromNumber(std::uint32_t number)
{
    const FormatRow* row = formatRow(static_cast<Format>(number));
    return row ? row->format : Format::UNKNOWN;
}

std::uint32_t formatBytes(Format format)
{
    const FormatRow* row = formatRow(format);
    return row ? row->bytes : 0;
}

std::uint32_t formatRows(Format format, std::uint32_t height)
{
    return format == Format::NV12 ? height + height / 2 : height;
}

std::uint32_t mappedPitch(const FormatRow& row, std::uint32_t width)
{
    // GL counts the pitch in texels, so the step has to be whole in both.
    const std::uint32_t step = std::max(64 / row.bytes, 16U);
    return (width + step - 1) / step * step * row.bytes;
}

std::size_t mappedBytes(const FormatRow& row, std::uint32_t width, std::uint32_t height)
{
    return std::size_t{mappedPitch(row, width)} * formatRows(row.format, height) + 64;
}

void allocateStorage(const FormatRow& row, std::uint32_t width, std::uint32_t height)
{
    const auto w = static_cast<GLsizei>(width);
    const auto h = static_cast<GLsizei>(formatRows(row.format, height));
    if (row.internal == GL_BGRA_EXT) // the extension knows it without a size only
        glTexImage2D(GL_TEXTURE_2D, 0, GL_BGRA_EXT, w, h, 0, row.transfer, row.type, nullptr);
    else
        glTexStorage2D(GL_TEXTURE_2D, 1, row.internal, w, h);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, 0);
    constexpr GLenum names[] = {GL_TEXTURE_SWIZZLE_R, GL_TEXTURE_SWIZZLE_G, GL_TEXTURE_SWIZZLE_B, GL_TEXTURE_SWIZZLE_A};
    for (std::size_t i = 0; i < 4; ++i)
        glTexParameteri(GL_TEXTURE_2D, names[i], static_cast<GLint>(row.swizzle[i]));
}

} // namespace tavlo::graphics
