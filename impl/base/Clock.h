#pragma once

#include <QtGlobal>

namespace tavlo {

/// Monotonic microseconds since an arbitrary moment. Any thread.
qint64 monotonicMicroseconds();

/// The millisecond clock: monotonic, wraps after 49.7 days. Any thread.
quint32 millisecondClock();

/// The millisecond clock as frame stamps and sources carry it: a signed 32 bit count, widened and times 1000.
quint64 millisecondClockMicroseconds();

} // namespace tavlo
