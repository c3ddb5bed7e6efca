#pragma once

#include "channels/Meters.h"

#include "scene/Layer.h"

#include <array>

namespace tavlo {

/// The two level bars of a channel on the multi-view. Frame thread.
class LevelBars
{
public:
    enum class Side
    {
        Left, ///< of the view: the bars stand from its left edge to the right
        Right,
    };

    void create(scene::Director& director, scene::Node& parent);
    void destroy();

    /// Shows the meter's first two levels.
    /// \param view       the channel's view without its border, pixels of the canvas
    /// \param lineWidth  of the border, pixels
    void show(const scene::Rect& view, float lineWidth, Side side, Meter& meter, quint32& time);

    void setColor(scene::Color3B color);

private:
    std::array<scene::RefPtr<scene::LayerColor>, 2> _bars; ///< null unless made
};

} // namespace tavlo
