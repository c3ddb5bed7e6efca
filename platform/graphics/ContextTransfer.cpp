#include "graphics/Context.h"

#include "graphics/gl/ContextImpl.h"

#include <algorithm>
#include <utility>

namespace tavlo::graphics {

namespace {

// The pitch of rows in memory, told to GL in texels.
void setUnpackPitch(const FormatRow& row, std::uint32_t pitch)
{
    glPixelStorei(GL_UNPACK_ROW_LENGTH, static_cast<GLint>(pitch / row.bytes));
}

void uploadRows(const FormatRow& row, const Box& box, const void* rows)
{
    glTexSubImage2D(GL_TEXTURE_2D, 0, static_cast<GLint>(box.x), static_cast<GLint>(box.y),
                    static_cast<GLsizei>(box.width), static_cast<GLsizei>(box.height), row.transfer, row.type, rows);
}

bool fits(const Texture::Impl& texture, std::uint32_t x, std::uint32_t y, const Box& box)
{
    return box.width <= texture.desc.width && x <= texture.desc.width - box.width && box.height <= texture.rows() &&
           y <= texture.rows() - box.height;
}

std::byte* mapBuffer(GLenum target, std::size_t size, GLbitfield access)
{
    return static_cast<std::byte*>(glMapBufferRange(target, 0, static_cast<GLsizeiptr>(size), access));
}

} // namespace

std::optional<Mapped> Context::map(Texture& texture, MapMode mode)
{
    Impl& d = *_impl;
    Texture::Impl& t = texture.impl();
    if (mode == MapMode::Read)
        return texture.mapRead();
    if (t.desc.usage != Usage::Dynamic || mode != MapMode::WriteDiscard) {
        d.core->fail("failed to Map: only dynamic textures can be written, with discard");
        return std::nullopt;
    }
    if (t.upload.capacity != 0) {
        d.core->fail("failed to Map: the texture is mapped already");
        return std::nullopt;
    }
    const std::size_t bytes = mappedBytes(t.row, t.desc.width, t.desc.height);
    PixelBuffer buffer = d.core->uploads->isPlain() ? d.core->uploads->take(bytes) : d.mapUpload(bytes);
    if (!buffer.memory) {
        d.core->fail("failed to Map: no memory");
        return std::nullopt;
    }
    std::byte* const memory = buffer.memory;
    t.upload = std::move(buffer);
    return Mapped{memory, mappedPitch(t.row, t.desc.width)};
}

/// A buffer of GL whose memory can be written; without memory on failure.
PixelBuffer Context::Impl::mapUpload(std::size_t bytes)
{
    const Access access = enter();
    if (!access)
        return {};
    PixelBuffer buffer = core->uploads->take(bytes);
    if (buffer.name == 0 || buffer.memory)
        return buffer;
    glBindBuffer(GL_PIXEL_UNPACK_BUFFER, buffer.name);
    buffer.memory = mapBuffer(GL_PIXEL_UNPACK_BUFFER, buffer.capacity,
                              GL_MAP_WRITE_BIT | GL_MAP_INVALIDATE_BUFFER_BIT | GL_MAP_UNSYNCHRONIZED_BIT);
    glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
    if (!buffer.memory)
        core->bury(DeviceCore::Grave::Buffer, buffer.name);
    return buffer;
}

void Context::unmap(const TexturePtr& texture)
{
    Impl& d = *_impl;
    Texture::Impl& t = texture->impl();
    if (t.desc.usage == Usage::Staging) {
        texture->unmapRead();
        return;
    }
    if (t.upload.capacity == 0) {
        d.core->fail("failed to Unmap: the texture is not mapped");
        return;
    }
    PixelBuffer rows = std::exchange(t.upload, {});
    if (rows.plain && !d.immediate) {
        d.record({texture, {}, std::move(rows)});
        return;
    }
    if (rows.plain) {
        d.take(t, std::move(rows));
        return;
    }
    const Impl::Access access = d.enter();
    std::optional<Picture> picture = access ? d.upload(t, std::move(rows)) : std::nullopt;
    if (!picture)
        return;
    if (d.immediate) {
        t.show(std::move(*picture), Fence(d.timeline, d.timeline->upcoming()));
    } else {
        d.record({texture, std::move(*picture), {}});
        d.submit(); // a picture that no list ever takes must give its buffer back too
    }
}

/// Sends rows into a picture of the texture; the buffer goes back to the others. None when there is no picture.
std::optional<Picture> Context::Impl::upload(Texture::Impl& texture, PixelBuffer rows)
{
    const bool plain = rows.plain != nullptr;
    glBindBuffer(GL_PIXEL_UNPACK_BUFFER, rows.name);
    if (rows.name != 0 && core->bufferMemory == PixelMemory::Mapped) {
        glUnmapBuffer(GL_PIXEL_UNPACK_BUFFER);
        rows.memory = nullptr;
    }
    // Memory is copied at once: a picture that is still drawn would have to be waited for, order does not help.
    std::optional<Picture> picture = texture.takeSpare(plain ? nullptr : timeline.get());
    if (picture) {
        glBindTexture(GL_TEXTURE_2D, picture->name);
        setUnpackPitch(texture.row, mappedPitch(texture.row, texture.desc.width));
        uploadRows(texture.row, {0, 0, texture.desc.width, texture.rows()}, plain ? rows.memory : nullptr);
        picture->lastUse = Fence(timeline, timeline->upcoming());
        stale.textures = true;
        worked = true;
    } else {
        core->fail("failed to Unmap: every picture of the texture is still drawn; is the context flushed?");
    }
    glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
    if (!plain)
        rows.lastUse = Fence(timeline, timeline->upcoming());
    core->uploads->give(std::move(rows));
    return picture;
}

/// Immediate: the rows become the texture's contents. They are sent when something is drawn with them: what is only
/// copied goes from memory to where it is wanted.
void Context::Impl::take(Texture::Impl& texture, PixelBuffer rows)
{
    std::swap(texture.unsent, rows);
    if (rows.capacity != 0)
        core->uploads->give(std::move(rows));
    stale.textures = true;
}

void Context::Impl::settle(Texture::Impl& texture)
{
    if (!immediate || texture.unsent.capacity == 0)
        return;
    if (std::optional<Picture> picture = upload(texture, std::exchange(texture.unsent, {})))
        texture.show(std::move(*picture), Fence(timeline, timeline->upcoming()));
}

/// Deferred: puts the picture into the next list, in the place of an older one of the same texture.
void Context::Impl::record(WrittenPicture written)
{
    const auto same = std::ranges::find(pending, written.texture, &WrittenPicture::texture);
    if (same == pending.end()) {
        pending.push_back(std::move(written));
    } else {
        std::swap(*same, written);
        written.drop();
    }
}

std::byte* Context::map(Buffer& buffer, MapMode mode)
{
    Impl& d = *_impl;
    Buffer::Impl& b = buffer.impl();
    if (!b.desc.dynamic || b.mapped || mode == MapMode::Read) {
        d.core->fail("failed to Map: only an unmapped dynamic buffer can be written");
        return nullptr;
    }
    const Impl::Access access = d.enter();
    if (!access)
        return nullptr;
    const GLbitfield how =
        mode == MapMode::WriteDiscard ? GL_MAP_INVALIDATE_BUFFER_BIT : GLbitfield{GL_MAP_UNSYNCHRONIZED_BIT};
    glBindBuffer(GL_COPY_WRITE_BUFFER, b.name);
    std::byte* memory = mapBuffer(GL_COPY_WRITE_BUFFER, b.desc.size, GL_MAP_WRITE_BIT | how);
    if (!memory)
        d.core->fail("failed to Map: no memory");
    b.mapped = memory != nullptr;
    return memory;
}

void Context::unmap(Buffer& buffer)
{
    Impl& d = *_impl;
    const Impl::Access access = d.enter();
    if (!buffer.impl().mapped || !access)
        return;
    glBindBuffer(GL_COPY_WRITE_BUFFER, buffer.impl().name);
    glUnmapBuffer(GL_COPY_WRITE_BUFFER);
    buffer.impl().mapped = false;
    d.worked = true;
}

bool Context::updateSubresource(Texture& texture, const Box& box, const void* data, std::uint32_t rowPitch)
{
    Impl& d = *_impl;
    const Texture::Impl& t = texture.impl();
    if (t.desc.usage != Usage::Default || !data || !fits(t, box.x, box.y, box) ||
        std::size_t{rowPitch} < std::size_t{box.width} * t.row.bytes) {
        d.core->fail("updateSubresource: no default texture, or a box or pitch that does not fit");
        return false;
    }
    if (box.width == 0 || box.height == 0)
        return true;
    const Impl::Access access = d.enter();
    if (!access)
        return false;
    glBindTexture(GL_TEXTURE_2D, t.front.name);
    if (rowPitch % t.row.bytes == 0) {
        setUnpackPitch(t.row, rowPitch);
        uploadRows(t.row, box, data);
    } else { // GL knows no pitch of half a texel
        setUnpackPitch(t.row, 0);
        const auto* bytes = static_cast<const std::byte*>(data);
        for (std::uint32_t row = 0; row < box.height; ++row)
            uploadRows(t.row, {box.x, box.y + row, box.width, 1}, bytes + std::size_t{row} * rowPitch);
    }
    d.stale.textures = true;
    d.worked = true;
    return true;
}

bool Context::copySubresourceRegion(Texture& target, std::uint32_t x, std::uint32_t y, const TexturePtr& source,
                                    const Box& box)
{
    Impl& d = *_impl;
    if (!source || source.get() == &target || source->desc().usage == Usage::Staging ||
        target.desc().usage == Usage::Dynamic || source->desc().format != target.desc().format ||
        !fits(source->impl(), box.x, box.y, box) || !fits(target.impl(), x, y, box)) {
        d.core->fail("copySubresourceRegion: textures of other kinds, or a box that does not fit");
        return false;
    }
    if (source->desc().usage == Usage::Dynamic && !d.immediate) {
        d.core->fail("a dynamic texture is copied by the immediate context alone");
        return false;
    }
    if (box.width == 0 || box.height == 0)
        return true;
    const Impl::Access access = d.enter();
    if (!access)
        return false;
    const bool whole = box.height == source->impl().rows() && box.width == source->desc().width;
    if (whole && target.desc().usage == Usage::Default && d.sendInto(target.impl(), x, y, source->impl()))
        return true;
    d.settle(source->impl());
    return target.desc().usage == Usage::Staging ? d.readInto(target.impl(), x, y, source, box)
                                                 : d.blitInto(target, x, y, source, box);
}

bool Context::copyResource(Texture& target, const TexturePtr& source)
{
    if (!source)
        return false;
    return copySubresourceRegion(target, 0, 0, source, {0, 0, source->desc().width, source->impl().rows()});
}

bool Context::Impl::readInto(Texture::Impl& target, std::uint32_t x, std::uint32_t y, const TexturePtr& source,
                             const Box& box)
{
    if (target.reading.load()) {
        core->fail("a copy to a staging texture that is being read");
        return false;
    }
    const GLuint frame = frameFor(source, nullptr);
    if (frame == 0)
        return false;
    const std::uint32_t pitch = mappedPitch(target.row, target.desc.width);
    const std::size_t offset = std::size_t{y} * pitch + std::size_t{x} * target.row.bytes;
    glBindFramebuffer(GL_FRAMEBUFFER, frame);
    glBindBuffer(GL_PIXEL_PACK_BUFFER, target.store.name);
    glPixelStorei(GL_PACK_ROW_LENGTH, static_cast<GLint>(pitch / target.row.bytes));
    glReadPixels(static_cast<GLint>(box.x), static_cast<GLint>(box.y), static_cast<GLsizei>(box.width),
                 static_cast<GLsizei>(box.height), target.row.transfer, target.row.type,
                 reinterpret_cast<void*>(offset)); // an offset into the buffer
    glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
    stale.target = true;
    worked = true;
    target.arrival = submit();
    target.filled = true;
    return true;
}

/// Rows that lie in memory yet, without a way over a picture of their own.
bool Context::Impl::sendInto(Texture::Impl& target, std::uint32_t x, std::uint32_t y, const Texture::Impl& source)
{
    if (!immediate || source.unsent.capacity == 0)
        return false;
    glBindTexture(GL_TEXTURE_2D, target.front.name);
    setUnpackPitch(source.row, mappedPitch(source.row, source.desc.width));
    uploadRows(source.row, {x, y, source.desc.width, source.rows()}, source.unsent.memory);
    stale.textures = true;
    worked = true;
    return true;
}

bool Context::Impl::blitInto(Texture& target, std::uint32_t x, std::uint32_t y, const TexturePtr& source,
                             const Box& box)
{
    const GLuint from = frameFor(source, nullptr);
    const GLuint to = frameFor(target.shared_from_this(), nullptr);
    if (from == 0 || to == 0)
        return false;
    const auto left = static_cast<GLint>(box.x), top = static_cast<GLint>(box.y);
    const auto width = static_cast<GLint>(box.width), height = static_cast<GLint>(box.height);
    const auto toLeft = static_cast<GLint>(x), toTop = static_cast<GLint>(y);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, from);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, to);
    glDisable(GL_SCISSOR_TEST);
    glBlitFramebuffer(left, top, left + width, top + height, toLeft, toTop, toLeft + width, toTop + height,
                      GL_COLOR_BUFFER_BIT, GL_NEAREST);
    stale.target = stale.area = true;
    worked = true;
    return true;
}

