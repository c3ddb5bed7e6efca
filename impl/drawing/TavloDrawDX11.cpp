#include "drawing/TavloDrawDX11.h"

#include "base/Log.h"
#include "drawing/EffectDraw.h"
#include "drawing/FilterTable.h"
#include "drawing/PictureChroma.h"
#include "drawing/PrivateUtil.h"
#include "drawing/TransitionTable.h"

#include <QDateTime>
#include <QDebug>

#include <algorithm>
#include <cmath>
#include <cstring>

using namespace tavlo;
using namespace tavlo::graphics;

namespace {

constexpr const char* sourceName = "impl\\TavloDrawDX11";
constexpr int simpleEffect = 0;
constexpr int processEffect = 9;
constexpr int filterEffect = 10;

/// The passes of simple.fx.
enum Pass : std::uint32_t
{
    PassBlended = 0,
    PassReplaced = 1,
    PassOpaque = 2
};

void logCreate(const char* text, std::source_location at = std::source_location::current())
{
    const LogMark mark(sourceName, "TavloDrawDX11::create", at);
    qDebug().noquote() << text << logHeader(mark);
}

template <class Values>
BufferPtr makeBuffer(Device& device, BufferKind kind, const Values& values)
{
    const auto bytes = std::as_bytes(std::span(values));
    return device.createBuffer({static_cast<std::uint32_t>(bytes.size()), kind, false}, bytes);
}

float targetY(Rows rows) { return rows == Rows::TopFirst ? -1.0F : 1.0F; }

/// Whether an upright quad covers the middle of every pixel of the target.
bool coversTarget(const Quad& quad, QSizeF target)
{
    const auto x = static_cast<float>(1.0 - 0.5 / target.width()); // a quarter of a pixel inside the edge
    const auto y = static_cast<float>(1.0 - 0.5 / target.height());
    return quad[0].x <= -x && quad[0].y <= -y && quad[2].x >= x && quad[2].y >= y && quad[0].x == quad[3].x &&
           quad[1].x == quad[2].x && quad[0].y == quad[1].y && quad[2].y == quad[3].y;
}

/// Whether a quad is the target's own, to a quarter of a pixel: texels and pixels of equal sizes then meet.
bool isTarget(const Quad& quad, QSizeF target)
{
    const auto isNear = [](float a, float b, double pixels) { return std::abs(a - b) < 0.5 / pixels; };
    return std::ranges::equal(quad, fullQuad, [&](const QuadVertex& a, const QuadVertex& b) {
        return isNear(a.x, b.x, target.width()) && isNear(a.y, b.y, target.height());
    });
}

bool hasAdjustment(const tagTavloPresentPictureFilterParam* process)
{
    return process && process->colorAdjustParam.enable;
}

bool isSameSize(const TextureDesc& a, const TextureDesc& b) { return a.width == b.width && a.height == b.height; }

void setCrop(EffectDraw& draw, const tagTavloPresentPictureFilterParam* process)
{
    if (process && process->rectCropParam.enable) {
        const auto& rect = process->rectCropParam.cropRect;
        draw.setVector("cropRect", {rect[0], rect[1], rect[2], rect[3]});
    } else {
        draw.setVector("cropRect", {0, 0, 1, 1});
    }
}

void setColorAdjust(EffectDraw& draw, const tagTavloPresentPictureColorAdjust* adjust)
{
    draw.setInt("doColorAdjust", adjust ? 1 : 0);
    if (!adjust)
        return;
    draw.setFloat("Hue", adjust->hue);
    draw.setFloat("Brightness", adjust->brightness);
    draw.setFloat("Contrast", adjust->contrast);
    draw.setFloat("Saturation", adjust->saturation);
}

void setChromaKey(EffectDraw& draw, const tagTavloPresentPictureChromaKey* key, QSizeF sourceSize)
{
    draw.setInt("doChromaKey", key ? 1 : 0);
    if (!key)
        return;
    draw.setVector("chroma_key", {key->chroma_key[0], key->chroma_key[1]});
    draw.setFloat("similarity", key->similarity);
    draw.setFloat("smoothness", key->smoothness);
    draw.setFloat("spill", key->spill);
    draw.setVector("pixel_size",
                   {static_cast<float>(1.0 / sourceSize.width()), static_cast<float>(1.0 / sourceSize.height())});
}

void setLumaKey(EffectDraw& draw, const tagTavloPresentPictureLumaKey* key)
{
    draw.setInt("doLumaKey", key ? 1 : 0);
    if (!key)
        return;
    draw.setFloat("lumaKey_white", key->threshold + key->tolerance);
    draw.setFloat("lumaKey_black", key->threshold - key->tolerance);
    draw.setFloat("lumaKey_softness", key->softness);
}

void setProcess(EffectDraw& draw, const tagTavloPresentPictureFilterParam* process, QSizeF sourceSize)
{
    const auto part = [process](const auto& chosen) { return process && chosen.enable ? &chosen : nullptr; };
    static const tagTavloPresentPictureFilterParam none;
    const tagTavloPresentPictureFilterParam& all = process ? *process : none;
    setCrop(draw, process);
    setColorAdjust(draw, part(all.colorAdjustParam));
    setChromaKey(draw, part(all.chromaKeyParam), sourceSize);
    setLumaKey(draw, part(all.lumaKeyParam));
}

/// What a filter reads beside its pictures.
void setFilter(EffectDraw& draw, const FilterRow& row, ITavloGraphicsRes& resources, QSizeF size)
{
    for (const FilterInput& input : row.inputs) {
        if (!input.variable)
            break;
        draw.setTexture(input.variable, resources.imageView(input.slot),
                        input.reading == FilterReading::Texels ? Sampler::NearestClamp : Sampler::LinearClamp);
    }
    draw.setVector("singleStepOffset",
                   {static_cast<float>(1.0 / size.width()), static_cast<float>(1.0 / size.height())});
    if (row.strength != 0)
        draw.setFloat("strength", row.strength);
    if (row.scale != 0)
        draw.setFloat("scaleDY", row.scale);
}

void setClearedColor(EffectDraw& draw, const Rgba& color)
{
    draw.setVector("clearedColor", {color[0], color[1], color[2], color[3]});
}

/// Whether every pixel of the draw comes out with alpha 1.
bool comesOutOpaque(quint32 chroma, const tagTavloPresentPictureFilterParam* process)
{
    return (isYuv(chroma) || chroma == chromaRgbx) &&
           !(process &&
             (process->rectCropParam.enable || process->chromaKeyParam.enable || process->lumaKeyParam.enable));
}

} // namespace

