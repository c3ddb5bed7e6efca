#pragma once

#include <QtGlobal>

namespace tavlo {

/// Whether a channel is heard on the program, and how loud.
struct Audibility
{
    bool isAudible = false;
    double volume = 0.0; ///< a factor; of a channel that is not audible the one that its meter shows

    /// The factor that the mix takes.
    double mixed() const { return isAudible ? volume : 0.0; }
};

/// A channel's sound follows its picture, or is always on or off. During a transition the sounds fade over, linear in
/// the position whatever the pictures do; a channel on both sides stays at its volume.
/// \param enable       0 follows the picture, 1 always on, any other off
/// \param volume       of the channel, a factor
/// \param position     of the transition, 0 to 1
/// \param isOnProgram  the channel is on air
/// \param isOnNext     the next take brings it
constexpr Audibility audibilityOf(qint32 enable, double volume, double position, bool isOnProgram, bool isOnNext)
{
    if (enable != 0)
        return {enable == 1, volume};
    if (position == 0.0)
        return {isOnProgram, volume};
    if (position == 1.0)
        return {isOnNext, volume};
    if (isOnProgram != isOnNext)
        volume *= isOnProgram ? 1.0 - position : position;
    return {isOnProgram || isOnNext, volume};
}

} // namespace tavlo