CommandListPtr Context::finishCommandList()
{
    Impl& d = *_impl;
    if (d.immediate) {
        d.core->fail("the immediate context has no command lists");
        return nullptr;
    }
    CommandListPtr list(d.core->takeCommandList().release());
    list->impl().core = d.core;
    list->impl().pictures.swap(d.pending);
    if (!d.started) // nothing of it is on the device yet
        return list;
    const Impl::Access access = d.enter();
    if (!access)
        return nullptr;
    list->impl().written = d.submit();
    return list;
}

bool Context::executeCommandList(CommandListPtr list)
{
    Impl& d = *_impl;
    if (!d.immediate || !list || list->impl().core != d.core) {
        d.core->fail("executeCommandList: not the immediate context, or a list of another device");
        return false;
    }
    const Impl::Access access = d.enter();
    if (!access || !list->impl().written.waitOnGraphicsProcessor())
        return false;
    for (WrittenPicture& written : list->impl().pictures) {
        Texture::Impl& t = written.texture->impl();
        if (written.rows.capacity != 0)
            d.take(t, std::move(written.rows));
        else
            t.show(std::move(written.picture), Fence(d.timeline, d.timeline->upcoming()));
    }
    list->impl().pictures.clear();
    d.stale.textures = true;
    d.worked = true;
    return true;
}

} // namespace tavlo::graphics