/// What a draw reads.
struct TavloDrawDX11::Source
{
    quint32 chroma;
    TexturePtr picture;
    QSizeF size;
    PlaneOffsets planeOffsets;
    bool flip;
    bool mirror;
};

TavloDrawDX11::~TavloDrawDX11() { TavloDrawDX11::destroy(); }

bool TavloDrawDX11::create(ITavloGraphicsRes* graphicsRes, TexturePtr texture, DevicePtr device, ContextPtr context,
                           const TextureDesc& desc, QSizeF size, Rows rows)
{
    destroy();
    if (!device || !context)
        return false;
    _graphicsRes = graphicsRes;
    _rows = rows;
    _size = size;
    _targetDesc = desc;
    _targetDesc.width = static_cast<std::uint32_t>(std::max(0.0, size.width()));
    _targetDesc.height = static_cast<std::uint32_t>(std::max(0.0, size.height()));
    _target = std::move(texture);
    if (!createTargets(device) || !createBuffers(device)) {
        destroy();
        return false;
    }
    _context = std::move(context);
    return true;
}

bool TavloDrawDX11::createTargets(const DevicePtr& device)
{
    if (!_target) {
        _targetDesc.renderTarget = true;
        _target = device->createTexture(_targetDesc);
    }
    if (!_target) {
        logCreate("failed to CreateTexture2D ");
        return false;
    }
    if (!_target->desc().renderTarget) {
        logCreate("failed to CreateRenderTargetView ");
        return false;
    }
    // New textures hold zeros, which is what a transparent picture needs.
    _blank = PrivateUtil::createImageRes(device, static_cast<int>(_targetDesc.width),
                                         static_cast<int>(_targetDesc.height), Usage::Dynamic, Format::R8G8B8A8_UNORM);
    if (!_blank)
        logCreate("failed to CreateShaderResourceView ");
    return true;
}

bool TavloDrawDX11::createBuffers(const DevicePtr& device)
{
    _dynamicVertices = device->createBuffer({sizeof(Quad), BufferKind::Vertex, true});
    _quadVertices = makeBuffer(*device, BufferKind::Vertex, fullQuad);
    _quadIndices = makeBuffer(*device, BufferKind::Index, quadIndices);
    return _dynamicVertices && _quadVertices && _quadIndices;
}

void TavloDrawDX11::destroy()
{
    _quadIndices.reset();
    _quadVertices.reset();
    _dynamicVertices.reset();
    _blank.reset();
    _target.reset();
    _opaque = false;
    _graphicsRes = nullptr;
    _context.reset();
}

