#include "graphics/gl/Timeline.h"

#include "graphics/Log.h"

#include <algorithm>
#include <thread>

namespace tavlo::graphics {

Timeline::~Timeline()
{
    for (const Entry& entry : _entries) {
        if (entry.sync != EGL_NO_SYNC)
            eglDestroySync(_display, entry.sync);
    }
}

std::uint64_t Timeline::insert()
{
    const std::uint64_t serial = upcoming();
    const EGLSync sync = eglCreateSync(_display, EGL_SYNC_FENCE, nullptr);
    glFlush();
    if (sync == EGL_NO_SYNC) {
        logFailure("failed to eglCreateSync");
        return serial; // the next one that succeeds stands for this one too
    }

    EGLSync oldest = EGL_NO_SYNC;
    {
        const std::lock_guard guard(_lock);
        // Every entry in use at once would take 64 threads: the newest always finds room beside them.
        Entry* place = nullptr;
        for (Entry& entry : _entries) {
            if (entry.users == 0 && (!place || entry.serial < place->serial))
                place = &entry;
        }
        if (place) {
            oldest = place->sync;
            *place = {sync, serial, 0};
            _submitted.store(serial);
        } else {
            oldest = sync;
        }
    }
    if (oldest != EGL_NO_SYNC)
        eglDestroySync(_display, oldest);
    return serial;
}

Timeline::Entry* Timeline::acquire(std::uint64_t serial)
{
    const std::lock_guard guard(_lock);
    Entry* found = nullptr;
    for (Entry& entry : _entries) {
        if (entry.serial >= serial && (!found || entry.serial < found->serial))
            found = &entry;
    }
    if (found)
        ++found->users;
    return found;
}

void Timeline::release(Entry& entry, bool passed)
{
    const std::lock_guard guard(_lock);
    --entry.users;
    if (passed)
        _passed.store(std::max(_passed.load(), entry.serial));
}

Fence::State Timeline::state(std::uint64_t serial)
{
    if (serial <= _passed.load())
        return Fence::State::Passed;
    if (serial > _submitted.load()) {
        if (!_closed.load())
            return Fence::State::Unsubmitted;
        serial = _submitted.load();
    }
    Entry* entry = acquire(serial);
    if (!entry)
        return Fence::State::Passed; // a closed context that never submitted anything
    EGLAttrib status = EGL_UNSIGNALED;
    const bool passed = !eglGetSyncAttrib(_display, entry->sync, EGL_SYNC_STATUS, &status) || status == EGL_SIGNALED;
    release(*entry, passed);
    return passed ? Fence::State::Passed : Fence::State::Pending;
}

bool Timeline::wait(std::uint64_t serial, std::chrono::nanoseconds timeout)
{
    // Looks again and again instead of a waiting call: some drivers hold the display's lock through that call, and the
    // frame thread needs the lock.
    const auto end = std::chrono::steady_clock::now() + timeout;
    for (;;) {
        switch (state(serial)) {
        case Fence::State::Passed:
            return true;
        case Fence::State::Unsubmitted:
            return false;
        case Fence::State::Pending:
            break;
        }
        if (std::chrono::steady_clock::now() >= end)
            return false;
        std::this_thread::sleep_for(std::chrono::microseconds(250));
    }
}

bool Timeline::waitOnGraphicsProcessor(std::uint64_t serial)
{
    if (serial <= _passed.load())
        return true;
    if (serial > _submitted.load()) {
        if (!_closed.load())
            return false;
        serial = _submitted.load();
    }
    Entry* entry = acquire(serial);
    if (!entry)
        return true;
    const bool ordered = eglWaitSync(_display, entry->sync, 0) == EGL_TRUE;
    release(*entry, false);
    if (!ordered)
        logFailure("failed to eglWaitSync");
    return ordered;
}

Fence::Fence(std::shared_ptr<Timeline> timeline, std::uint64_t serial) : _timeline(std::move(timeline)), _serial(serial)
{}

Fence::State Fence::state() const { return _timeline ? _timeline->state(_serial) : State::Passed; }

bool Fence::wait(std::chrono::nanoseconds timeout) const { return !_timeline || _timeline->wait(_serial, timeout); }

bool Fence::waitOnGraphicsProcessor() const { return !_timeline || _timeline->waitOnGraphicsProcessor(_serial); }

} // namespace tavlo::graphics
