#pragma once

#include "support/reference/Picture.h"

namespace tavlo::reference {

/// What the transitions read beside the two pictures.
struct TransitionImages
{
    Picture clouds, noise, sincosatan, checkerboard;
    Picture luma; ///< that of the kind in question
    Picture mask; ///< painted for the kind and the position in question
    double randomSeed = 0;

    /// Added to what is read of any of these that decides or displaces: x to red and blue, y to green. Not 0 tells what
    /// a device may show that weighs texels coarsely.
    Vector error;
};

/// The colour of a transition of that kind at a point of the target, u to the right, v downwards.
///
/// Everything a draw does is in it: the exchange of the pictures and of the position too. Written for reading, in
/// doubles, one pixel after the other.
Rgba transition(int kind, double position, const Picture& outgoing, const Picture& incoming,
                const TransitionImages& images, Vector uv);

} // namespace tavlo::reference
