#pragma once

#include <cstdint>
#include <string_view>

namespace tavlo::graphics {

/// The texture and vertex formats, under their DXGI names and numbers.
enum class Format : std::uint32_t
{
    UNKNOWN = 0,
    R32G32B32A32_FLOAT = 2,
    R32G32B32_FLOAT = 6, ///< vertices only
    R16G16B16A16_FLOAT = 10,
    R32G32_FLOAT = 16,
    R10G10B10A2_UNORM = 24,
    R11G11B10_FLOAT = 26,
    R8G8B8A8_UNORM = 28,
    R8G8B8A8_UNORM_SRGB = 29,
    R16G16_FLOAT = 34,
    R32_FLOAT = 41,
    D24_UNORM_S8_UINT = 45, ///< depth and stencil targets only
    R8G8_UNORM = 49,
    R16_FLOAT = 54,
    R16_UNORM = 56,
    R8_UNORM = 61,
    A8_UNORM = 65, ///< sampled as 0, 0, 0, a
    B8G8R8A8_UNORM = 87,
    B8G8R8X8_UNORM = 88, ///< sampled with alpha 1
    NV12 = 103,          ///< one plane of bytes, as wide as the picture: its rows, then rows / 2 of interleaved chroma
};

/// What a device can do with a format. Flags.
enum class FormatSupport : std::uint32_t
{
    None = 0,
    Texture2D = 1,    ///< exists as texture and takes pixels
    ShaderLoad = 2,   ///< texel loads in a shader
    ShaderSample = 4, ///< filtered sampling
    RenderTarget = 8,
    DepthStencil = 16,
    ReadBack = 32, ///< can be copied to a staging texture
    VertexBuffer = 64,
};

constexpr FormatSupport operator|(FormatSupport a, FormatSupport b)
{
    return static_cast<FormatSupport>(static_cast<std::uint32_t>(a) | static_cast<std::uint32_t>(b));
}
constexpr FormatSupport& operator|=(FormatSupport& a, FormatSupport b) { return a = a | b; }

/// Whether `have` holds all of `wanted`.
constexpr bool supports(FormatSupport have, FormatSupport wanted)
{
    return (static_cast<std::uint32_t>(have) & static_cast<std::uint32_t>(wanted)) ==
           static_cast<std::uint32_t>(wanted);
}

/// The name without its DXGI prefix, such as "R8G8B8A8_UNORM"; empty for a number that stands in no row above.
std::string_view formatName(Format format);

/// The format of a DXGI number, or UNKNOWN.
Format formatFromNumber(std::uint32_t number);

/// Bytes of one texel or one vertex element; 0 for UNKNOWN. NV12 counts as one byte.
std::uint32_t formatBytes(Format format);

/// Rows that a picture of that height takes in memory: height + height / 2 for NV12, height for all others.
std::uint32_t formatRows(Format format, std::uint32_t height);

} // namespace tavlo::graphics