void TavloDrawDX11::clear(const Rgba& color)
{
    if (!isMade())
        return;
    _context->clearRenderTarget(_target, color);
    _opaque = color[3] >= 1.0F;
}

void TavloDrawDX11::drawPicture(quint32 chroma, const TexturePtr& picture, QSizeF sourceSize, PlaneOffsets planeOffsets,
                                const tagTavloPresentPictureFilterParam* process, bool clearFirst, bool flip,
                                bool mirror)
{
    drawSource({chroma, picture, sourceSize, planeOffsets, flip, mirror}, process, fitQuad(sourceSize, _size),
               clearFirst);
}

void TavloDrawDX11::drawPicturePlaced(quint32 chroma, const TexturePtr& picture, QSizeF sourceSize,
                                      PlaneOffsets planeOffsets, const tagTavloShowDisplayItemInfo& placement,
                                      int fitMode, bool clearFirst, bool flip, bool mirror)
{
    drawSource({chroma, picture, sourceSize, planeOffsets, flip, mirror}, nullptr,
               placedQuad(placement, fitMode, sourceSize, _size), clearFirst);
}

void TavloDrawDX11::drawSource(const Source& source, const tagTavloPresentPictureFilterParam* process, const Quad& quad,
                               bool clearFirst)
{
    if (!isMade() || !_graphicsRes || !_graphicsRes->effect(simpleEffect) || copySource(source, process, quad))
        return;
    const TexturePtr& picture = source.picture ? source.picture : _blank;
    const quint32 chroma = source.picture && isYuv(source.chroma) ? source.chroma : chromaRgba;
    const auto width = static_cast<float>(source.size.width());
    const bool exact = isYuv(chroma) || isExact(picture, quad); // YUV is read texel by texel

    // Blending is the dearest part of a draw. Where the result is known without it, over what was just cleared and
    // where nothing of the target shows through, the other passes write the same without.
    const bool opaque = source.picture && comesOutOpaque(source.chroma, process);
    if (clearFirst)
        clearAround(quad);
    // Neither blending nor the pass that stands for it takes anything from an alpha of 1.
    _opaque = (clearFirst ? clearColor[3] >= 1.0F : _opaque) || (opaque && coversTarget(quad, _size));

    EffectDraw draw(*_context, *_graphicsRes, simpleEffect, _target);
    draw.setFloat("alphaMask", 1.0F);
    draw.setPicture("sampler0", picture, exact);
    draw.setInt("samplerChroma", static_cast<int>(chroma));
    draw.setFloat("width", width);
    draw.setFloat("height", static_cast<float>(source.size.height()));
    draw.setFloat("width_d2", width * 0.5F);
    draw.setFloat("width_d2_i", 1.0F / (width * 0.5F));
    draw.setFloat("input_width_i_d2", 0.5F / width);
    draw.setInt("int_width", static_cast<int>(source.size.width()));
    draw.setInt("int_input_width", static_cast<int>(source.size.width()));
    draw.setInt("int_u_plane_offset", static_cast<int>(source.planeOffsets.u));
    draw.setInt("int_v_plane_offset", static_cast<int>(source.planeOffsets.v));
    draw.setInt("useMask", 0);
    draw.setInt("useColor", 0);
    draw.setInt("flipVert0", source.flip);
    draw.setInt("flipVert1", source.flip);
    draw.setInt("mirrorHoriz0", source.mirror);
    draw.setInt("mirrorHoriz1", source.mirror);
    setProcess(draw, process, source.size);
    setClearedColor(draw, clearColor);
    draw.setFloat("targetY", targetY(_rows));
    writeQuad(quad);
    draw.draw(opaque ? PassOpaque : clearFirst ? PassReplaced : PassBlended, _dynamicVertices, _quadIndices);
}

/// What would come out as it is needs no draw, which a software renderer would run a shader for at each pixel.
bool TavloDrawDX11::copySource(const Source& source, const tagTavloPresentPictureFilterParam* process, const Quad& quad)
{
    const bool same = _rows == Rows::TopFirst && source.picture && source.chroma == chromaRgbx &&
                      comesOutOpaque(source.chroma, process) && !hasAdjustment(process) && !source.flip &&
                      !source.mirror && isExact(source.picture, quad) &&
                      source.picture->desc().format == _targetDesc.format;
    if (!same || !_context->copyResource(*_target, source.picture))
        return false;
    _opaque = true;
    return true;
}

