#include <tavlo/TavloPresentUtil.h>

#include "shared/VlcTypes.h"

#include <tavlo/records/AudioRecords.h>
#include <tavlo/records/MediaFormat.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace {

/// Routes one frame whose two samples stand at `left` and `right`.
template <class Sample>
void routeFrame(TavloPresentSourceAudioChannelProcessType type, quint8* left, quint8* right)
{
    Sample l, r;
    std::memcpy(&l, left, sizeof l);
    std::memcpy(&r, right, sizeof r);
    if (type != TavloPresentSourceAudioChannelProcessTypeLeftToBoth)
        std::memcpy(left, &r, sizeof r);
    if (type != TavloPresentSourceAudioChannelProcessTypeRightToBoth)
        std::memcpy(right, &l, sizeof l);
}

/// \param stride  bytes of a frame; the right sample stands in its middle
template <class Sample>
void routeFrames(TavloPresentSourceAudioChannelProcessType type, quint8* samples, size_t frames, size_t stride)
{
    for (size_t i = 0; i < frames; ++i, samples += stride)
        routeFrame<Sample>(type, samples, samples + stride / 2);
}

constexpr size_t meterChannels = 8;

/// The meter's percent for a mean magnitude in 1/32768 of full scale, times 2: the meter counts whole dB, and 0 dB,
/// which only full-scale square waves reach, reads as silence.
double meterPercent(quint64 doubledMean)
{
    const double magnitude = static_cast<double>(doubledMean) * 1.52587890625e-5;
    const long decibels = magnitude > 0.0 ? std::lround(20.0 * std::log10(magnitude)) : 0;
    return decibels == 0 ? 0.0 : 2.0 * static_cast<double>(decibels) + 100.0;
}

} // namespace

// An 8-bit block keeps its last byte, and with an even size its last frame.
block_t* TavloPresentUtil::doAudioChannelProcess(TavloPresentSourceAudioChannelProcessType type, unsigned,
                                                 block_t* block, const tagTavloAudioInfo& format)
{
    if (!block || type < TavloPresentSourceAudioChannelProcessTypeLeftToBoth ||
        type > TavloPresentSourceAudioChannelProcessTypeSwap || format.channels != 2)
        return block;
    if (format.bitsPerSample == 8) {
        if (block->i_buffer > 0)
            routeFrames<quint8>(type, block->p_buffer, (block->i_buffer - 1) / 2, 2);
    } else if (format.bitsPerSample >= 16) {
        const auto stride = static_cast<size_t>(format.bitsPerSample) * 2 / 8;
        routeFrames<quint16>(type, block->p_buffer, block->i_buffer / stride, stride);
    }
    return block;
}

void TavloPresentUtil::updateAudioLevelData(float* levels, const void* samples, unsigned bytes, int channels, int bits,
                                            int, double scale)
{
    if (bits == 0)
        bits = 16;
    if (!levels || !samples || bytes == 0 || channels <= 0 || bits < 8)
        return;
    const auto stride = static_cast<size_t>(channels);
    const size_t frameBytes = static_cast<size_t>(bits) * stride / 8;
    const size_t frames = bytes / 2 / frameBytes;
    if (frames == 0)
        return;
    const size_t metered = std::min(stride, meterChannels);
    std::array<quint64, meterChannels> sums{};
    const auto* at = static_cast<const quint8*>(samples);
    for (size_t i = 0; i < frames; ++i, at += stride * sizeof(qint16)) {
        for (size_t c = 0; c < metered; ++c) {
            qint16 sample;
            std::memcpy(&sample, at + c * sizeof sample, sizeof sample);
            sums[c] += static_cast<quint64>(std::abs(int{sample})) * 65536;
        }
    }
    for (size_t c = 0; c < metered; ++c) {
        const double level = meterPercent(sums[c] / frames / 32768) * scale;
        levels[c] = level > 0.0 ? static_cast<float>(level) : 0.0F;
    }
}
