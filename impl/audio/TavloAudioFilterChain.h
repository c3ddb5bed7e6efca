#pragma once

#include <QtGlobal>

#include <memory>
#include <vector>

class TavloAudioFilter;
struct block_t;
struct tagTavloAudioEffectParam;

/// The sound filters of one channel, in their order: noise suppression, noise gate, vocal cut, equalizer, delay,
/// pitch.
///
/// Channel's audio thread. Who changes the record does so under the lock that the block path holds, and calls `reset`.
class TavloAudioFilterChain
{
public:
    TavloAudioFilterChain();
    ~TavloAudioFilterChain();
    TavloAudioFilterChain(const TavloAudioFilterChain&) = delete;
    TavloAudioFilterChain& operator=(const TavloAudioFilterChain&) = delete;

    /// Makes the filters, earlier ones destroyed first.
    void create();

    /// Without filters `process` returns each block as it is.
    void destroy();

    /// Makes a changed record count.
    void reset();

    /// Runs the block through the filters that the record switches on, in place. Nothing is allocated once the scratch
    /// buffer has grown to the longest block.
    /// \param bits   8 (unsigned) or 16 (signed) a sample; a block of others is logged and stays as it is
    /// \param extra  for the noise suppression
    /// \return the block to go on with
    block_t* process(const tagTavloAudioEffectParam& param, block_t* block, int channels, int bits, int rate,
                     qint64 extra);

private:
    void processSamples(const tagTavloAudioEffectParam& param, block_t& block, int channels, int bits, int rate);
    float* scratch(size_t count);

    std::vector<std::unique_ptr<TavloAudioFilter>> _blockFilters;
    std::vector<std::unique_ptr<TavloAudioFilter>> _sampleFilters;
    std::unique_ptr<float[]> _scratch;
    size_t _scratchCapacity = 0; ///< samples
};
