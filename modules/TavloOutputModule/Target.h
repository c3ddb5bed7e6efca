#pragma once

#include "TavloOutputModule/ByteMeter.h"
#include "TavloOutputModule/Muxer.h"
#include "TavloOutputModule/PacketQueue.h"
#include "shared/Backoff.h"

#include <tavlo/TavloOutputStatistics.h>

#include <atomic>
#include <string>
#include <thread>

namespace tavlo {

/// Where packets go: a thread with a queue, and what a kind of target does with them.
class Target
{
public:
    using State = tagTavloOutputStatistics::State;

    /// \param name   for the log
    /// \param limit  of the queue, microseconds
    Target(std::string name, const StreamFormat& format, qint64 limit);
    virtual ~Target() = default;
    Target(const Target&) = delete;
    Target& operator=(const Target&) = delete;

    /// Begins to take packets. Owner's thread, once.
    void start();

    /// Has it write what waits, close and end; what takes longer than its patience is given up. Owner's thread.
    void end();

    /// Returns when it has ended. Owner's thread; the last thing before the destructor.
    void join();

    /// Any thread; never waits.
    void push(const CodedPacketPtr& packet) { _queue.push(packet); }

    // Figures. Any thread.
    State state() const { return _state.load(std::memory_order_relaxed); }
    quint64 dropped() const { return _queue.dropped(); }
    quint64 written() const { return _written.load(std::memory_order_relaxed); }   ///< pictures, or blocks as `dropped`
    quint64 openings() const { return _openings.load(std::memory_order_relaxed); } ///< files or connections
    virtual quint64 viewers() const { return 0; }                                  ///< who are being served
    virtual quint64 viewerDropped() const { return 0; } ///< pictures that slow ones lost, all together
    ByteMeter videoRate, audioRate;

protected:
    /// Target's thread: one packet, and the end. When `patience` is over behind `end`, calls give up.
    virtual void take(const CodedPacketPtr& packet) = 0;
    virtual void close() = 0;
    virtual std::chrono::milliseconds patience() const = 0;

    void setState(State state) { _state.store(state, std::memory_order_relaxed); }
    void countDropped(const CodedPacket& packet) { _queue.countDropped(packet); }
    void countOpening() { _openings.fetch_add(1, std::memory_order_relaxed); }
    void countWritten(const CodedPacket& packet);
    void tell(const std::string& text) const;

    /// What failed, and that it will be tried again: when `isPausing` has ended, after ever longer times. Behind `end`
    /// nothing is.
    void pause(const std::string& failure);
    bool isPausing() const { return std::chrono::steady_clock::now() < _retryAt; }
    void beginPausesAnew() { _backoff.reset(); }

    const std::string _name;
    const StreamFormat _format;
    Muxer::Limits _limits;

private:
    void run();

    // target's thread
    Backoff _backoff;
    std::chrono::steady_clock::time_point _retryAt{};

    // any thread
    PacketQueue _queue;
    std::atomic<State> _state{State::Opening};
    std::atomic<quint64> _openings{0}, _written{0};
    std::thread _thread; ///< owner's
};

} // namespace tavlo
