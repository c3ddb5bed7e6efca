#pragma once

#include "graphics/Context.h"
#include "graphics/gl/ObjectImpl.h"
#include "graphics/gl/Timeline.h"

#include <array>
#include <vector>

namespace tavlo::graphics {

inline constexpr int textureUnits = 16; // what every device has for the fragment shader

struct TextureBinding
{
    TexturePtr texture;
    Sampler sampler = Sampler::LinearClamp;
};

/// All that a draw depends on.
struct DrawSettings
{
    TexturePtr color, depth;
    Viewport viewport;
    std::optional<Viewport> scissor;
    BlendState blend;
    DepthState depthState;
    ProgramPtr program;
    std::array<TextureBinding, textureUnits> textures;
    std::shared_ptr<const InputLayout> layout;
    BufferPtr vertices, indices;
    std::uint32_t vertexStride = 0, vertexOffset = 0; ///< bytes
    Topology topology = Topology::TriangleList;
};

/// Which settings GL has not heard of yet.
struct StaleSettings
{
    bool target = true, area = true, blend = true, depth = true, program = true, textures = true, vertices = true;
};

/// Owner's thread, all of it.
struct Context::Impl
{
    explicit Impl(std::shared_ptr<DeviceCore> deviceCore) : core(std::move(deviceCore)) {}
    ~Impl();

    /// What a call that reaches GL holds while it does: the thread's turn, with the context current.
    struct Access
    {
        DeviceCore::Turn turn;
        bool ready;
        explicit operator bool() const { return ready; }
    };

    /// Makes the context current on the calling thread. False, and logged, when it cannot be.
    [[nodiscard]] Access enter();

    /// The framebuffer of a color and a depth picture, either of which may be missing; 0 and logged when the device
    /// cannot draw so.
    GLuint frameFor(const TexturePtr& color, const TexturePtr& depth);

    /// Sends the work so far off, if there is any.
    Fence submit();

    // what a draw needs
    bool prepareDraw();
    bool applyTarget();
    void applyArea();
    void applyBlend();
    void applyDepth();
    void applyTextures();
    bool applyVertices();
    void useProgram(GLuint name);

    // pixels
    bool readInto(Texture::Impl& target, std::uint32_t x, std::uint32_t y, const TexturePtr& source, const Box& box);
    bool blitInto(Texture& target, std::uint32_t x, std::uint32_t y, const TexturePtr& source, const Box& box);
    PixelBuffer mapUpload(std::size_t bytes);
    bool sendInto(Texture::Impl& target, std::uint32_t x, std::uint32_t y, const Texture::Impl& source);
    std::optional<Picture> upload(Texture::Impl& texture, PixelBuffer rows);
    void take(Texture::Impl& texture, PixelBuffer rows);
    void settle(Texture::Impl& texture);
    void record(WrittenPicture written);

    // fixed after create
    const std::shared_ptr<DeviceCore> core;
    bool immediate = false;
    EGLContext handle = EGL_NO_CONTEXT;
    std::shared_ptr<Timeline> timeline;
    GLuint vertexArray = 0;

    struct Frame
    {
        std::uint64_t color, depth; ///< serials of the pictures; 0 for none
        std::weak_ptr<Texture> colorOwner, depthOwner;
        GLuint name;
    };
    std::vector<Frame> frames;
    std::uint32_t sweptTextures = 0; ///< the device's count of gone textures when `frames` was last tidied

    std::vector<WrittenPicture> pending; ///< deferred: for the next command list
    bool started = false;                ///< was current once
    bool worked = false;                 ///< something was done since the last fence
    GLuint usedProgram = 0;

    struct BoundTexture
    {
        std::uint64_t serial; ///< of the picture; 0 for the one of zeros
        Sampler sampler;
        bool valid; ///< false before the unit's first binding
    };
    std::array<BoundTexture, textureUnits> bound{};

    DrawSettings settings;
    StaleSettings stale;

private:
    bool attach();
    bool start();
    void sweepFrames();
};

} // namespace tavlo::graphics
