#pragma once

#include <QString>

#include <atomic>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <vector>

namespace tavlo {

/// Threads that outlive the play that began them: what they wait for may lie outside the process, so nobody waits for
/// them but whoever wants the same place next and, for a moment, the end of the process. Any thread.
class LooseThreads
{
public:
    /// Set when a thread is to end; kept by the thread.
    using Flag = std::shared_ptr<const std::atomic<bool>>;

    static LooseThreads& instance();

    /// Begins a thread, which first waits for those that were told to end and have the same place. One that is told to
    /// end meanwhile ends with nothing done.
    /// \param name   at most 15 letters
    /// \param place  what only one can have at a time, as people know it: a device; empty for nothing like that
    /// \param work   holds all that it needs
    void start(const char* name, const QString& place, Flag ends, std::function<void()> work);

private:
    struct Running
    {
        std::shared_future<void> ended;
        QString place;
        Flag ends;
    };

    ~LooseThreads();
    void forgetEnded();

    std::mutex _lock;
    std::vector<Running> _running; ///< guarded by _lock
};

} // namespace tavlo
