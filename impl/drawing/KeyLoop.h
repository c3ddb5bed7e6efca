#pragma once

#include "graphics/State.h"

#include <tavlo/records/PictureRecords.h>

#include <QSize>

#include <vector>

namespace tavlo {

/// The chroma key as the only thing that is done to a picture of a target's size.
struct LoneKey
{
    QSize size; ///< of the target, pixels
    tagTavloPresentPictureChromaKey key;
    graphics::Rgba cleared{}; ///< what the target holds before
};

/// The key of process.fx's kind as a loop over a picture in memory. Where no graphics processor is, a shader that looks
/// at nine pixels for each one takes most of a keyed source's draw; this takes a tenth of that, on the thread that
/// decodes. Owner's thread.
class KeyLoop
{
public:
    /// Makes of a picture what a target holds after the draw of it: keyed, over what was cleared.
    /// \param pixels  red, green, blue, alpha, a byte each, all opaque; top row first
    /// \param pitch   bytes from row to row
    /// \param lone    for pictures of its size
    void run(quint8* pixels, qsizetype pitch, const LoneKey& lone);

private:
    std::vector<float> _distances; ///< of three rows from the key colour, with a pixel more at each end
};

} // namespace tavlo
