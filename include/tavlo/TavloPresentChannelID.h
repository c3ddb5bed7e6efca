#pragma once

#include <QtGlobal>

/// Addresses a channel: from 0 up the source channels, then the values below.
using TavloPresentChannelID = quint32;

inline constexpr TavloPresentChannelID TavloPresentChannelIDPVM = 4096;
inline constexpr TavloPresentChannelID TavloPresentChannelIDPGM = 4097;    ///< of the Matrix engine: the first of four
inline constexpr TavloPresentChannelID TavloPresentChannelIDCanvas = 8192; ///< the picture of the whole canvas
inline constexpr TavloPresentChannelID TavloPresentChannelIDSelection = 16384; ///< Matrix: the PGM worked on
inline constexpr TavloPresentChannelID TavloPresentChannelIDAll = 65535;       ///< where an event allows it
inline constexpr TavloPresentChannelID TavloPresentChannelIDNone = 65535;      ///< everywhere else

/// How many source channels an engine can mix.
inline constexpr int TavloMixedChannelLimit = 38;

/// How many program busses there are.
inline constexpr int TavloProgramBusCount = 4;
