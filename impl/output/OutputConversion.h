#pragma once

#include "drawing/TavloDrawDX11.h"

namespace tavlo {

/// How composed textures come into memory.
struct OutputConversion
{
    enum class Place
    {
        Automatic, ///< on the graphics processor, or in memory where that is the software renderer
        Graphics,
        Memory,
    };

    Place place = Place::Automatic;
    Rows rows = Rows::TopFirst; ///< how the composed texture keeps them
};

} // namespace tavlo
