#include "graphics/Texture.h"

#include "graphics/gl/TextureImpl.h"

#include <algorithm>

namespace tavlo::graphics {

namespace {

constexpr int usualPictures = 3;
constexpr int mostPictures = 8; // beyond that nobody flushes any more

} // namespace

Texture::Impl::Impl(std::shared_ptr<DeviceCore> deviceCore, const TextureDesc& textureDesc, const FormatRow& formatRow)
    : core(std::move(deviceCore)), desc(textureDesc), row(formatRow)
{
    if (desc.usage == Usage::Dynamic)
        spares.reserve(mostPictures);
}

Texture::Impl::~Impl()
{
    core->bury(DeviceCore::Grave::Texture, front.name);
    for (const Picture& picture : spares)
        core->bury(DeviceCore::Grave::Texture, picture.name);
    core->bury(DeviceCore::Grave::Buffer, upload.name);
    core->bury(DeviceCore::Grave::Buffer, store.name);
}

Picture Texture::Impl::makePicture() const
{
    while (glGetError() != GL_NO_ERROR) {
    }
    Picture picture{0, core->nextSerial(), {}};
    glGenTextures(1, &picture.name);
    glBindTexture(GL_TEXTURE_2D, picture.name);
    allocateStorage(row, desc.width, desc.height);
    glBindTexture(GL_TEXTURE_2D, 0);
    if (glGetError() != GL_NO_ERROR) {
        glDeleteTextures(1, &picture.name);
        picture.name = 0;
    }
    return picture;
}

std::optional<Picture> Texture::Impl::takeSpare(const Timeline* writer)
{
    const std::lock_guard guard(lock);
    const auto take = [this](std::vector<Picture>::iterator place) {
        Picture picture = std::move(*place);
        spares.erase(place);
        return picture;
    };
    const auto free = std::ranges::find_if(
        spares, [writer](const Picture& picture) { return picture.lastUse.isOf(writer) || picture.lastUse.passed(); });
    if (free != spares.end())
        return take(free);

    if (pictureCount >= usualPictures) {
        const auto waitable = std::ranges::find_if(
            spares, [](const Picture& picture) { return picture.lastUse.waitOnGraphicsProcessor(); });
        if (waitable != spares.end())
            return take(waitable);
    }
    if (pictureCount >= mostPictures)
        return std::nullopt;
    Picture made = makePicture();
    if (made.name == 0)
        return std::nullopt;
    ++pictureCount;
    return made;
}

void Texture::Impl::show(Picture picture, Fence drawnUntil)
{
    const std::lock_guard guard(lock);
    std::swap(front, picture);
    if (picture.name == 0)
        return;
    picture.lastUse = std::move(drawnUntil);
    spares.push_back(std::move(picture));
}

void Texture::Impl::giveSpare(Picture picture)
{
    const std::lock_guard guard(lock);
    spares.push_back(std::move(picture));
}

Picture Texture::Impl::shown()
{
    if (desc.usage != Usage::Dynamic)
        return front;
    const std::lock_guard guard(lock);
    return front;
}

Texture::Texture(std::unique_ptr<Impl> impl) : _impl(std::move(impl)) {}
Texture::~Texture() = default;

const TextureDesc& Texture::desc() const { return _impl->desc; }

std::optional<Mapped> Texture::mapRead(std::chrono::milliseconds timeout)
{
    Impl& d = *_impl;
    if (d.desc.usage != Usage::Staging || !d.filled) {
        d.core->fail("only a staging texture that was copied to can be read");
        return std::nullopt;
    }
    if (d.reading.exchange(true)) {
        d.core->fail("the staging texture is mapped already");
        return std::nullopt;
    }
    std::byte* memory = nullptr;
    if (!d.arrival.wait(timeout)) {
        d.core->fail("the read-back did not arrive in time");
    } else if (d.store.memory) {
        memory = d.store.memory;
    } else if (const CurrentContext current(*d.core); current) {
        glBindBuffer(GL_PIXEL_PACK_BUFFER, d.store.name);
        memory = static_cast<std::byte*>(
            glMapBufferRange(GL_PIXEL_PACK_BUFFER, 0, static_cast<GLsizeiptr>(d.store.capacity), GL_MAP_READ_BIT));
        glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
        if (!memory)
            d.core->fail("failed to glMapBufferRange");
    }
    if (!memory) {
        d.reading.store(false);
        return std::nullopt;
    }
    return Mapped{memory, mappedPitch(d.row, d.desc.width)};
}

void Texture::unmapRead()
{
    Impl& d = *_impl;
    if (!d.reading.load())
        return;
    if (!d.store.memory) {
        if (const CurrentContext current(*d.core); current) {
            glBindBuffer(GL_PIXEL_PACK_BUFFER, d.store.name);
            glUnmapBuffer(GL_PIXEL_PACK_BUFFER);
            glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
        }
    }
    d.reading.store(false);
}

} // namespace tavlo::graphics
