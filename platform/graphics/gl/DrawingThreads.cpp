#include "graphics/gl/DrawingThreads.h"

#include <sched.h>

#include <charconv>
#include <filesystem>
#include <fstream>
#include <string>

namespace tavlo::graphics {

void raiseDrawingThreads()
{
    const int policy = sched_getscheduler(0) & ~SCHED_RESET_ON_FORK;
    if (policy != SCHED_RR && policy != SCHED_FIFO)
        return;
    sched_param priority{};
    priority.sched_priority = sched_get_priority_min(SCHED_RR);
    std::error_code failure;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task", failure)) {
        std::string name;
        std::getline(std::ifstream(task.path() / "comm"), name);
        const std::string number = task.path().filename();
        pid_t thread = 0;
        std::from_chars(number.data(), number.data() + number.size(), thread);
        if (thread > 0 && name.starts_with("llvmpipe-"))
            sched_setscheduler(thread, SCHED_RR | SCHED_RESET_ON_FORK, &priority);
    }
}

} // namespace tavlo::graphics
