#include "drawing/WarmUp.h"

#include "drawing/FilterTable.h"
#include "drawing/PictureChroma.h"
#include "drawing/TavloDrawDX11.h"
#include "drawing/TransitionTable.h"

#include <array>

namespace tavlo {

using namespace graphics;

namespace {

// Odd: some drivers make other code for sizes that are powers of two.
constexpr QSizeF targetSize{13, 7};
constexpr QSizeF otherSize{11, 9};

/// The program that a picture is drawn with depends on whether it meets the target texel by texel.
constexpr std::array sourceSizes{targetSize, otherSize};

TexturePtr makePicture(const DevicePtr& device, QSizeF size, Format format)
{
    return device->createTexture(
        {static_cast<std::uint32_t>(size.width()), static_cast<std::uint32_t>(size.height()), format, Usage::Default});
}

/// Over what is there and over a cleared target.
void drawBoth(TavloDrawDX11& target, quint32 chroma, const TexturePtr& picture, QSizeF size,
              const tagTavloPresentPictureFilterParam* process)
{
    for (const bool clearFirst : {true, false})
        target.drawPicture(chroma, picture, size, {}, process, clearFirst, false, false);
}

void drawPictures(TavloDrawDX11& target, const DevicePtr& device)
{
    tagTavloPresentPictureFilterParam adjusted, chromaKeyed, lumaKeyed;
    adjusted.colorAdjustParam.enable = 1;
    chromaKeyed.chromaKeyParam.enable = 1;
    lumaKeyed.lumaKeyParam.enable = 1;
    const TexturePtr planes = makePicture(device, otherSize, Format::R8_UNORM);
    for (const quint32 chroma : yuvChromas) {
        drawBoth(target, chroma, planes, otherSize, nullptr);
        drawBoth(target, chroma, planes, otherSize, &adjusted);
    }
    for (const QSizeF size : sourceSizes) {
        const TexturePtr picture = makePicture(device, size, Format::R8G8B8A8_UNORM);
        for (const auto* process : {&adjusted, &chromaKeyed, &lumaKeyed})
            drawBoth(target, chromaRgba, picture, size, process);
        drawBoth(target, chromaRgba, picture, size, nullptr);
        target.drawGray(picture, size);
    }
}

} // namespace

void warmUpDrawing(ITavloGraphicsRes& resources, const DevicePtr& device, const ContextPtr& context)
{
    TavloDrawDX11 target;
    if (!target.create(&resources, nullptr, device, context, {}, targetSize))
        return;
    drawPictures(target, device);
    const TexturePtr below = makePicture(device, targetSize, Format::R8G8B8A8_UNORM);
    for (const QSizeF size : sourceSizes) {
        const TexturePtr picture = makePicture(device, size, Format::R8G8B8A8_UNORM);
        for (const TransitionRow& row : transitionRows())
            target.drawTransition(picture, size, false, below, targetSize, false, 0.5F, row.kind);
        for (const FilterRow& row : filterRows())
            target.drawFilter(row.type, picture, below, size, false, false);
    }
    context->flush();
}

} // namespace tavlo
