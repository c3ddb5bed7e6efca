#include "audio/TavloAudioFilter.h"

block_t* TavloAudioFilter::processBlock(const tagTavloAudioEffectParam&, block_t* block, int, int, int, qint64)
{
    return block;
}

int TavloAudioFilter::processSamples(const tagTavloAudioEffectParam&, float*, int frames, int, int, int)
{
    return frames;
}
