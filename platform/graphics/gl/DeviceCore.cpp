#include "graphics/gl/DeviceCore.h"

#include "graphics/Device.h"
#include "graphics/Log.h"
#include "graphics/gl/DrawingThreads.h"
#include "graphics/gl/FormatProbe.h"

#include <algorithm>
#include <string_view>

namespace tavlo::graphics {

namespace {

struct OurContext
{
    EGLContext handle = EGL_NO_CONTEXT;
    const DeviceCore* core = nullptr;
};
thread_local OurContext currentHere;

bool hasGlExtension(std::string_view wanted)
{
    GLint count = 0;
    glGetIntegerv(GL_NUM_EXTENSIONS, &count);
    for (GLint i = 0; i < count; ++i) {
        if (wanted == reinterpret_cast<const char*>(glGetStringi(GL_EXTENSIONS, static_cast<GLuint>(i))))
            return true;
    }
    return false;
}

void GL_APIENTRY keepMessage(GLenum, GLenum type, GLuint, GLenum severity, GLsizei length, const GLchar* text,
                             const void* core)
{
    if (type != GL_DEBUG_TYPE_ERROR_KHR && severity != GL_DEBUG_SEVERITY_HIGH_KHR)
        return; // advice on speed is no message
    const std::string message = length < 0 ? std::string(text) : std::string(text, static_cast<std::size_t>(length));
    const_cast<DeviceCore*>(static_cast<const DeviceCore*>(core))->note(message); // GL hands it back as const
}

} // namespace

std::shared_ptr<DeviceCore> DeviceCore::open(const DeviceOptions& options)
{
    const std::optional<EglTarget> target = openTarget(options.adapter);
    if (!target)
        return nullptr;
    const std::shared_ptr<DeviceCore> core(new DeviceCore);
    core->target = *target;
    if (auto adapter = describeTarget(*target))
        core->adapter = std::move(*adapter);
    else
        return nullptr;
    core->adapter.id = std::max(options.adapter, 0);
    return core->start(options.transfer) ? core : nullptr;
}

bool DeviceCore::start(Transfer transfer)
{
    driverIdentity = adapter.vendor + " | " + adapter.name + " | " + adapter.driverVersion;
    _service = createEglContext(target.display, EGL_NO_CONFIG_KHR, EGL_NO_CONTEXT);
    if (_service == EGL_NO_CONTEXT) {
        fail("failed to eglCreateContext: " + eglErrorText());
        return false;
    }
    const CurrentContext current(*this);
    if (!current)
        return false;
    GLint size = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &size);
    maxTextureSize = static_cast<std::uint32_t>(size);
    const bool keeps = transfer != Transfer::MappedBuffers && hasGlExtension("GL_EXT_buffer_storage");
    bufferMemory = keeps ? PixelMemory::Kept : PixelMemory::Mapped;
    const bool plain = transfer == Transfer::Best && adapter.software;
    uploads = std::make_unique<PixelBufferPool>(plain ? PixelMemory::Plain : bufferMemory);
    probeFormats();
    makeSharedObjects();
    prepareContext();
    if (adapter.software)
        raiseDrawingThreads();
    return true;
}

DeviceCore::~DeviceCore()
{
    if (_service == EGL_NO_CONTEXT)
        return;
    {
        const CurrentContext current(*this);
        if (current && uploads) {
            deleteBuried();
            uploads->clear();
            glDeleteTextures(1, &zeroTexture);
            glDeleteSamplers(samplerCount, samplers.data());
        }
    }
    eglDestroyContext(target.display, _service);
}

void DeviceCore::fail(const std::string& text, std::source_location where)
{
    logFailure(text, where);
    note(text);
}

void DeviceCore::note(std::string text)
{
    const std::lock_guard guard(_messageLock);
    _message = std::move(text);
}

std::string DeviceCore::lastMessage() const
{
    const std::lock_guard guard(_messageLock);
    return _message;
}

DeviceCore::Turn DeviceCore::takeTurn() const
{
    static std::recursive_mutex softwareRenderer;
    return adapter.software ? Turn(softwareRenderer) : Turn();
}

