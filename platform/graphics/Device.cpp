#include "graphics/Device.h"

#include "graphics/gl/ContextImpl.h"

#include <algorithm>
#include <cstring>

namespace tavlo::graphics {

namespace {

ContextPtr makeContext(const std::shared_ptr<DeviceCore>& core, bool immediate)
{
    auto impl = std::make_unique<Context::Impl>(core);
    impl->handle = core->createContext();
    if (impl->handle == EGL_NO_CONTEXT) {
        core->fail("failed to eglCreateContext: " + eglErrorText());
        return nullptr;
    }
    impl->immediate = immediate;
    impl->timeline = std::make_shared<Timeline>(core->target.display);
    return std::make_shared<Context>(std::move(impl));
}

FormatSupport needs(const TextureDesc& desc)
{
    FormatSupport wanted = FormatSupport::Texture2D;
    if (desc.renderTarget)
        wanted |= desc.format == Format::D24_UNORM_S8_UINT ? FormatSupport::DepthStencil : FormatSupport::RenderTarget;
    if (desc.usage == Usage::Staging)
        wanted |= FormatSupport::ReadBack;
    return wanted;
}

std::string describe(const TextureDesc& desc)
{
    return std::string(formatName(desc.format)) + " " + std::to_string(desc.width) + " x " +
           std::to_string(desc.height);
}

// Empty when the description is one that the device can make.
std::string faultOf(const DeviceCore& core, const TextureDesc& desc, const void* data, std::uint32_t rowPitch)
{
    if (desc.width == 0 || desc.height == 0)
        return "an empty size";
    if (desc.width > core.maxTextureSize || desc.height > core.maxTextureSize ||
        formatRows(desc.format, desc.height) > core.maxTextureSize)
        return "larger than the device can hold";
    if (!supports(core.support(desc.format), needs(desc)))
        return "the device cannot use the format so";
    if (desc.usage != Usage::Default && (desc.renderTarget || data))
        return "only a default texture is drawn into or made with pixels";
    if (data && rowPitch < desc.width * formatBytes(desc.format))
        return "rows shorter than the picture";
    return {};
}

// Zeros where nothing is given: what a texture holds never depends on who used the memory before.
bool fillFirst(const TexturePtr& texture, const void* data, std::uint32_t rowPitch)
{
    const Texture::Impl& t = texture->impl();
    if (t.desc.format == Format::D24_UNORM_S8_UINT)
        return true; // cleared before each use
    std::vector<std::byte> zeros;
    const auto* rows = static_cast<const std::byte*>(data);
    if (!rows) {
        rowPitch = t.desc.width * t.row.bytes;
        zeros.resize(rowPitch);
        rows = zeros.data();
    }
    glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
    glBindTexture(GL_TEXTURE_2D, t.front.name);
    for (std::uint32_t row = 0; row < t.rows(); ++row)
        glTexSubImage2D(GL_TEXTURE_2D, 0, 0, static_cast<GLint>(row), static_cast<GLsizei>(t.desc.width), 1,
                        t.row.transfer, t.row.type, data ? rows + std::size_t{row} * rowPitch : rows);
    return true;
}

} // namespace

DevicePtr Device::create(const DeviceOptions& options)
{
    std::shared_ptr<DeviceCore> core = DeviceCore::open(options);
    if (!core)
        return nullptr;
    DevicePtr device(new Device(core));
    device->_immediate = makeContext(core, true);
    return device->_immediate ? device : nullptr;
}

Device::Device(std::shared_ptr<DeviceCore> core) : _core(std::move(core)) {}
Device::~Device() = default;

const Adapter& Device::adapter() const { return _core->adapter; }
bool Device::hasDisplay() const { return _core->target.windows; }
const std::string& Device::driverIdentity() const { return _core->driverIdentity; }
FormatSupport Device::formatSupport(Format format) const { return _core->support(format); }
std::uint32_t Device::maxTextureSize() const { return _core->maxTextureSize; }
std::string Device::lastMessage() const { return _core->lastMessage(); }
const ContextPtr& Device::immediateContext() const { return _immediate; }
ContextPtr Device::createDeferredContext() { return makeContext(_core, false); }

TexturePtr Device::createTexture(const TextureDesc& desc, const void* data, std::uint32_t rowPitch)
{
    if (const std::string fault = faultOf(*_core, desc, data, rowPitch); !fault.empty()) {
        _core->fail("failed to create texture " + describe(desc) + ": " + fault);
        return nullptr;
    }
    const FormatRow& row = *formatRow(desc.format);
    auto impl = std::make_unique<Texture::Impl>(_core, desc, row);
    if (desc.usage == Usage::Dynamic) // gets its pixels when it is first written
        return std::make_shared<Texture>(std::move(impl));

    const CurrentContext current(*_core);
    if (!current)
        return nullptr;
    if (desc.usage == Usage::Staging)
        impl->store = createPixelBuffer(mappedBytes(row, desc.width, desc.height), PixelDirection::FromDevice,
                                        _core->bufferMemory);
    else
        impl->front = impl->makePicture();
    if (impl->front.name == 0 && impl->store.capacity == 0) {
        _core->fail("failed to create texture " + describe(desc) + ": out of memory");
        return nullptr;
    }
    auto texture = std::make_shared<Texture>(std::move(impl));
    if (desc.usage == Usage::Default)
        fillFirst(texture, data, rowPitch);
    return texture;
}

BufferPtr Device::createBuffer(const BufferDesc& desc, std::span<const std::byte> data)
{
    if (desc.size == 0 || (data.size() != desc.size && !(desc.dynamic && data.empty()))) {
        _core->fail("failed to create a buffer of " + std::to_string(desc.size) + " bytes from " +
                    std::to_string(data.size()));
        return nullptr;
    }
    const CurrentContext current(*_core);
    if (!current)
        return nullptr;
    auto impl = std::make_unique<Buffer::Impl>();
    impl->core = _core;
    impl->desc = desc;
    glGenBuffers(1, &impl->name);
    glBindBuffer(GL_COPY_WRITE_BUFFER, impl->name);
    glBufferData(GL_COPY_WRITE_BUFFER, static_cast<GLsizeiptr>(desc.size), data.empty() ? nullptr : data.data(),
                 desc.dynamic ? GL_DYNAMIC_DRAW : GL_STATIC_DRAW);
    return std::make_shared<Buffer>(std::move(impl));
}

} // namespace tavlo::graphics
