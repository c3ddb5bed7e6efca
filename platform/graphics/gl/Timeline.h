#pragma once

#include "graphics/Fence.h"
#include "graphics/gl/GlApi.h"

#include <array>
#include <atomic>
#include <chrono>
#include <mutex>

namespace tavlo::graphics {

/// The fences of one context, numbered in the order of its work.
///
/// It keeps the newest 64. One that fell out is answered by the next newer, which passes later: what waits for it waits
/// longer than it had to, never shorter. Nothing is allocated after construction.
class Timeline
{
public:
    explicit Timeline(EGLDisplay display) : _display(display) {}
    ~Timeline();
    Timeline(const Timeline&) = delete;
    Timeline& operator=(const Timeline&) = delete;

    /// The number that the next fence will get. Owner's thread.
    std::uint64_t upcoming() const { return _submitted.load() + 1; }

    /// Puts a fence behind the work so far of the context, which is current, and sends it off. Owner's thread.
    std::uint64_t insert();

    /// The context is gone: no fence will follow.
    void close() { _closed.store(true); }

    // Any thread.
    Fence::State state(std::uint64_t serial);
    bool wait(std::uint64_t serial, std::chrono::nanoseconds timeout);
    bool waitOnGraphicsProcessor(std::uint64_t serial);

private:
    struct Entry
    {
        EGLSync sync = EGL_NO_SYNC;
        std::uint64_t serial = 0;
        int users = 0; ///< threads that look at `sync` outside the lock
    };

    Entry* acquire(std::uint64_t serial);
    void release(Entry& entry, bool passed);

    const EGLDisplay _display;
    std::atomic<std::uint64_t> _submitted{0};
    std::atomic<std::uint64_t> _passed{0};
    std::atomic<bool> _closed{false};

    std::mutex _lock;
    std::array<Entry, 64> _entries; // guarded by _lock
};

} // namespace tavlo::graphics
