#pragma once

#include "frame/ITavloPresentEnginePrivate.h"

#include "graphics/Device.h"
#include "scene/Node.h"

#include <QString>

namespace tavlo {

/// What makes channels differ. A set of bits.
enum ChannelFlag : quint32
{
    ChannelClearsBlack = 0x1,       ///< each frame begins with opaque black, and pictures are fitted into it (PVM)
    ChannelWithoutLevelBars = 0x2,  ///<
    ChannelMakesOutput = 0x4,       ///< has an output target
    ChannelOutputsCopy = 0x8,       ///< its frames go out as copies, so that the next one may be drawn meanwhile
    ChannelWithoutChequer = 0x10,   ///< nothing shows through what is transparent (PVM)
    ChannelMonitorsAll = 0x20,      ///< the sound of every channel is heard, not of the shown one alone (PVM)
    ChannelWithoutTouch = 0x40,     ///< (PVM)
    ChannelWithoutMonitor = 0x80,   ///< no sound device (PVM)
    ChannelBlackBackground = 0x100, ///< (PVM)
    ChannelClickSelects = 0x1000,   ///< a click on the view tells the host (PGM)
    ChannelWithoutMix = 0x2000,     ///< no sound is mixed (PGM)
};

enum class ChannelType : quint32
{
    Source = 1,
    Pvm = 2,
    Pgm = 3,
};

/// Who a channel is and where it lives. All pointers lent, and there as long as the channel.
struct ChannelSite
{
    ITavloPresentEnginePrivate* engine = nullptr;
    int channelId = 0;
    scene::Director* director = nullptr;
    scene::GLView* view = nullptr;
    scene::Node* parentLayer = nullptr; ///< the multi-view's canvas; null for a channel that is not seen there
    graphics::DevicePtr device;
    graphics::ContextPtr context; ///< the immediate one
    QString name;                 ///< "PGM", "PVM" or a number
    quint32 flags = 0;            ///< a set of ChannelFlag
};

/// Where things stand on the canvas, one above the other.
enum CanvasOrder : int
{
    CanvasOrderBackground = 1,
    CanvasOrderSource = 4097,
    CanvasOrderComposite = 4098, ///< sources that show other channels
    CanvasOrderPvm = 4100,
    CanvasOrderPgm = 4104,
    CanvasOrderMarks = 0x1010, ///< labels, level bars, frames
    CanvasOrderHighlight = 0x1020,
};

} // namespace tavlo
