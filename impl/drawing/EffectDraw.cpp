#include "drawing/EffectDraw.h"

#include <QDebug>

namespace tavlo {

using namespace graphics;

namespace {

void tellVector(effects::Result result)
{
    if (effects::failed(result))
        qDebug() << "failed to set shader float vector :" << result;
}

void tellResource(effects::Result result)
{
    if (effects::failed(result))
        qDebug() << "failed to set shader resource :" << result;
}

} // namespace

EffectDraw::EffectDraw(Context& context, ITavloGraphicsRes& resources, int effectIndex, TexturePtr target)
    : _context(context), _effect(*resources.effect(effectIndex)), _technique(resources.technique(effectIndex)),
      _layout(resources.inputLayout(effectIndex)), _savedTarget(context.renderTarget()),
      _savedDepth(context.depthTarget()), _savedLayout(context.inputLayout())
{
    const TextureDesc& desc = target->desc();
    const Viewport whole{0, 0, static_cast<int>(desc.width), static_cast<int>(desc.height)};
    _context.setRenderTarget(std::move(target));
    _context.setViewport(whole);
}

EffectDraw::~EffectDraw()
{
    for (const char* const name : {"sampler0", "sampler1"})
        _effect.GetVariableByName(name).AsShaderResource().SetResource(nullptr);
    _context.clearState();
    _context.setRenderTarget(std::move(_savedTarget), std::move(_savedDepth));
    _context.setInputLayout(std::move(_savedLayout));
}

void EffectDraw::setFloat(std::string_view name, float value)
{
    tellVector(_effect.GetVariableByName(name).AsScalar().SetFloat(value));
}

void EffectDraw::setVector(std::string_view name, std::initializer_list<float> values)
{
    tellVector(_effect.GetVariableByName(name).AsVector().SetFloatVector({values.begin(), values.size()}));
}

void EffectDraw::setInt(std::string_view name, int value)
{
    tellResource(_effect.GetVariableByName(name).AsScalar().SetInt(value));
}

void EffectDraw::setPicture(std::string_view name, TexturePtr picture, bool exact)
{
    setTexture(name, std::move(picture), exact ? Sampler::NearestClamp : Sampler::LinearClamp);
}

void EffectDraw::setTexture(std::string_view name, TexturePtr texture, Sampler sampler)
{
    effects::EffectShaderResourceVariable variable = _effect.GetVariableByName(name).AsShaderResource();
    tellResource(variable.SetResource(std::move(texture)));
    variable.SetSampler(sampler);
}

void EffectDraw::draw(std::uint32_t pass, const BufferPtr& vertices, const BufferPtr& indices)
{
    if (const effects::Result result = _technique.GetPassByIndex(pass).Apply(_context); effects::failed(result)) {
        qDebug() << "failed to PostprocessTechnique :" << result;
        return;
    }
    drawApplied(vertices, indices);
}

void EffectDraw::drawApplied(const BufferPtr& vertices, const BufferPtr& indices)
{
    _context.setInputLayout(_layout);
    _context.setVertexBuffer(vertices, sizeof(QuadVertex), 0);
    _context.setIndexBuffer(indices);
    _context.setTopology(Topology::TriangleList);
    _context.drawIndexed(static_cast<std::uint32_t>(quadIndices.size()), 0);
}

} // namespace tavlo
