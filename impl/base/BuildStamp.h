#pragma once

#include <QtGlobal>

namespace tavlo {

/// The number of this build: its date and time as yyyymmddhhmmss. Whatever changes in the library changes it. Any thread.
quint64 buildStamp();

} // namespace tavlo