bool DeviceCore::makeCurrent(EGLContext context, EGLSurface surface) const
{
    if (!eglMakeCurrent(target.display, surface, surface, context))
        return false;
    currentHere = {context, this};
    return true;
}

bool DeviceCore::isCurrentHere() const
{
    // Asks EGL too: a window toolkit may have made a context of its own current meanwhile.
    return currentHere.core == this && currentHere.handle != EGL_NO_CONTEXT &&
           currentHere.handle == eglGetCurrentContext();
}

EGLContext DeviceCore::createContext(EGLConfig config) const
{
    const Turn turn = takeTurn();
    return createEglContext(target.display, config, _service);
}

void DeviceCore::prepareContext()
{
    static const auto debugMessages =
        reinterpret_cast<PFNGLDEBUGMESSAGECALLBACKKHRPROC>(eglGetProcAddress("glDebugMessageCallbackKHR"));
    if (debugMessages && hasGlExtension("GL_KHR_debug")) {
        glEnable(GL_DEBUG_OUTPUT_KHR);
        debugMessages(&keepMessage, this);
    }
    glActiveTexture(scratchUnit);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1); // row pitches are always told in full
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glDisable(GL_DITHER);
}

void DeviceCore::probeFormats()
{
    const bool filtersFloat = hasGlExtension("GL_OES_texture_float_linear");
    for (const FormatRow& row : formatRows())
        _support.push_back(probeFormat(row, filtersFloat));
}

FormatSupport DeviceCore::support(Format format) const
{
    const FormatRow* row = formatRow(format);
    return row ? _support[static_cast<std::size_t>(row - formatRows().data())] : FormatSupport::None;
}

void DeviceCore::makeSharedObjects()
{
    constexpr std::array<std::uint8_t, 4> zero{};
    glGenTextures(1, &zeroTexture);
    glBindTexture(GL_TEXTURE_2D, zeroTexture);
    glTexStorage2D(GL_TEXTURE_2D, 1, GL_RGBA8, 1, 1);
    glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, zero.data());
    glBindTexture(GL_TEXTURE_2D, 0);

    constexpr std::array<std::array<GLint, 2>, samplerCount> kinds{
        {{GL_LINEAR, GL_CLAMP_TO_EDGE}, {GL_NEAREST, GL_CLAMP_TO_EDGE}, {GL_LINEAR, GL_REPEAT}}};
    glGenSamplers(samplerCount, samplers.data());
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        glSamplerParameteri(samplers[i], GL_TEXTURE_MIN_FILTER, kinds[i][0]);
        glSamplerParameteri(samplers[i], GL_TEXTURE_MAG_FILTER, kinds[i][0]);
        glSamplerParameteri(samplers[i], GL_TEXTURE_WRAP_S, kinds[i][1]);
        glSamplerParameteri(samplers[i], GL_TEXTURE_WRAP_T, kinds[i][1]);
    }
}

void DeviceCore::bury(Grave kind, GLuint name)
{
    if (name == 0)
        return;
    const std::lock_guard guard(_graveLock);
    _graves[static_cast<std::size_t>(kind)].push_back(name);
    _hasGraves.store(true);
    if (kind == Grave::Texture)
        _buriedTextures.fetch_add(1);
}

void DeviceCore::deleteBuried()
{
    if (!_hasGraves.load())
        return;
    const std::lock_guard guard(_graveLock);
    auto& [textures, buffers, programs] = _graves;
    glDeleteTextures(static_cast<GLsizei>(textures.size()), textures.data());
    glDeleteBuffers(static_cast<GLsizei>(buffers.size()), buffers.data());
    std::ranges::for_each(programs, glDeleteProgram);
    for (std::vector<GLuint>& grave : _graves)
        grave.clear();
    _hasGraves.store(false);
}

CurrentContext::CurrentContext(DeviceCore& core)
{
    _ready = core.isCurrentHere();
    if (!_ready)
        _borrowed.emplace(core);
    _turn = core.takeTurn();
    if (_ready)
        return;
    _ready = core.makeCurrent(core._service);
    if (!_ready)
        core.fail("failed to eglMakeCurrent: " + eglErrorText());
}

CurrentContext::~CurrentContext()
{
    if (_ready && _borrowed)
        glFinish();
}

} // namespace tavlo::graphics
