#pragma once

#include "TavloCommonModule/player/InputLocation.h"
#include "TavloCommonModule/player/PacketQueue.h"
#include "TavloCommonModule/player/PlayClock.h"
#include "TavloCommonModule/player/PlayProgress.h"
#include "TavloCommonModule/player/StartGate.h"

#include <atomic>
#include <optional>

namespace tavlo {

/// What the threads of one play share. A reading thread that hangs in the system outlives the play and keeps this.
struct PlayContext
{
    PlayContext(ITavloSourcePlayerSink* target, const tagTavloSourcePlayerInfo& record,
                const tagTavloMediaFormatInfo& format, InputPlan inputs)
        : sink(target), info(record), wanted(format), plan(std::move(inputs)), clock(timeOf(target)),
          progress(target, static_cast<int>(plan.entries.size()))
    {}

    /// The sink's own time where it has one.
    static ITavloSourcePlayerTime& timeOf(ITavloSourcePlayerSink* sink)
    {
        auto* const own = query<ITavloSourcePlayerTime>(sink);
        return own ? *own : MonotonicTime::instance();
    }

    /// A place to go to.
    struct Seek
    {
        int item;
        qint64 time; ///< microseconds of the entry
    };

    // fixed after create
    ITavloSourcePlayerSink* const sink; ///< streams' threads only; the others report through `progress`
    const tagTavloSourcePlayerInfo info;
    const tagTavloMediaFormatInfo wanted;
    const InputPlan plan;

    // atomic
    std::atomic<bool> aborted{false};
    std::atomic<unsigned> epoch{0}; ///< what belongs to an earlier one is void
    std::atomic<bool> paused{false};
    std::atomic<bool> deviceClockRuns{false};
    std::atomic<quint64> latePictures{0};        ///< left out
    std::atomic<quint64> picturesWithoutPool{0}; ///< left out: all of the pool's were still held
    std::atomic<quint64> unfitPictures{0};       ///< left out: no picture can be made of them

    // safe by themselves
    PlayClock clock;
    StartGate gate{clock};
    PlayProgress progress;
    PacketQueue pictures;
    PacketQueue sound;

    // guarded by readerLock
    std::mutex readerLock;
    std::condition_variable readerWake;
    std::optional<Seek> seek; ///< the newest, until the reading thread takes it

    bool isOver(unsigned ofEpoch) const { return aborted || epoch != ofEpoch; }

    /// Whoever waits looks around.
    void wakeAll()
    {
        clock.wake();
        gate.wake();
        {
            const std::scoped_lock lock(readerLock);
        }
        readerWake.notify_all();
    }

    /// Reading threads: waits that long, or until playing ends or goes elsewhere. False in these cases.
    bool pause(std::chrono::microseconds duration)
    {
        std::unique_lock lock(readerLock);
        return !readerWake.wait_for(lock, duration, [this] { return aborted || seek.has_value(); });
    }
};

} // namespace tavlo
