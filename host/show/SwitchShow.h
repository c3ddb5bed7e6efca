#pragma once

#include "show/Show.h"

#include <QString>
#include <QStringList>

namespace tavlo::host {

/// The source that a name on the command line stands for: an address ("ndi:NAME" among them), a capture device
/// ("/dev/video0", "desktop", "desktop:X,Y,WxH"), a file.
/// \param error  why it stands for none; empty else
tagTavloPresentSourceInfo sourceNamed(const QString& name, QString& error);

/// What such a source is called on the multi-view: a file's name without its suffix, an address's host, a device.
QString labelOf(const QString& name);

/// The recording of a file: its folder, name and kind (.mp4, .mkv, .ts).
bool recordTo(const QString& file, Show& show, QString& error);

/// The stream to an address: rtmp, srt, tcp, udp, http or https. Of srt's query, `mode` and `streamid` and all that
/// FFmpeg knows are kept; of udp's, `ttl`, `localaddr` and `pkt_size`, and others are refused.
bool streamTo(const QString& address, Show& show, QString& error);

} // namespace tavlo::host
