#pragma once

#include <atomic>
#include <source_location>
#include <thread>

namespace tavlo {

/// Knows the one thread on which some functions may run.
///
/// Unbound, it lets every thread pass: what is checked has not begun yet.
class ThreadCheck
{
public:
    /// From now on only the calling thread passes.
    void bind() { _thread.store(std::this_thread::get_id()); }

    /// Every thread passes again.
    void release() { _thread.store({}); }

    /// Whether the caller may go on. On the wrong thread it logs the function's name and, where assertions are on,
    /// aborts.
    bool passes(std::source_location where = std::source_location::current()) const;

private:
    std::atomic<std::thread::id> _thread{};
};

} // namespace tavlo

/// First line of a function that belongs to one thread: returns the value given (or nothing) on any other.
#define TAVLO_ON_THREAD(check, ...)                                                                                    \
    do {                                                                                                               \
        if (!(check).passes())                                                                                         \
            return __VA_ARGS__;                                                                                        \
    } while (false)
