#pragma once

#include "show/Show.h"

#include <QString>
#include <QStringList>

namespace tavlo::host {

/// The source that a name on the command line stands for: an address, a capture device ("/dev/video0"), a file.
/// \param error  why it stands for none; empty else
tagTavloPresentSourceInfo sourceNamed(const QString& name, QString& error);

/// The recording of a file: its folder, name and kind (.mp4, .mkv, .ts).
bool recordTo(const QString& file, Show& show, QString& error);

/// The stream to an address: rtmp, srt, tcp, udp, http or https.
bool streamTo(const QString& address, Show& show, QString& error);

} // namespace tavlo::host
