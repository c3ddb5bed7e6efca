#pragma once

#include <tavlo/records/OutputRecords.h>

#include <algorithm>
#include <thread>

namespace tavlo {

// The most that the settings can ask an encoder for.
constexpr quint32 mostBidirectional = 16; ///< pictures in a row
constexpr quint32 mostLookahead = 60;     ///< pictures
constexpr quint32 mostThreads = 64;

/// How many pictures an encoder of these settings may hold before it gives out the first.
inline quint32 heldPictures(const tagTavloPresentOutputParam& param)
{
    const auto& settings = param.encoderSettings;
    const quint32 threads = settings[4] ? settings[4] : std::thread::hardware_concurrency() * 3 / 2; // libx264's choice
    return std::min(settings[0], mostBidirectional) + std::min(settings[2], mostLookahead) +
           std::min(threads, mostThreads);
}

} // namespace tavlo
