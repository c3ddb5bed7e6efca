#pragma once

#include "graphics/Device.h"
#include "scene/CustomCommand.h"
#include "scene/GLProgram.h"
#include "scene/Geometry.h"
#include "scene/RenderPass.h"
#include "scene/ScenePrograms.h"
#include "scene/Sprite.h"
#include "scene/Vertex.h"

#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace tavlo::scene {

class Director;

/// What the last frame took.
struct RenderStatistics
{
    std::uint32_t drawCalls = 0;
    std::uint32_t copies = 0; ///< of a whole picture, in the place of a draw
    std::uint32_t clears = 0;
    std::uint32_t passes = 0; ///< targets drawn into
    std::uint32_t vertices = 0;
};

/// What a quad is filled with.
struct Paint
{
    const graphics::TexturePtr& texture; ///< null: the tint alone
    TextureAlpha alpha = TextureAlpha::Premultiplied;
    GLProgramState* state = nullptr; ///< null: the plain program
};

/// A part of a texture: the corners that become left top and right bottom.
struct TexturePart
{
    Vec2 leftTop{0, 0}, rightBottom{1, 1};
};

/// Collects what the nodes of a frame draw and draws it: neighbours that share texture, program, blending and clip in
/// one call, each render texture before what shows it.
///
/// Everything collected is premultiplied, source over target. What is opaque is not blended, and a target that is
/// cleared and then covered whole is neither cleared nor blended: the shader lays the picture over the colour that it
/// knows. Nothing is allocated once a frame was as large as this one. Frame thread.
class Renderer
{
public:
    explicit Renderer(Director& director);
    ~Renderer();

    // For nodes, while the tree is visited

    /// An upright rectangle of the node's pixels.
    void drawQuad(const Affine& transform, const Rect& rect, const TexturePart& part, Color4B tint, const Paint& paint);

    /// Triangles of the node's pixels, untextured, tinted.
    void drawTriangles(const Affine& transform, std::span<const Vertex> vertices,
                       std::span<const std::uint16_t> indices, Color3B color, std::uint8_t opacity);

    /// Kept by the caller until the frame is over.
    void addCommand(CustomCommand& command);

    /// From here on, until `endTarget`, everything is drawn into that texture, from its own origin.
    void beginTarget(const graphics::TexturePtr& target, bool bottomRowFirst, const std::optional<Color4F>& clear);
    void endTarget();

    /// The same, and nothing of it is drawn.
    void dropTarget();

    /// Nothing outside is drawn until `popClip`. Pixels of the target; what is clipped already stays so.
    void pushClip(const Rect& area);
    void popClip();

    Size targetSize() const { return _pass->size(); }
    std::uint32_t nextDrawIndex() { return _drawIndex++; } ///< place in the order of drawing
    std::uint64_t frame() const { return _frame; }

    // For the director

    /// Makes what drawing takes on the view's device, which otherwise the first frame does: the programs are compiled.
    /// False, and the reason in the log, without a view, or when the driver refuses; it is not asked again.
    bool prepare();

    void beginFrame();

    /// Draws all that was collected, and lets go of it.
    void endFrame();

    /// Lets go of it without drawing.
    void dropFrame();

    /// Lets go of everything on the device.
    void releaseResources();

    const RenderStatistics& statistics() const { return _statistics; }

    /// Null, with the messages in the log, when the driver refuses the shader. See `GLProgram`.
    graphics::ProgramPtr compile(std::string_view fragmentSource);

    /// The director's named programs and their states.
    RefPtr<GLProgramState> namedState(std::string_view name) const;
    void keepNamedState(std::string_view name, RefPtr<GLProgramState> state);

private:
    void leaveTarget();

    struct NamedState
    {
        std::string name;
        RefPtr<GLProgramState> state;
    };

    /// What a pass has set on the context so far.
    struct Bound
    {
        const SceneProgram* program = nullptr;
        std::uint32_t vertexOffset = ~0U;
    };

    bool makeBuffers(std::size_t vertexBytes, std::size_t indexBytes);
    bool upload(graphics::Context& context);
    void drawPass(graphics::Context& context, const RenderPass& pass);
    void drawBatch(graphics::Context& context, const RenderPass& pass, const Batch& batch, Bound& bound);

    Director& _director;

    // this frame
    std::vector<std::unique_ptr<RenderPass>> _passes; ///< recycled
    std::size_t _usedPasses = 0;
    std::vector<RenderPass*> _open;  ///< those begun and not ended, the innermost last
    std::vector<RenderPass*> _order; ///< those ended: the order of drawing
    RenderPass* _pass = nullptr;     ///< the innermost
    std::uint32_t _drawIndex = 0;
    std::uint64_t _frame = 0;
    RenderStatistics _statistics;

    // on the device
    graphics::DevicePtr _device;
    graphics::DevicePtr _refusing; ///< its driver does not take the programs
    PlainPrograms _programs;
    std::vector<NamedState> _namedStates;
    std::shared_ptr<const graphics::InputLayout> _layout;
    graphics::BufferPtr _vertices, _indices; ///< of all passes, one behind the other
};

} // namespace tavlo::scene
