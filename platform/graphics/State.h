#pragma once

#include "graphics/Format.h"

#include <array>
#include <cstdint>
#include <vector>

namespace tavlo::graphics {

/// Red, green, blue, alpha, 0..1.
using Rgba = std::array<float, 4>;

/// A rectangle of texels in a texture; y counts memory rows from the first one. An empty box is nothing, not all.
struct Box
{
    std::uint32_t x = 0, y = 0, width = 0, height = 0;
};

/// Where a draw lands in its target, in pixels. y counts from the target's first memory row, which is its bottom.
struct Viewport
{
    std::int32_t x = 0, y = 0, width = 0, height = 0;
    bool operator==(const Viewport&) const = default;
};

enum class BlendFactor : std::uint8_t
{
    Zero,
    One,
    SrcColor,
    InvSrcColor,
    SrcAlpha,
    InvSrcAlpha,
    DstColor,
    InvDstColor,
    DstAlpha,
    InvDstAlpha,
};

enum class BlendOp : std::uint8_t
{
    Add,
    Subtract,
    RevSubtract,
    Min,
    Max
};

/// result = source * sourceFactor (op) target * targetFactor
struct BlendEquation
{
    BlendFactor source = BlendFactor::One;
    BlendFactor target = BlendFactor::Zero;
    BlendOp op = BlendOp::Add;
    bool operator==(const BlendEquation&) const = default;
};

/// How a draw meets what the target holds. As made: the source replaces it.
struct BlendState
{
    bool enabled = false;
    BlendEquation color;
    BlendEquation alpha;
    std::uint8_t writeMask = 0xf; ///< bit 0 red, 1 green, 2 blue, 3 alpha
    bool operator==(const BlendState&) const = default;
};

/// As made: neither tested nor written.
struct DepthState
{
    bool test = false; ///< less or equal passes
    bool write = false;
    bool operator==(const DepthState&) const = default;
};

/// How a shader samples a texture. Coordinates outside 0..1 take the edge's texel (Clamp) or begin anew (Wrap).
enum class Sampler : std::uint8_t
{
    LinearClamp,
    NearestClamp,
    LinearWrap
};
inline constexpr int samplerCount = 3;

enum class Topology : std::uint8_t
{
    TriangleList,
    TriangleStrip,
    LineList,
    LineStrip,
    PointList
};

/// What a vertex element feeds: the shader's input of the same name.
enum class Semantic : std::uint8_t
{
    Position,
    TexCoord,
    Color
};
inline constexpr int semanticCount = 3;

/// The shader's name of an input: "POSITION", "TEXCOORD", "COLOR".
const char* semanticName(Semantic semantic);

struct InputElement
{
    Semantic semantic = Semantic::Position;
    Format format = Format::R32G32B32_FLOAT; ///< a format with FormatSupport::VertexBuffer
    std::uint32_t offset = 0;                ///< bytes from the vertex's start
};

/// The elements of one vertex. At most one of each semantic.
using InputLayout = std::vector<InputElement>;

} // namespace tavlo::graphics
