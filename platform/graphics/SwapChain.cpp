#include "graphics/SwapChain.h"

#include "graphics/Device.h"
#include "graphics/DisplayServer.h"
#include "graphics/gl/ContextImpl.h"

namespace tavlo::graphics {

struct SwapChain::Impl
{
    ~Impl()
    {
        if (surface != EGL_NO_SURFACE)
            eglDestroySurface(core->target.display, surface);
    }

    PresentResult swap(Context::Impl& context);

    // fixed after create
    std::shared_ptr<DeviceCore> core;
    EGLSurface surface = EGL_NO_SURFACE;

    // frame thread
    TexturePtr backBuffer;
    bool lossTold = false;
};

SwapChain::SwapChain(std::unique_ptr<Impl> impl) : _impl(std::move(impl)) {}
SwapChain::~SwapChain() = default;

const TexturePtr& SwapChain::backBuffer() const { return _impl->backBuffer; }
void SwapChain::setBackBuffer(TexturePtr target) { _impl->backBuffer = std::move(target); }

PresentResult SwapChain::Impl::swap(Context::Impl& context)
{
    eglSwapInterval(core->target.display, 0);
    EGLint width = 0, height = 0;
    eglQuerySurface(core->target.display, surface, EGL_WIDTH, &width);
    eglQuerySurface(core->target.display, surface, EGL_HEIGHT, &height);
    const GLuint frame = context.frameFor(backBuffer, nullptr);
    if (frame == 0)
        return PresentResult::Failed;
    const auto fromWidth = static_cast<GLint>(backBuffer->desc().width);
    const auto fromHeight = static_cast<GLint>(backBuffer->desc().height);
    const bool sameSize = fromWidth == width && fromHeight == height;
    glBindFramebuffer(GL_READ_FRAMEBUFFER, frame);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0);
    glDisable(GL_SCISSOR_TEST);
    glBlitFramebuffer(0, 0, fromWidth, fromHeight, 0, 0, width, height, GL_COLOR_BUFFER_BIT,
                      sameSize ? GL_NEAREST : GL_LINEAR);
    context.stale.target = context.stale.area = true;
    context.worked = true;
    if (eglSwapBuffers(core->target.display, surface))
        return PresentResult::Presented;
    return eglGetError() == EGL_CONTEXT_LOST ? PresentResult::DeviceLost : PresentResult::Failed;
}

PresentResult SwapChain::present(Context& immediate)
{
    Impl& d = *_impl;
    Context::Impl& context = immediate.impl();
    const Context::Impl::Access access = context.enter();
    if (!access)
        return PresentResult::Failed;
    PresentResult result = PresentResult::Failed;
    if (d.core->makeCurrent(context.handle, d.surface))
        result = d.swap(context);
    // Away from the window again: the host may close it at any moment.
    d.core->makeCurrent(context.handle);
    if (result == PresentResult::Failed && !d.lossTold)
        d.core->fail("failed to present; the window may be gone");
    d.lossTold = result != PresentResult::Presented;
    return result;
}

SwapChainPtr Device::createSwapChain(NativeWindow window, std::uint32_t width, std::uint32_t height)
{
    const std::optional<NativeWindowInfo> info =
        _core->target.windows ? queryWindow(window) : std::optional<NativeWindowInfo>{};
    if (!info) {
        _core->fail(_core->target.windows ? "no such window" : "no display server for windows");
        return nullptr;
    }
    auto impl = std::make_unique<SwapChain::Impl>();
    impl->core = _core;
    impl->backBuffer = createTexture({width, height, Format::R8G8B8A8_UNORM, Usage::Default, true});
    if (!impl->backBuffer)
        return nullptr;
    const EGLConfig config = windowConfig(_core->target.display, info->visual);
    if (config != EGL_NO_CONFIG_KHR)
        impl->surface =
            eglCreateWindowSurface(_core->target.display, config, static_cast<EGLNativeWindowType>(window), nullptr);
    if (impl->surface == EGL_NO_SURFACE) {
        _core->fail("failed to make a surface of the window: " + eglErrorText());
        return nullptr;
    }
    return std::make_unique<SwapChain>(std::move(impl));
}

} // namespace tavlo::graphics
