#pragma once

#include <memory>
#include <vector>

struct SwrContext;

namespace tavlo {

/// How the samples of a block lie: interleaved, 8 (unsigned), 16 (signed) or 32 (floats) bits each.
struct SoundFormat
{
    int channels = 0;
    int bits = 0;
    int rate = 0; ///< Hz

    int frameBytes() const { return channels * bits / 8; }
    bool operator==(const SoundFormat&) const = default;
};

/// Converts blocks to interleaved floats of one rate and count of channels, at a speed that can be trimmed while it
/// runs, without a seam. Owner's thread.
class DriftResampler
{
public:
    DriftResampler(int channels, int rate);
    ~DriftResampler();
    DriftResampler(const DriftResampler&) = delete;
    DriftResampler& operator=(const DriftResampler&) = delete;

    /// Gets ready for blocks of a format; nothing happens when it is the one of before. False when it cannot be
    /// converted.
    bool setSource(const SoundFormat& format);

    const SoundFormat& source() const { return _source; }

    /// Converts a block of the source's format. Allocates where a block is longer than all before.
    /// \param trim  the share of the sound to leave out: 1e-4 makes 10000 frames 9999
    /// \return the frames in `samples`; -1 when it failed
    int convert(const void* data, int frames, double trim);

    /// What the last call converted.
    float* samples() { return _samples.data(); }

private:
    struct FreeContext
    {
        void operator()(SwrContext* context) const;
    };

    const int _channels;
    const int _rate; ///< Hz
    SoundFormat _source;
    std::unique_ptr<SwrContext, FreeContext> _context;
    std::vector<float> _samples;
};

} // namespace tavlo
