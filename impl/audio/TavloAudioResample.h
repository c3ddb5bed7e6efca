#pragma once

#include "shared/VlcTypes.h"

#include <tavlo/records/MediaFormat.h>

#include <memory>

struct SwrContext;

/// Converts blocks to one sound format: rate, sample format and channels. Owner's thread.
class TavloAudioResample
{
public:
    explicit TavloAudioResample(const tagTavloAudioInfo& output = {});
    ~TavloAudioResample();
    TavloAudioResample(const TavloAudioResample&) = delete;
    TavloAudioResample& operator=(const TavloAudioResample&) = delete;

    /// The format to convert to. What the converter still holds is dropped when it is another one.
    void setOutput(const tagTavloAudioInfo& output);
    const tagTavloAudioInfo& output() const { return _output; }

    /// \param block  lent, interleaved samples of the source's format; null gives null
    /// \return the block itself when nothing is to be converted; else the converter's own block, lent until the next
    ///         call, which carries the block's times; null when it failed or as long as all sound is held back by the
    ///         filter's delay
    block_t* process(block_t* block, const tagTavloAudioInfo& source);

private:
    struct FreeContext
    {
        void operator()(SwrContext* context) const;
    };
    struct FreeSamples
    {
        void operator()(quint8* samples) const;
    };

    bool open(const tagTavloAudioInfo& source);
    void close();
    bool reserve(int frames);

    tagTavloAudioInfo _output;
    tagTavloAudioInfo _source; ///< what the context is built for
    std::unique_ptr<SwrContext, FreeContext> _context;
    std::unique_ptr<quint8, FreeSamples> _samples;
    int _capacity = 0; ///< frames of `_samples`
    block_t _block{};
};
