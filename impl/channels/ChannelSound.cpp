#include "channels/ChannelSound.h"

#include <tavlo/TavloPresentUtil.h>
#include <tavlo/records/MediaFormat.h>

#include <utility>

namespace tavlo {

void ChannelSound::setEffect(const tagTavloAudioEffectParam& effect)
{
    const std::lock_guard guard(_lock);
    _wanted = effect;
    _changed = true;
}

tagTavloAudioEffectParam ChannelSound::effect() const
{
    const std::lock_guard guard(_lock);
    return _wanted;
}

void ChannelSound::setRouting(TavloPresentSourceAudioChannelProcessType routing)
{
    const std::lock_guard guard(_lock);
    _routing = routing;
}

block_t* ChannelSound::process(block_t* block, const tagTavloAudioInfo& format)
{
    auto routing = TavloPresentSourceAudioChannelProcessTypeNone;
    bool changed = false;
    {
        const std::lock_guard guard(_lock);
        routing = _routing;
        changed = std::exchange(_changed, false);
        if (changed)
            _effect = _wanted;
    }
    if (changed)
        _chain.reset();
    if (_effect.audioChannelProcessType != TavloPresentSourceAudioChannelProcessTypeNone)
        routing = static_cast<TavloPresentSourceAudioChannelProcessType>(_effect.audioChannelProcessType);
    block = TavloPresentUtil::doAudioChannelProcess(routing, 0, block, format);
    return _chain.process(_effect, block, format.channels, format.bitsPerSample, format.sampleRate, 0);
}

} // namespace tavlo
