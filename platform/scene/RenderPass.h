#pragma once

#include "graphics/State.h"
#include "graphics/Texture.h"
#include "scene/CustomCommand.h"
#include "scene/GLProgram.h"
#include "scene/Geometry.h"
#include "scene/Vertex.h"

#include <optional>
#include <span>
#include <vector>

namespace tavlo::scene {

/// The programs that most of a scene is drawn with.
enum class PlainProgram : std::uint8_t
{
    Solid,
    Premultiplied,
    Straight,
    Opaque,
    Copy ///< opaque and without a tint
};
inline constexpr std::size_t plainProgramCount = 5;

/// How a batch meets its target.
enum class BatchBlend : std::uint8_t
{
    Over,      ///< the target shows through where it is not opaque
    Replace,   ///< it is opaque
    OverClear, ///< the target's clear colour shows through: it is known, and the target is not read
};

/// What neighbours must have in common to be drawn by one call.
struct BatchKind
{
    const graphics::TexturePtr& texture;
    PlainProgram program = PlainProgram::Solid;
    BatchBlend blend = BatchBlend::Over;
    graphics::Sampler sampler = graphics::Sampler::LinearClamp;
    GLProgramState* state = nullptr; ///< null: the plain program
    bool isPicture = false;          ///< a whole texture, texel by pixel and as it is
};

/// What is drawn by one call, or a custom command between two calls.
struct Batch
{
    CustomCommand* command = nullptr; ///< then nothing else counts
    PlainProgram program = PlainProgram::Solid;
    BatchBlend blend = BatchBlend::Over;
    graphics::Sampler sampler = graphics::Sampler::LinearClamp;
    graphics::TexturePtr texture;
    RefPtr<GLProgramState> state;
    std::optional<graphics::Viewport> clip; ///< rows as the target keeps them
    std::uint32_t firstIndex = 0, indexCount = 0;
    std::uint32_t baseVertex = 0; ///< what the indices count from
    bool isCopy = false;          ///< the target becomes the texture; no draw where it can be copied
};

/// What is collected for one target. Its buffers are kept from frame to frame.
class RenderPass
{
public:
    void begin(const graphics::TexturePtr& target, bool bottomRowFirst, const std::optional<Color4F>& clear);

    /// Lets go of everything that it holds.
    void release();

    Size size() const { return _size; }
    const graphics::TexturePtr& target() const { return _target; }
    bool isBottomRowFirst() const { return _bottomRowFirst; }

    /// The colour to begin with, multiplied by its alpha; nothing when the target keeps what it shows.
    const std::optional<Color4F>& clearColor() const { return _clear; }

    /// Whether the target has to be cleared: not when the first batch covers it.
    bool needsClear() const { return _clear && !_covered; }

    /// Four corners: left bottom, right bottom, right top, left top. False when nothing of them is within the clip.
    bool addQuad(BatchKind kind, std::span<const Vertex, 4> corners);
    void addTriangles(const Affine& transform, std::span<const Vertex> vertices, std::span<const std::uint16_t> indices,
                      Color3B color, std::uint8_t opacity);
    void addCommand(CustomCommand& command);

    void pushClip(const Rect& area);
    void popClip();

    const std::vector<Vertex>& vertices() const { return _vertices; }
    const std::vector<std::uint16_t>& indices() const { return _indices; }
    const std::vector<Batch>& batches() const { return _batches; }

    // Where its vertices and indices begin in the buffers of the frame; set by the renderer
    std::uint32_t vertexStart = 0;
    std::uint32_t indexStart = 0;

private:
    Batch& batchFor(const BatchKind& kind, std::size_t vertexCount);
    bool covers(std::span<const Vertex, 4> corners) const;
    bool becomes(const BatchKind& kind) const;
    Rect clipArea() const;
    std::optional<graphics::Viewport> clipRows() const;

    graphics::TexturePtr _target;
    Size _size;
    bool _bottomRowFirst = false;
    bool _covered = false;
    std::optional<Color4F> _clear;
    std::vector<Rect> _clips; ///< each within the one before, whole pixels
    std::vector<Vertex> _vertices;
    std::vector<std::uint16_t> _indices;
    std::vector<Batch> _batches;
};

} // namespace tavlo::scene
