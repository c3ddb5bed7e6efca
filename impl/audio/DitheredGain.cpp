#include "audio/DitheredGain.h"

#include "audio/FilterMath.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <limits>

namespace tavlo {

namespace {

constexpr qint64 unity = 1024;
constexpr double loudest = 1024.0;

/// One sequence for all callers. Two at a time may draw the same numbers, which nobody hears.
std::atomic<quint32> dither{0};

template <class Sample>
void scale(void* samples, qsizetype bytes, qint64 gain)
{
    using Limits = std::numeric_limits<Sample>;
    auto* at = static_cast<char*>(samples);
    quint32 state = dither.load(std::memory_order_relaxed);
    for (qsizetype left = bytes / static_cast<qsizetype>(sizeof(Sample)); left > 0; --left, at += sizeof(Sample)) {
        state = state * 1664525U + 1013904223U;
        Sample sample;
        std::memcpy(&sample, at, sizeof sample);
        const qint64 up = state & 0x1FF;
        const qint64 down = (state >> 9) & 0x1FF;
        const qint64 scaled = (up + unity / 2 + sample * gain - down) / unity;
        sample = static_cast<Sample>(std::clamp<qint64>(scaled, Limits::min(), Limits::max()));
        std::memcpy(at, &sample, sizeof sample);
    }
    dither.store(state, std::memory_order_relaxed);
}

} // namespace

void scaleWithDither(void* samples, qsizetype bytes, int bits, double volume)
{
    const auto gain = static_cast<qint64>(std::clamp(finiteOr(volume, 0.0), -loudest, loudest) * double{unity});
    if (bits == 8)
        scale<qint8>(samples, bytes, gain);
    else
        scale<qint16>(samples, bytes, gain);
}

} // namespace tavlo
