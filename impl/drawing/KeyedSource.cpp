#include "drawing/TavloDrawDX11.h"

#include "drawing/PictureChroma.h"

#include <utility>

using namespace tavlo;
using namespace tavlo::graphics;

namespace {

/// A pass that runs one key alone, over what an earlier pass drew.
void drawKey(TavloDrawDX11& target, const TavloDrawDX11& input, const tagTavloPresentPictureFilterParam& key)
{
    target.drawPicture(chromaRgba, input.targetResource(), input.size(), {}, &key, true, false, false);
}

} // namespace

// Asked for in one draw, the keys would read the raw texels of a YUV layout and come before crop and adjustment.
void drawKeyedSource(TavloDrawDX11& first, TavloDrawDX11& second, quint32 chroma, const TexturePtr& picture,
                     QSizeF sourceSize, PlaneOffsets planeOffsets, const tagTavloPresentPictureFilterParam& process,
                     bool clearFirst, bool flip)
{
    const bool chromaKey = process.chromaKeyParam.enable != 0;
    const bool lumaKey = process.lumaKeyParam.enable != 0;
    const bool clears = clearFirst || process.rectCropParam.enable != 0;

    // The passes go back and forth. Where nothing of the first object's picture is needed and one key follows, they
    // begin in the second one, and the result stands where it belongs.
    TavloDrawDX11* result = clears && chromaKey != lumaKey ? &second : &first;
    TavloDrawDX11* other = result == &first ? &second : &first;

    tagTavloPresentPictureFilterParam pass = process;
    pass.chromaKeyParam.enable = 0;
    pass.lumaKeyParam.enable = 0;
    result->drawPicture(chroma, picture, sourceSize, planeOffsets, &pass, clears,
                        flip != (process.processParam.vFlip != 0), process.processParam.hMirror != 0);

    pass.rectCropParam.enable = 0;
    pass.colorAdjustParam.enable = 0;
    const auto key = [&] {
        drawKey(*other, *result, pass);
        std::swap(result, other);
    };
    if (chromaKey) {
        pass.chromaKeyParam.enable = 1;
        key();
        pass.chromaKeyParam.enable = 0;
    }
    if (lumaKey) {
        pass.lumaKeyParam.enable = 1;
        key();
    }
    if (result != &first)
        first.takeOver(*result);
}
