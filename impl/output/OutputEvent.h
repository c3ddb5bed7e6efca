#pragma once

#include "graphics/Texture.h"
#include "shared/VlcPointers.h"

#include <tavlo/records/OutputRecords.h>

#include <memory>
#include <semaphore>

namespace tavlo {

enum class OutputEventId : quint64
{
    Texture = 0, ///< a staging texture that holds a composed picture
    Picture = 1,
    Sound = 2,
    StartOutput = 0x40000,
    StopOutput = 0x40001,
    LeafEnded = 0x40002, ///< the thread on which an output of that type was brought to its end
};

/// What a mid node's thread is asked for.
struct OutputEvent
{
    OutputEventId id = OutputEventId::Texture;
    graphics::TexturePtr texture;
    PicturePtr picture;
    BlockPtr block;
    qint64 timestamp = 0; ///< of a texture, microseconds
    int index = 0;        ///< of an output
    int type = 0;
    std::shared_ptr<const tagTavloPresentOutputParam> param;
    std::binary_semaphore* done = nullptr; ///< released behind the event when its poster waits
};

} // namespace tavlo
