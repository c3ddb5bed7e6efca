#pragma once

#include <cerrno>
#include <sched.h>

namespace tavlo {

/// Lets the calling thread go before all normal ones, and before the threads that the software renderer draws with,
/// which have the lowest real-time priority. What the thread starts does not inherit it: threads of one priority take
/// turns of a tenth of a second, so a decoder would hold a frame up for as long.
/// \return 0, or `errno`: not every user is allowed to
inline int askForRealTime()
{
    sched_param priority{};
    priority.sched_priority = sched_get_priority_min(SCHED_RR) + 1;
    return sched_setscheduler(0, SCHED_RR | SCHED_RESET_ON_FORK, &priority) == 0 ? 0 : errno;
}

} // namespace tavlo
