#pragma once

#include <QtGlobal>

struct block_t;
struct tagTavloAudioEffectParam;

/// One step of a channel's sound filters.
///
/// A filter keeps the sample rate that its state is derived for and derives it anew when a block comes at another
/// one. A change of the record counts after `reset`. Channel's audio thread, all of it.
class TavloAudioFilter
{
public:
    TavloAudioFilter() = default;
    TavloAudioFilter(const TavloAudioFilter&) = delete;
    TavloAudioFilter& operator=(const TavloAudioFilter&) = delete;
    virtual ~TavloAudioFilter() = default;

    /// Forgets the sample rate: the next block derives all state from the record.
    virtual void reset() = 0;

    /// For filters of the raw block.
    /// \param bits   8 (unsigned) or 16 (signed) a sample
    /// \param extra  the caller's, passed on untouched
    /// \return the block to go on with
    virtual block_t* processBlock(const tagTavloAudioEffectParam& param, block_t* block, int channels, int bits,
                                  int rate, qint64 extra);

    /// For filters of samples, in place.
    /// \param samples  `frames` times `channels` interleaved samples, 1.0 is full scale
    /// \return the frames handled, 0 when the filter did nothing
    virtual int processSamples(const tagTavloAudioEffectParam& param, float* samples, int frames, int channels,
                               int bits, int rate);

    /// Whether the filter has work to do for this record.
    virtual bool isEnabled(const tagTavloAudioEffectParam& param, int channels, int bits, int rate) const = 0;
};
