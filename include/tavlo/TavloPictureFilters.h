#pragma once

#include <QtGlobal>

/// The looks that a channel can put on its whole picture. The numbers are those of the effect; any other draws the
/// picture as it is.
enum TavloPresentPictureFilterType : quint32
{
    TavloPresentPictureFilterType_NONE = 0,
    TavloPresentPictureFilterType_FAIRYTALE = 1,    ///< violet darks, rose and golden lights
    TavloPresentPictureFilterType_SUNRISE = 2,      ///< light and fresh, edges that sink into blue-green
    TavloPresentPictureFilterType_SUNSET = 3,       ///< red and gold
    TavloPresentPictureFilterType_HEALTHY = 4,      ///< skin gains light
    TavloPresentPictureFilterType_SWEETS = 5,       ///< sugar pink, strong colours
    TavloPresentPictureFilterType_ROMANCE = 6,      ///< soft and rosy
    TavloPresentPictureFilterType_WARM = 7,         ///< amber, with light from the right
    TavloPresentPictureFilterType_ANTIQUE = 8,      ///< faded dyes on yellowed paper
    TavloPresentPictureFilterType_CALM = 9,         ///< even and cool, mist below
    TavloPresentPictureFilterType_LATTE = 10,       ///< milk and coffee
    TavloPresentPictureFilterType_COOL = 11,        ///< firm and blue
    TavloPresentPictureFilterType_CRAYON = 12,      ///< strong colours between dark lines
    TavloPresentPictureFilterType_SKETCH = 13,      ///< a pencil drawing
    TavloPresentPictureFilterType_AMARO = 14,       ///< faded, a light in the middle
    TavloPresentPictureFilterType_BRANNAN = 15,     ///< hard, metallic, green shadows
    TavloPresentPictureFilterType_BROOKLYN = 16,    ///< matt, teal darks
    TavloPresentPictureFilterType_EARLYBIRD = 17,   ///< sepia, a light in the middle, brown edges
    TavloPresentPictureFilterType_HUDSON = 18,      ///< ice light, cold shade
    TavloPresentPictureFilterType_INKWELL = 19,     ///< black and white
    TavloPresentPictureFilterType_TOASTER2 = 20,    ///< hot copper, burnt edges
    TavloPresentPictureFilterType_DY = 21,          ///< zoomed, the colours apart
    TavloPresentPictureFilterType_ScreenBlend = 22, ///< two pictures as two lamps on one screen
};
