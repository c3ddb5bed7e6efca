#pragma once

#include <QtGlobal>

/// The families of transitions. A family's number is also that of its effect.
enum TavloPresentEffectKindCatalog : quint32
{
    TavloPresentEffectKindCatalogNone = 0,
    TavloPresentEffectKindCatalogErase = 1,      ///< an edge uncovers the new picture
    TavloPresentEffectKindCatalogFade = 2,       ///< one picture melts into the other
    TavloPresentEffectKindCatalogGlide = 3,      ///< a picture comes in, goes out, or pushes the other
    TavloPresentEffectKindCatalogStretch = 4,    ///< the pictures are squeezed and spread
    TavloPresentEffectKindCatalogBlur = 5,       ///< sharpness is lost and found again
    TavloPresentEffectKindCatalogDistortion = 6, ///< the picture is bent, crumbled or swirled
    TavloPresentEffectKindCatalogColor = 7,      ///< colours are changed on the way
    TavloPresentEffectKindCatalogLumas = 8,      ///< the grey of an image says when a point changes over
};