bool TavloDrawDX11::isExact(const TexturePtr& picture, const Quad& quad) const
{
    return isSameSize(picture->desc(), _targetDesc) && isTarget(quad, _size);
}

/// Clears for a draw that replaces what lies under the quad.
void TavloDrawDX11::clearAround(const Quad& quad)
{
    if (!coversTarget(quad, _size))
        clear();
}

void TavloDrawDX11::takeOver(const TavloDrawDX11& other)
{
    if (!isMade() || !other.isMade())
        return;
    _context->copyResource(*_target, other._target);
    _opaque = other._opaque;
    _context->flush();
}

void TavloDrawDX11::takePicture(const TexturePtr& picture)
{
    if (!isMade() || !picture)
        return;
    _context->copyResource(*_target, picture);
    _opaque = clearColor[3] >= 1.0F;
}

void TavloDrawDX11::writeQuad(const Quad& quad)
{
    if (std::byte* const bytes = _context->map(*_dynamicVertices, MapMode::WriteDiscard)) {
        std::memcpy(bytes, quad.data(), sizeof(Quad));
        _context->unmap(*_dynamicVertices);
    }
}

void TavloDrawDX11::drawGray(const TexturePtr& picture, QSizeF sourceSize)
{
    if (!isMade() || !_graphicsRes || !_graphicsRes->effect(processEffect))
        return;
    clear();
    const TexturePtr& shown = picture ? picture : _blank;
    const Quad quad = fitQuad(sourceSize, _size);
    _opaque = false;
    EffectDraw draw(*_context, *_graphicsRes, processEffect, _target);
    draw.setPicture("sampler0", shown);
    draw.setFloat("width", static_cast<float>(sourceSize.width()));
    draw.setFloat("height", static_cast<float>(sourceSize.height()));
    draw.setInt("flipVert0", 0);
    draw.setInt("mirrorHoriz0", 0);
    draw.setFloat("targetY", targetY(_rows));
    writeQuad(quad);
    draw.draw(0, _dynamicVertices, _quadIndices);
}

quint32 TavloDrawDX11::randomSeed() const { return static_cast<quint32>(QDateTime::currentSecsSinceEpoch()); }

void TavloDrawDX11::drawTransition(const TexturePtr& picture0, QSizeF size0, bool flip0, const TexturePtr& picture1,
                                   QSizeF size1, bool flip1, float progress, quint32 kind)
{
    const auto family = static_cast<int>(transitionFamily(kind));
    if (!isMade() || !_graphicsRes || !_graphicsRes->effect(family))
        return;
    clear();
    const TransitionInputs inputs{{picture0 ? picture0 : _blank, size0, flip0},
                                  {picture1 ? picture1 : _blank, size1, flip1},
                                  _graphicsRes->imageTextures(),
                                  _size,
                                  _rows == Rows::TopFirst,
                                  randomSeed()};
    _opaque = false;
    EffectDraw draw(*_context, *_graphicsRes, family, _target);
    if (_transition.apply(*_context, *_graphicsRes->effect(family), inputs, progress, kind))
        draw.drawApplied(_quadVertices, _quadIndices);
}

void TavloDrawDX11::drawFilter(quint32 type, const TexturePtr& picture0, const TexturePtr& picture1, QSizeF size,
                               bool flip0, bool flip1)
{
    const FilterRow* const row = findFilter(type);
    if (!row)
        return drawPicture(chromaRgba, picture0, size, {}, nullptr, true, flip0, false);
    if (!isMade() || !_graphicsRes || !_graphicsRes->effect(filterEffect))
        return;
    const TexturePtr& first = picture0 ? picture0 : _blank;
    const TexturePtr& second = picture1 ? picture1 : _blank;
    const Quad quad = fitQuad(size, _size);
    clearAround(quad);
    _opaque = false;

    EffectDraw draw(*_context, *_graphicsRes, filterEffect, _target);
    draw.setPicture("sampler0", first, isExact(first, quad) && row->scale == 0);
    draw.setPicture("sampler1", second, isExact(second, quad));
    draw.setInt("doBlendMethod", static_cast<int>(type));
    draw.setInt("flipVert0", flip0);
    draw.setInt("flipVert1", flip1);
    draw.setInt("mirrorHoriz0", 0);
    draw.setInt("mirrorHoriz1", 0);
    setFilter(draw, *row, *_graphicsRes, size);
    setClearedColor(draw, clearColor);
    draw.setFloat("targetY", targetY(_rows));
    writeQuad(quad);
    draw.draw(0, _dynamicVertices, _quadIndices);
}
