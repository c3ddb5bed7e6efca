#pragma once

#include "drawing/TransitionMask.h"

#include "effects/Effect.h"
#include "graphics/Context.h"

#include <QImage>
#include <QSizeF>

#include <span>

namespace tavlo {

struct TransitionRow;

/// A picture that a transition shows, its top row first.
struct TransitionPicture
{
    graphics::TexturePtr texture;
    QSizeF size;       ///< pixels
    bool flip = false; ///< for kinds of no family alone
};

/// What a transition is drawn from.
struct TransitionInputs
{
    TransitionPicture outgoing;
    TransitionPicture incoming;
    std::span<const graphics::TexturePtr> images; ///< the store's, by slot
    QSizeF targetSize;                            ///< pixels
    bool targetTopFirst = true;                   ///< false: a window's back buffer
    quint32 randomSeed = 0;                       ///< seconds of the clock
};

/// Brings an effect into the state in which a quad over the whole target draws a transition.
///
/// Frame thread. Nothing is allocated but by the painter of the mask.
class TransitionDraw
{
public:
    /// Paints the mask where the kind has one, sets the variables in their order, and applies the pass. The caller lets
    /// go of sampler 0 and 1 after the draw.
    /// \param effect  that of the kind's family
    /// \return false: the reason is in the log and nothing is to be drawn; so it is for a kind of no family
    bool apply(graphics::Context& context, effects::Effect& effect, const TransitionInputs& inputs, float position,
               quint32 kind);

private:
    /// The step of one kind: paints its mask, sets its variables, and turns progress and the order of the pictures.
    effects::Result applyTransitionEffectDependencyProperty(graphics::Context& context, effects::Effect& effect,
                                                            const TransitionInputs& inputs, const TransitionRow& row,
                                                            float& progress, const TransitionPicture*& picture0,
                                                            const TransitionPicture*& picture1);

    /// A mask that is missing or cannot be written keeps what it shows: the transition goes on with it.
    void updateTransitionMaskTexture(graphics::Context& context, std::span<const graphics::TexturePtr> images,
                                     quint32 kind, float progress);

    TransitionMask _mask;
    QImage _maskImage; ///< painted here: an edge is read while it is painted, which a texture's memory may forbid
};

} // namespace tavlo
