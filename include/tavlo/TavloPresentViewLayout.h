#pragma once

#include <tavlo/TavloPresentChannelID.h>

#include <QRectF>
#include <QSizeF>

#include <array>

/// How the panes of the multi-view stand.
enum TavloPresentViewLayoutType : qint32
{
    TavloPresentViewLayoutTypeGrid = 0,      ///< PVM and PGM on top, the sources in a grid below, a side column
    TavloPresentViewLayoutTypeNarrow = 1,    ///< the same with panes divided once more, for a list beside them
    TavloPresentViewLayoutTypeGridPlain = 2, ///< as the grid
    TavloPresentViewLayoutTypeColumns = 3,   ///< four panes on top, sources column by column, three large ones right
    TavloPresentViewLayoutTypeSingle = 4,    ///< PGM alone
};

/// Which rectangles a layout is to compute; a set of bits.
enum TavloPresentViewLayoutFlag : quint32
{
    TavloPresentViewLayoutFlagPvm = 1,
    TavloPresentViewLayoutFlagPgm = 2,
    TavloPresentViewLayoutFlagPanes = 4,
    TavloPresentViewLayoutFlagSide = 8,
    TavloPresentViewLayoutFlagLower = 16,
};

/// A computed layout. All rectangles are in pixels of `size`, y downwards; those not asked for keep what they held.
struct tagTavloPresentViewLayoutInfo
{
    QSizeF size;
    QRectF pvmRect;
    QRectF pgmRect;
    std::array<QRectF, TavloMixedChannelLimit> paneRects; ///< one for each source channel
    QRectF sideRect;
    QRectF lowerRect;               ///< the lower right pane
    std::array<QRectF, 4> topRects; ///< of TavloPresentViewLayoutTypeColumns
};
