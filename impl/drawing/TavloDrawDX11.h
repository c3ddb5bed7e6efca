#pragma once

#include "drawing/ITavloGraphicsRes.h"
#include "drawing/PictureQuad.h"
#include "drawing/TransitionDraw.h"

#include <tavlo/records/PictureRecords.h>
#include <tavlo/records/ShowRecords.h>

#include <QSizeF>

namespace tavlo {

/// Where the second and the third component of a planar picture lie in its texture, in texels from the first one.
struct PlaneOffsets
{
    quint32 u = 0;
    quint32 v = 0;
};

/// Which row of a picture a render target keeps first.
enum class Rows
{
    TopFirst,
    BottomFirst
};

} // namespace tavlo

/// One render target and the drawing of whole pictures into it, each as one quad through an effect.
///
/// Unmade until `create`, and again after `destroy`; an unmade object draws nothing. The target keeps its top row
/// first, as decoded pictures do, so that what one object has drawn is input of the next without being turned over.
/// Only the back buffer of a window keeps its bottom row first.
///
/// Frame thread: the thread of the context. Each draw leaves the context with the targets and the input layout that it
/// found, and everything else cleared. Nothing is allocated by a draw.
class TavloDrawDX11
{
public:
    using TexturePtr = tavlo::graphics::TexturePtr;
    using Rgba = tavlo::graphics::Rgba;
    using PlaneOffsets = tavlo::PlaneOffsets;

    /// \param graphicsRes  lent until `destroy`
    /// \param texture      the target; null makes one from `desc`
    /// \param desc         width and height are replaced by `size`
    /// \param size         of the target, pixels
    virtual bool create(ITavloGraphicsRes* graphicsRes, TexturePtr texture, tavlo::graphics::DevicePtr device,
                        tavlo::graphics::ContextPtr context, const tavlo::graphics::TextureDesc& desc, QSizeF size,
                        tavlo::Rows rows = tavlo::Rows::TopFirst);

    /// Releases everything that `create` made. May be called twice.
    virtual void destroy();

    TavloDrawDX11() = default;
    virtual ~TavloDrawDX11();
    TavloDrawDX11(const TavloDrawDX11&) = delete;
    TavloDrawDX11& operator=(const TavloDrawDX11&) = delete;

    bool isMade() const { return _context != nullptr; }

    /// Fills the target.
    void clear(const Rgba& color);
    void clear() { clear(clearColor); }

    /// A picture in the target's middle, as large as fits, over what is there.
    /// \param chroma        four-character code of its layout; what is no YUV layout counts as red, green, blue, alpha,
    ///                      "RGBX" as one that is opaque
    /// \param picture       null draws a transparent picture
    /// \param sourceSize    of the picture, pixels
    /// \param process       crop, colour adjustment and keys; null: none
    /// \param flip, mirror  the picture is drawn upside down, or left to right
    void drawPicture(quint32 chroma, const TexturePtr& picture, QSizeF sourceSize, PlaneOffsets planeOffsets,
                     const tagTavloPresentPictureFilterParam* process, bool clearFirst, bool flip, bool mirror);

    /// The same placed by a display record, without crop, adjustment and keys.
    /// \param fitMode  a tavlo::FitMode
    void drawPicturePlaced(quint32 chroma, const TexturePtr& picture, QSizeF sourceSize, PlaneOffsets planeOffsets,
                           const tagTavloShowDisplayItemInfo& placement, int fitMode, bool clearFirst, bool flip,
                           bool mirror);

    /// Clears the target and draws the picture's luma as grey, opaque.
    void drawGray(const TexturePtr& picture, QSizeF sourceSize);

    /// Clears the target and draws a transition over the whole of it. A kind of no family leaves it cleared.
    /// \param picture0, picture1  the outgoing and the incoming one, top row first; null: a transparent picture
    /// \param size0, size1        of the pictures, pixels
    /// \param flip0, flip1        for kinds of no family alone
    /// \param progress            0 to 1
    /// \param kind                docs/transitions.md
    void drawTransition(const TexturePtr& picture0, QSizeF size0, bool flip0, const TexturePtr& picture1, QSizeF size1,
                        bool flip1, float progress, quint32 kind);

    /// Clears the target and draws a picture under a filter, in the middle, as large as fits; no crop and no key acts.
    /// \param type      docs/filters.md; a number without a filter draws the picture as it is
    /// \param picture0  null: a transparent picture
    /// \param picture1  what lies below, for the blend of two; null: a transparent picture
    /// \param size      of the pictures, pixels
    /// \param flip0     both are drawn upside down; `flip1` is not read by any filter
    void drawFilter(quint32 type, const TexturePtr& picture0, const TexturePtr& picture1, QSizeF size, bool flip0,
                    bool flip1);

    /// The target, which is also the input of a next draw. Null before `create`.
    const TexturePtr& targetResource() const { return _target; }

    /// Whether no pixel of the target is transparent, as far as this object has drawn it. False where it cannot tell.
    bool isOpaque() const { return _opaque; }

    /// Takes over what an object of the same size has drawn.
    void takeOver(const TavloDrawDX11& other);

    /// Takes a picture of the target's size and format for what it would draw over a cleared target.
    void takePicture(const TexturePtr& picture);

    /// Pixels.
    QSizeF size() const { return _size; }

    /// Colour of the clears that name none.
    Rgba clearColor{};

protected:
    const tavlo::graphics::ContextPtr& context() const { return _context; }
    ITavloGraphicsRes* graphicsRes() const { return _graphicsRes; }

    /// What a transition with a part of chance begins from at each draw: the seconds of the clock.
    virtual quint32 randomSeed() const;

private:
    struct Source;

    bool createTargets(const tavlo::graphics::DevicePtr& device);
    bool createBuffers(const tavlo::graphics::DevicePtr& device);
    void drawSource(const Source& source, const tagTavloPresentPictureFilterParam* process, const tavlo::Quad& quad,
                    bool clearFirst);
    bool copySource(const Source& source, const tagTavloPresentPictureFilterParam* process, const tavlo::Quad& quad);
    bool isExact(const TexturePtr& picture, const tavlo::Quad& quad) const;
    void clearAround(const tavlo::Quad& quad);
    void writeQuad(const tavlo::Quad& quad);

    // fixed from create to destroy
    tavlo::graphics::ContextPtr _context;
    ITavloGraphicsRes* _graphicsRes = nullptr;
    tavlo::Rows _rows = tavlo::Rows::TopFirst;
    QSizeF _size;
    tavlo::graphics::TextureDesc _targetDesc;
    TexturePtr _target;
    TexturePtr _blank; ///< target-sized, transparent black
    tavlo::graphics::BufferPtr _dynamicVertices;
    tavlo::graphics::BufferPtr _quadVertices;
    tavlo::graphics::BufferPtr _quadIndices;

    // frame thread
    tavlo::TransitionDraw _transition;
    bool _opaque = false;
};

/// The picture process of a source, in its real order: crop and colour adjustment in the source's own layout, then the
/// chroma key, then the luma key, each in a pass of its own where it is enabled. The result stands in `first`.
///
/// Frame thread. Both objects have the size of the target; `second` serves as scratch.
/// \param flip  the source's own; `vFlip` of the record turns it over
void drawKeyedSource(TavloDrawDX11& first, TavloDrawDX11& second, quint32 chroma,
                     const tavlo::graphics::TexturePtr& picture, QSizeF sourceSize, tavlo::PlaneOffsets planeOffsets,
                     const tagTavloPresentPictureFilterParam& process, bool clearFirst, bool flip);
