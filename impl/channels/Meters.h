#pragma once

#include <tavlo/TavloPresentUtil.h>
#include <tavlo/records/AudioRecords.h>
#include <tavlo/records/MediaFormat.h>

#include "base/Clock.h"

#include <atomic>

namespace tavlo {

using Meter = tagTavloPresentAudioLevel::Meter;

/// What a meter shows now: 0 when its last block is a second old. Any thread.
inline float meterLevel(Meter& meter, std::size_t side, quint32& time)
{
    constexpr quint32 staleMilliseconds = 999;
    const quint32 measured = std::atomic_ref(time).load(std::memory_order_relaxed); // before now is
    const quint32 age = millisecondClock() - measured;
    return age > staleMilliseconds ? 0.0F : std::atomic_ref(meter[side]).load(std::memory_order_relaxed);
}

/// Measures a block into a meter. One thread for each meter; others may read it meanwhile.
/// \param scale  volume at which the block sounds
inline void measureBlock(Meter& meter, quint32& time, const void* samples, std::size_t bytes,
                         const tagTavloAudioInfo& format, double scale)
{
    Meter measured{};
    for (std::size_t side = 0; side < measured.size(); ++side)
        measured[side] = std::atomic_ref(meter[side]).load(std::memory_order_relaxed);
    TavloPresentUtil::updateAudioLevelData(measured.data(), samples, static_cast<unsigned>(bytes), format.channels,
                                           format.bitsPerSample, format.sampleRate, scale);
    for (std::size_t side = 0; side < measured.size(); ++side)
        std::atomic_ref(meter[side]).store(measured[side], std::memory_order_relaxed);
    std::atomic_ref(time).store(millisecondClock(), std::memory_order_relaxed);
}

} // namespace tavlo
