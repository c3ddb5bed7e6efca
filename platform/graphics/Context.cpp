#include "graphics/Context.h"

#include "graphics/gl/ContextImpl.h"

#include <algorithm>

namespace tavlo::graphics {

Context::Context(std::unique_ptr<Impl> impl) : _impl(std::move(impl)) {}
Context::~Context() = default;

bool Context::isImmediate() const { return _impl->immediate; }
bool Context::attach() { return _impl->enter().ready; }

void Context::detach()
{
    Impl& d = *_impl;
    if (eglGetCurrentContext() != d.handle)
        return;
    const DeviceCore::Turn turn = d.core->takeTurn();
    d.submit();
    eglMakeCurrent(d.core->target.display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
}

Context::Impl::~Impl()
{
    if (handle == EGL_NO_CONTEXT)
        return;
    const DeviceCore::Turn turn = core->takeTurn();
    const bool here = eglGetCurrentContext() == handle;
    if (here)
        submit();
    std::ranges::for_each(pending, &WrittenPicture::drop);
    timeline->close();
    if (here)
        eglMakeCurrent(core->target.display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    eglDestroyContext(core->target.display, handle); // framebuffers and vertex array are its own and go with it
}

Context::Impl::Access Context::Impl::enter()
{
    DeviceCore::Turn turn = core->takeTurn();
    const bool ready = attach();
    return {std::move(turn), ready};
}

bool Context::Impl::attach()
{
    if (eglGetCurrentContext() == handle && core->isCurrentHere())
        return true;
    if (!core->makeCurrent(handle)) {
        core->fail("failed to eglMakeCurrent: " + eglErrorText());
        return false;
    }
    return started || start();
}

bool Context::Impl::start()
{
    core->prepareContext();
    glGenVertexArrays(1, &vertexArray);
    glBindVertexArray(vertexArray);
    started = true;
    return true;
}

GLuint Context::Impl::frameFor(const TexturePtr& color, const TexturePtr& depth)
{
    const Picture colorPicture = color ? color->impl().shown() : Picture{};
    const Picture depthPicture = depth ? depth->impl().shown() : Picture{};
    const auto known = std::ranges::find_if(frames, [&](const Frame& frame) {
        return frame.color == colorPicture.serial && frame.depth == depthPicture.serial;
    });
    if (known != frames.end())
        return known->name;

    GLuint name = 0;
    glGenFramebuffers(1, &name);
    glBindFramebuffer(GL_FRAMEBUFFER, name);
    stale.target = true;
    if (colorPicture.name != 0)
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, colorPicture.name, 0);
    if (depthPicture.name != 0)
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_DEPTH_STENCIL_ATTACHMENT, GL_TEXTURE_2D, depthPicture.name, 0);
    if (glCheckFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE) {
        glDeleteFramebuffers(1, &name);
        core->fail("the device cannot draw into such a target");
        return 0;
    }
    frames.push_back({colorPicture.serial, depthPicture.serial, color, depth, name});
    return name;
}

void Context::Impl::sweepFrames()
{
    const std::uint32_t gone = core->buriedTextures();
    if (gone == sweptTextures)
        return;
    sweptTextures = gone;
    std::erase_if(frames, [this](const Frame& frame) {
        const bool stays =
            (frame.color == 0 || !frame.colorOwner.expired()) && (frame.depth == 0 || !frame.depthOwner.expired());
        if (stays)
            return false;
        glDeleteFramebuffers(1, &frame.name);
        stale.target = true; // deleting the bound one unbinds it
        return true;
    });
}

Fence Context::Impl::submit()
{
    sweepFrames();
    core->deleteBuried();
    if (worked) {
        timeline->insert();
        worked = false;
    }
    return {timeline, timeline->upcoming() - 1};
}

Fence Context::flush()
{
    const Impl::Access access = _impl->enter();
    return access ? _impl->submit() : Fence{};
}

void Context::clearState()
{
    _impl->settings = {};
    _impl->stale = {};
}

} // namespace tavlo::graphics
