#pragma once

#include "TavloAudioPortModule/ITavloAudioNoiseSuppress.h"

#include <tavlo/InterfacePtr.h>

#include <speex/speex_preprocess.h>

#include <memory>
#include <vector>

/// Noise suppression by SpeexDSP, each channel on its own.
///
/// The library works on frames of 10 milliseconds and overlaps each with its neighbour. Blocks come in any length, so
/// a frame of input and one of output stand between: together they make the 20 milliseconds of delay.
class TavloAudioNoiseSuppress final : public tavlo::Implements<TavloAudioNoiseSuppress, ITavloAudioNoiseSuppress>
{
public:
    ~TavloAudioNoiseSuppress() = default;

    bool open(int level, int channels, int bits, int rate) override;
    block_t* process(block_t* block, int channels, int bits, int rate, qint64 extra) override;
    void close() override;

private:
    struct DestroyState
    {
        void operator()(SpeexPreprocessState* state) const { speex_preprocess_state_destroy(state); }
    };

    struct Channel
    {
        std::unique_ptr<SpeexPreprocessState, DestroyState> state;
        std::vector<qint16> in;  ///< fills up
        std::vector<qint16> out; ///< the frame before, as it is handed out
    };

    qint16 exchange(Channel& channel, qint16 sample) const;
    void endFrame();

    int _channelCount = 0; ///< 0 while closed
    int _bits = 0;
    int _rate = 0;                  ///< Hz
    std::vector<Channel> _channels; ///< none with a level of 0
    size_t _frameSize = 0;          ///< samples
    size_t _filled = 0;             ///< samples of each channel's `in`
};
