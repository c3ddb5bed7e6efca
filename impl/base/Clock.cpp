#include "base/Clock.h"

#include <chrono>

namespace tavlo {

qint64 monotonicMicroseconds()
{
    using namespace std::chrono;
    return duration_cast<microseconds>(steady_clock::now().time_since_epoch()).count();
}

quint32 millisecondClock() { return static_cast<quint32>(monotonicMicroseconds() / 1000); }

quint64 millisecondClockMicroseconds()
{
    return static_cast<quint64>(qint64{static_cast<qint32>(millisecondClock())} * 1000);
}

} // namespace tavlo
