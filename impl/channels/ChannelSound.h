#pragma once

#include "audio/TavloAudioFilterChain.h"

#include <tavlo/records/AudioRecords.h>

#include <mutex>

namespace tavlo {

/// A channel's sound filters: set on the frame thread, run on the source's audio thread. The lock inside is held for
/// a copy.
class ChannelSound
{
public:
    /// Before sound comes, and after it has ended.
    void create() { _chain.create(); }
    void destroy() { _chain.destroy(); }

    /// Counts from the next block on. Any thread.
    void setEffect(const tagTavloAudioEffectParam& effect);

    /// What was set last. Any thread.
    tagTavloAudioEffectParam effect() const;

    /// How the sides of a stereo source are routed. Any thread.
    void setRouting(TavloPresentSourceAudioChannelProcessType routing);

    /// Routes and filters a block in place. The source's audio thread. \return the block to go on with
    block_t* process(block_t* block, const tagTavloAudioInfo& format);

private:
    mutable std::mutex _lock;
    // guarded by _lock
    tagTavloAudioEffectParam _wanted;
    TavloPresentSourceAudioChannelProcessType _routing = TavloPresentSourceAudioChannelProcessTypeNone;
    bool _changed = false;

    // audio thread
    TavloAudioFilterChain _chain;
    tagTavloAudioEffectParam _effect;
};

} // namespace tavlo
