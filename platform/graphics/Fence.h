#pragma once

#include <chrono>
#include <cstdint>
#include <memory>

namespace tavlo::graphics {

class Timeline;

/// A moment in the work of one context, after which everything submitted before it is done.
///
/// A value that is cheap to copy and outlives its context. Any thread; waiting needs no context.
class Fence
{
public:
    enum class State : std::uint8_t
    {
        Unsubmitted, ///< the context has not flushed yet: only its owner can make it pass
        Pending,
        Passed,
    };

    /// A fence that has passed.
    Fence() = default;
    Fence(std::shared_ptr<Timeline> timeline, std::uint64_t serial);

    State state() const;
    bool passed() const { return state() == State::Passed; }

    /// Waits on the processor. False when the time is over, or when the fence was never submitted.
    bool wait(std::chrono::nanoseconds timeout) const;

    /// Makes the context that is current on this thread wait, on the graphics processor. False, and nothing waits,
    /// when the fence was not submitted.
    bool waitOnGraphicsProcessor() const;

    /// Whether the fence belongs to that context's work, where order needs no wait.
    bool isOf(const Timeline* timeline) const { return _timeline.get() == timeline; }

private:
    std::shared_ptr<Timeline> _timeline;
    std::uint64_t _serial = 0;
};

} // namespace tavlo::graphics
