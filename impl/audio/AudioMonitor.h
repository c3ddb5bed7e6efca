#pragma once

#include "base/CTempldateHelper.h"

#include "TavloAudioPortModule/ITavloAudioPortRender.h"

#include <tavlo/records/MediaFormat.h>

#include <QByteArray>
#include <QString>

#include <mutex>

namespace tavlo {

using CTavloAudioPortRenderOutputHelper = CTempldateHelper<ITavloAudioPortRender>;

/// Lets an operator hear one stream on a device of its own. A missing device or module means silence and nothing else.
/// Any thread.
class AudioMonitor
{
public:
    AudioMonitor();

    /// Opens the device, an earlier one closed first. False when it cannot be opened, and for "None" and "Disable",
    /// which are no device.
    bool open(const QString& deviceName, const tagTavloAudioInfo& format);

    void close();

    bool isOpen() const;

    /// Plays a copy of a block of the format of `open`. Allocates where a block is longer than all before.
    /// \param length bytes \param volume a factor; at 1 the samples are played as they are
    void write(const void* samples, int length, double volume);

private:
    mutable std::mutex _lock;

    // guarded by _lock
    CTavloAudioPortRenderOutputHelper _render;
    tagTavloAudioInfo _format;
    QByteArray _buffer;
    bool _isOpen = false;
};

} // namespace tavlo
