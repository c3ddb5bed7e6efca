#pragma once

#include "graphics/Buffer.h"
#include "graphics/CommandList.h"
#include "graphics/Program.h"
#include "graphics/gl/TextureImpl.h"

namespace tavlo::graphics {

struct Buffer::Impl
{
    ~Impl() { core->bury(DeviceCore::Grave::Buffer, name); }

    // fixed after create
    std::shared_ptr<DeviceCore> core;
    BufferDesc desc;
    GLuint name = 0;

    bool mapped = false; // the writing thread's
};

struct Program::Impl
{
    ~Impl() { core->bury(DeviceCore::Grave::Program, name); }

    // fixed after create
    std::shared_ptr<DeviceCore> core;
    GLuint name = 0;
    std::vector<Uniform> uniforms;
    std::vector<Semantic> inputs;
};

/// A dynamic texture and what it is to show: a picture on the device, or rows that have still to get there.
struct WrittenPicture
{
    /// Gives back what was never shown.
    void drop();

    TexturePtr texture;
    Picture picture;
    PixelBuffer rows;
};

struct CommandList::Impl
{
    std::shared_ptr<DeviceCore> core; ///< null while the list waits to be used again
    std::vector<WrittenPicture> pictures;
    Fence written;
};

} // namespace tavlo::graphics
