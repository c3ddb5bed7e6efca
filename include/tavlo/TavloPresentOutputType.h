#pragma once

#include <QtGlobal>

/// What an output is. A plain number, as it travels in events.
enum TavloPresentOutputType : qint32
{
    TavloPresentOutputTypeRecord = 0,
    TavloPresentOutputTypeNet = 1,
    TavloPresentOutputTypeNDI = 2,
    TavloPresentOutputTypeDecklink = 3,
    // 4 is no output
    TavloPresentOutputTypeHDMI0 = 5,
    TavloPresentOutputTypeHDMI1 = 6,
    TavloPresentOutputTypeHDMI2 = 7,
    TavloPresentOutputTypeHDMI3 = 8,
};

/// Numbers of types, 4 included.
inline constexpr int TavloPresentOutputTypeCount = 9;

/// Outputs of one target.
inline constexpr int TavloPresentOutputIndexCount = 4;
