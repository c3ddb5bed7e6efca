#include "audio/AudioSupport.h"

#include "audio/TavloAudioFilter.h"

#include <algorithm>
#include <array>

namespace tavlo::test {

BlockPtr blockOf(const void* data, size_t bytes)
{
    BlockPtr block(block_Alloc(bytes));
    if (bytes > 0)
        memcpy(block->p_buffer, data, bytes);
    return block;
}

std::vector<float> run(TavloAudioFilter& filter, const tagTavloAudioEffectParam& param, std::vector<float> samples,
                       int channels, int rate)
{
    constexpr std::array lengths{480, 1, 1024, 7, 960};
    const int frames = static_cast<int>(samples.size()) / channels;
    size_t turn = 0;
    for (int done = 0; done < frames;) {
        const int length = std::min(lengths[turn++ % lengths.size()], frames - done);
        filter.processSamples(param, samples.data() + done * channels, length, channels, 16, rate);
        done += length;
    }
    return samples;
}

} // namespace tavlo::test
