#include "graphics/Context.h"

#include "graphics/gl/ContextImpl.h"

#include <cassert>

namespace tavlo::graphics {

namespace {

GLenum glFactor(BlendFactor factor)
{
    constexpr GLenum names[] = {GL_ZERO,      GL_ONE,
                                GL_SRC_COLOR, GL_ONE_MINUS_SRC_COLOR,
                                GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA,
                                GL_DST_COLOR, GL_ONE_MINUS_DST_COLOR,
                                GL_DST_ALPHA, GL_ONE_MINUS_DST_ALPHA};
    return names[static_cast<std::size_t>(factor)];
}

GLenum glEquation(BlendOp op)
{
    constexpr GLenum names[] = {GL_FUNC_ADD, GL_FUNC_SUBTRACT, GL_FUNC_REVERSE_SUBTRACT, GL_MIN, GL_MAX};
    return names[static_cast<std::size_t>(op)];
}

GLenum glTopology(Topology topology)
{
    constexpr GLenum names[] = {GL_TRIANGLES, GL_TRIANGLE_STRIP, GL_LINES, GL_LINE_STRIP, GL_POINTS};
    return names[static_cast<std::size_t>(topology)];
}

const void* bufferOffset(std::size_t offset)
{
    return reinterpret_cast<const void*>(offset); // GL takes offsets into buffers as pointers
}

void toggle(GLenum what, bool on) { on ? glEnable(what) : glDisable(what); }

} // namespace

void Context::setRenderTarget(TexturePtr color, TexturePtr depth)
{
    _impl->settings.color = std::move(color);
    _impl->settings.depth = std::move(depth);
    _impl->stale.target = true;
}

const TexturePtr& Context::renderTarget() const { return _impl->settings.color; }
const TexturePtr& Context::depthTarget() const { return _impl->settings.depth; }

void Context::setViewport(const Viewport& viewport)
{
    _impl->settings.viewport = viewport;
    _impl->stale.area = true;
}

const Viewport& Context::viewport() const { return _impl->settings.viewport; }

void Context::setScissor(const std::optional<Viewport>& area)
{
    _impl->settings.scissor = area;
    _impl->stale.area = true;
}

void Context::setBlendState(const BlendState& state)
{
    if (state == _impl->settings.blend)
        return;
    _impl->settings.blend = state;
    _impl->stale.blend = true;
}

void Context::setDepthState(const DepthState& state)
{
    if (state == _impl->settings.depthState)
        return;
    _impl->settings.depthState = state;
    _impl->stale.depth = true;
}

void Context::setProgram(ProgramPtr program)
{
    _impl->settings.program = std::move(program);
    _impl->stale.program = true;
}

void Context::setTexture(int unit, TexturePtr texture, Sampler sampler)
{
    assert(unit >= 0 && unit < textureUnits);
    if (unit < 0 || unit >= textureUnits)
        return;
    _impl->settings.textures[static_cast<std::size_t>(unit)] = {std::move(texture), sampler};
    _impl->stale.textures = true;
}

void Context::setInputLayout(std::shared_ptr<const InputLayout> layout)
{
    _impl->settings.layout = std::move(layout);
    _impl->stale.vertices = true;
}

const std::shared_ptr<const InputLayout>& Context::inputLayout() const { return _impl->settings.layout; }

void Context::setVertexBuffer(BufferPtr buffer, std::uint32_t stride, std::uint32_t offset)
{
    _impl->settings.vertices = std::move(buffer);
    _impl->settings.vertexStride = stride;
    _impl->settings.vertexOffset = offset;
    _impl->stale.vertices = true;
}

void Context::setIndexBuffer(BufferPtr buffer)
{
    _impl->settings.indices = std::move(buffer);
    _impl->stale.vertices = true;
}

void Context::setTopology(Topology topology) { _impl->settings.topology = topology; }

bool Context::setUniform(Program& program, const Uniform& uniform, std::span<const std::byte> values)
{
    Impl& d = *_impl;
    const Impl::Access access = d.enter();
    if (values.size() != std::size_t{uniformBytes(uniform.type)} * uniform.count || !access)
        return false;
    d.useProgram(program.impl().name);
    const auto count = static_cast<GLsizei>(uniform.count);
    const auto* floats = reinterpret_cast<const GLfloat*>(values.data());
    const auto* ints = reinterpret_cast<const GLint*>(values.data());
    switch (uniform.type) {
    case UniformType::Float:
        glUniform1fv(uniform.location, count, floats);
        break;
    case UniformType::Vec2:
        glUniform2fv(uniform.location, count, floats);
        break;
    case UniformType::Vec3:
        glUniform3fv(uniform.location, count, floats);
        break;
    case UniformType::Vec4:
        glUniform4fv(uniform.location, count, floats);
        break;
    case UniformType::Int:
        glUniform1iv(uniform.location, count, ints);
        break;
    case UniformType::IVec2:
        glUniform2iv(uniform.location, count, ints);
        break;
    case UniformType::IVec3:
        glUniform3iv(uniform.location, count, ints);
        break;
    case UniformType::IVec4:
        glUniform4iv(uniform.location, count, ints);
        break;
    case UniformType::Mat4:
        glUniformMatrix4fv(uniform.location, count, GL_FALSE, floats);
        break;
    case UniformType::Texture:
        return false; // its unit is fixed
    }
    return true;
}

bool Context::draw(std::uint32_t vertexCount, std::uint32_t firstVertex)
{
    Impl& d = *_impl;
    const Impl::Access access = d.enter();
    if (!access || !d.prepareDraw())
        return false;
    glDrawArrays(glTopology(d.settings.topology), static_cast<GLint>(firstVertex), static_cast<GLsizei>(vertexCount));
    d.worked = true;
    return true;
}

bool Context::drawIndexed(std::uint32_t indexCount, std::uint32_t firstIndex)
{
    Impl& d = *_impl;
    if (!d.settings.indices || (std::size_t{firstIndex} + indexCount) * 2 > d.settings.indices->desc().size) {
        d.core->fail("drawIndexed beyond its index buffer");
        return false;
    }
    const Impl::Access access = d.enter();
    if (!access || !d.prepareDraw())
        return false;
    glDrawElements(glTopology(d.settings.topology), static_cast<GLsizei>(indexCount), GL_UNSIGNED_SHORT,
                   bufferOffset(std::size_t{firstIndex} * 2));
    d.worked = true;
    return true;
}

bool Context::clearRenderTarget(const TexturePtr& target, const Rgba& color)
{
    Impl& d = *_impl;
    const Impl::Access access = d.enter();
    if (!target || !target->desc().renderTarget || !access) {
        d.core->fail("clearRenderTarget of what is no render target");
        return false;
    }
    const GLuint frame = d.frameFor(target, nullptr);
    if (frame == 0)
        return false;
    glBindFramebuffer(GL_FRAMEBUFFER, frame);
    glDisable(GL_SCISSOR_TEST);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glClearBufferfv(GL_COLOR, 0, color.data());
    d.stale.target = d.stale.area = d.stale.blend = true;
    d.worked = true;
    return true;
}

bool Context::clearDepth(const TexturePtr& target, float depth, std::uint8_t stencil)
{
    Impl& d = *_impl;
    const Impl::Access access = d.enter();
    if (!target || !target->desc().renderTarget || target->desc().format != Format::D24_UNORM_S8_UINT || !access) {
        d.core->fail("clearDepth of what is no depth target");
        return false;
    }
    const GLuint frame = d.frameFor(nullptr, target);
    if (frame == 0)
        return false;
    glBindFramebuffer(GL_FRAMEBUFFER, frame);
    glDisable(GL_SCISSOR_TEST);
    glDepthMask(GL_TRUE);
    glClearBufferfi(GL_DEPTH_STENCIL, 0, depth, stencil);
    d.stale.target = d.stale.area = d.stale.depth = true;
    d.worked = true;
    return true;
}

bool Context::Impl::prepareDraw()
{
    if (!settings.program || !settings.color || !settings.vertices || !settings.layout) {
        core->fail("a draw without program, target, vertices or layout");
        return false;
    }
    if (!applyTarget() || !applyVertices())
        return false;
    useProgram(settings.program->impl().name);
    if (stale.area)
        applyArea();
    if (stale.blend)
        applyBlend();
    if (stale.depth)
        applyDepth();
    if (stale.textures)
        applyTextures();
    stale = {false, false, false, false, false, false, false};
    return true;
}

void Context::Impl::useProgram(GLuint name)
{
    if (usedProgram == name)
        return;
    glUseProgram(name);
    usedProgram = name;
}

bool Context::Impl::applyTarget()
{
    if (!stale.target)
        return true;
    if (!settings.color->desc().renderTarget || (settings.depth && !settings.depth->desc().renderTarget)) {
        core->fail("a draw into what is no render target");
        return false;
    }
    const GLuint frame = frameFor(settings.color, settings.depth);
    glBindFramebuffer(GL_FRAMEBUFFER, frame);
    return frame != 0;
}

void Context::Impl::applyArea()
{
    const Viewport& view = settings.viewport;
    glViewport(view.x, view.y, view.width, view.height);
    toggle(GL_SCISSOR_TEST, settings.scissor.has_value());
    if (settings.scissor)
        glScissor(settings.scissor->x, settings.scissor->y, settings.scissor->width, settings.scissor->height);
}

void Context::Impl::applyBlend()
{
    const BlendState& blend = settings.blend;
    toggle(GL_BLEND, blend.enabled);
    glBlendFuncSeparate(glFactor(blend.color.source), glFactor(blend.color.target), glFactor(blend.alpha.source),
                        glFactor(blend.alpha.target));
    glBlendEquationSeparate(glEquation(blend.color.op), glEquation(blend.alpha.op));
    glColorMask((blend.writeMask & 1) != 0, (blend.writeMask & 2) != 0, (blend.writeMask & 4) != 0,
                (blend.writeMask & 8) != 0);
}

void Context::Impl::applyDepth()
{
    // GL writes depth only where it tests it.
    toggle(GL_DEPTH_TEST, settings.depthState.test || settings.depthState.write);
    glDepthFunc(settings.depthState.test ? GL_LEQUAL : GL_ALWAYS);
    glDepthMask(settings.depthState.write ? GL_TRUE : GL_FALSE);
}

void Context::Impl::applyTextures()
{
    for (const TextureBinding& binding : settings.textures)
        if (binding.texture)
            settle(binding.texture->impl());
    for (std::size_t unit = 0; unit < settings.textures.size(); ++unit) {
        const TextureBinding& binding = settings.textures[unit];
        Picture picture{core->zeroTexture, 0, {}};
        if (binding.texture) {
            if (binding.texture->desc().usage == Usage::Dynamic && !immediate)
                core->fail("a dynamic texture is drawn by the immediate context alone");
            else if (Picture shown = binding.texture->impl().shown(); shown.name != 0)
                picture = std::move(shown);
        }
        BoundTexture& known = bound[unit];
        if (known.serial == picture.serial && known.sampler == binding.sampler && known.valid)
            continue;
        known = {picture.serial, binding.sampler, true};
        glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
        glBindTexture(GL_TEXTURE_2D, picture.name);
        glBindSampler(static_cast<GLuint>(unit), core->samplers[static_cast<std::size_t>(binding.sampler)]);
    }
    glActiveTexture(scratchUnit);
}

bool Context::Impl::applyVertices()
{
    if (!stale.vertices)
        return true;
    glBindVertexArray(vertexArray);
    for (GLuint input = 0; input < semanticCount; ++input)
        glDisableVertexAttribArray(input);
    glBindBuffer(GL_ARRAY_BUFFER, settings.vertices->impl().name);
    for (const InputElement& element : *settings.layout) {
        const FormatRow* row = formatRow(element.format);
        if (!row || row->vertexComponents == 0) {
            core->fail("no vertex format: " + std::string(formatName(element.format)));
            return false;
        }
        const auto input = static_cast<GLuint>(element.semantic);
        const bool normalized = row->type != GL_FLOAT && row->type != GL_HALF_FLOAT;
        glEnableVertexAttribArray(input);
        glVertexAttribPointer(input, row->vertexComponents, row->type, normalized ? GL_TRUE : GL_FALSE,
                              static_cast<GLsizei>(settings.vertexStride),
                              bufferOffset(std::size_t{settings.vertexOffset} + element.offset));
    }
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, settings.indices ? settings.indices->impl().name : 0);
    return true;
}

} // namespace tavlo::graphics
