#include "scene/Renderer.h"

#include "graphics/Log.h"
#include "scene/Director.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace tavlo::scene {

using namespace graphics;

namespace {

constexpr std::size_t smallestBuffer = 4096; // bytes

constexpr BlendState over{true,
                          {BlendFactor::One, BlendFactor::InvSrcAlpha, BlendOp::Add},
                          {BlendFactor::One, BlendFactor::InvSrcAlpha, BlendOp::Add}};

BufferPtr makeBuffer(Device& device, BufferKind kind, std::size_t bytes)
{
    const auto size = static_cast<std::uint32_t>(std::bit_ceil(std::max(bytes, smallestBuffer)));
    return device.createBuffer({size, kind, true});
}

template <class Value>
void append(std::byte*& place, const std::vector<Value>& values)
{
    if (!values.empty())
        std::memcpy(place, values.data(), values.size() * sizeof(Value));
    place += values.size() * sizeof(Value);
}

Rgba rgba(const Color4F& color) { return {color.r, color.g, color.b, color.a}; }

// Pixels with y up, to the device's -1..1, whose lowest y is the target's first row.
std::array<float, 4> toClip(const RenderPass& pass)
{
    const float up = pass.isBottomRowFirst() ? 1.0F : -1.0F;
    return {2 / pass.size().width, up * 2 / pass.size().height, -1, -up};
}

void setUniform(Context& context, const SceneProgram& program, const Uniform* uniform,
                const std::array<float, 4>& values)
{
    if (uniform)
        context.setUniform(*program.program, *uniform, std::as_bytes(std::span(values)));
}

} // namespace

bool Renderer::prepare()
{
    const DevicePtr device = _director.device();
    if (device && (device == _device || device == _refusing))
        return device == _device;
    releaseResources();
    if (!device)
        return false;
    if (!_programs.create(*device, _director.dataCachePath())) {
        _programs.release();
        _refusing = device;
        return false;
    }
    _layout = std::make_shared<InputLayout>(InputLayout{
        {Semantic::Position, Format::R32G32_FLOAT, offsetof(Vertex, position)},
        {Semantic::TexCoord, Format::R32G32_FLOAT, offsetof(Vertex, uv)},
        {Semantic::Color, Format::R8G8B8A8_UNORM, offsetof(Vertex, color)},
    });
    _device = device;
    return true;
}

void Renderer::releaseResources()
{
    _programs.release();
    _namedStates.clear();
    _layout.reset();
    _vertices.reset();
    _indices.reset();
    _device.reset();
    _refusing.reset();
}

ProgramPtr Renderer::compile(std::string_view fragmentSource)
{
    return prepare() ? compileSceneProgram(*_device, fragmentSource, _director.dataCachePath()) : nullptr;
}

RefPtr<GLProgramState> Renderer::namedState(std::string_view name) const
{
    const auto found = std::ranges::find(_namedStates, name, &NamedState::name);
    return found == _namedStates.end() ? nullptr : found->state;
}

void Renderer::keepNamedState(std::string_view name, RefPtr<GLProgramState> state)
{
    _namedStates.push_back({std::string(name), std::move(state)});
}

void Renderer::endFrame()
{
    if (const ContextPtr context = _director.context(); context && prepare() && upload(*context)) {
        for (const RenderPass* pass : _order)
            drawPass(*context, *pass);
        context->clearState();
    }
    dropFrame();
}

void Renderer::dropFrame()
{
    for (RenderPass* pass : _order)
        pass->release();
    _order.clear();
    _usedPasses = 0;
}

bool Renderer::makeBuffers(std::size_t vertexBytes, std::size_t indexBytes)
{
    if (!_vertices || _vertices->desc().size < vertexBytes)
        _vertices = makeBuffer(*_device, BufferKind::Vertex, vertexBytes);
    if (!_indices || _indices->desc().size < indexBytes)
        _indices = makeBuffer(*_device, BufferKind::Index, indexBytes);
    return _vertices && _indices;
}

bool Renderer::upload(Context& context)
{
    std::size_t vertices = 0, indices = 0;
    for (RenderPass* pass : _order) {
        pass->vertexStart = static_cast<std::uint32_t>(vertices);
        pass->indexStart = static_cast<std::uint32_t>(indices);
        vertices += pass->vertices().size();
        indices += pass->indices().size();
    }
    _statistics.vertices = static_cast<std::uint32_t>(vertices);
    if (!makeBuffers(vertices * sizeof(Vertex), indices * sizeof(std::uint16_t)))
        return false;
    std::byte* vertexPlace = context.map(*_vertices, MapMode::WriteDiscard);
    std::byte* indexPlace = context.map(*_indices, MapMode::WriteDiscard);
    for (const RenderPass* pass : _order) {
        if (vertexPlace)
            append(vertexPlace, pass->vertices());
        if (indexPlace)
            append(indexPlace, pass->indices());
    }
    if (vertexPlace)
        context.unmap(*_vertices);
    if (indexPlace)
        context.unmap(*_indices);
    return vertexPlace && indexPlace;
}

void Renderer::drawPass(Context& context, const RenderPass& pass)
{
    ++_statistics.passes;
    if (pass.needsClear()) {
        context.clearRenderTarget(pass.target(), rgba(*pass.clearColor()));
        ++_statistics.clears;
    }
    context.setRenderTarget(pass.target());
    context.setViewport({0, 0, static_cast<int>(pass.size().width), static_cast<int>(pass.size().height)});
    context.setInputLayout(_layout);
    context.setIndexBuffer(_indices);
    context.setTopology(Topology::TriangleList);
    Bound bound;
    for (const Batch& batch : pass.batches()) {
        if (!batch.command)
            drawBatch(context, pass, batch, bound);
        else if (batch.command->func)
            batch.command->func();
    }
}

void Renderer::drawBatch(Context& context, const RenderPass& pass, const Batch& batch, Bound& bound)
{
    if (batch.isCopy && context.copyResource(*pass.target(), batch.texture)) {
        ++_statistics.copies;
        return;
    }
    const SceneProgram& program =
        batch.state ? batch.state->program().sceneProgram() : _programs.get(batch.program, batch.blend);
    const std::uint32_t vertexOffset =
        (pass.vertexStart + batch.baseVertex) * static_cast<std::uint32_t>(sizeof(Vertex));
    if (bound.program != &program) {
        context.setProgram(program.program);
        setUniform(context, program, program.toClip, toClip(pass));
    }
    if (bound.vertexOffset != vertexOffset)
        context.setVertexBuffer(_vertices, sizeof(Vertex), vertexOffset);
    bound = {&program, vertexOffset};
    if (batch.blend == BatchBlend::OverClear)
        setUniform(context, program, program.background, rgba(*pass.clearColor()));
    if (program.pictureUnit >= 0)
        context.setTexture(program.pictureUnit, batch.texture, batch.sampler);
    if (batch.state)
        batch.state->apply(context);
    context.setBlendState(batch.blend == BatchBlend::Over ? over : BlendState{});
    context.setScissor(batch.clip);
    context.drawIndexed(batch.indexCount, pass.indexStart + batch.firstIndex);
    ++_statistics.drawCalls;
}

} // namespace tavlo::scene
