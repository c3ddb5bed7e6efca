#pragma once

#include "audio/TavloAudioFilter.h"

#include <cstdlib>
#include <memory>

struct tagTavloAudioProcessParamDelay;

/// An echo with feedback on the first two channels.
///
/// What is stored outlives `reset`, so that a new delay can stretch it and the echo goes on.
class TavloAudioFilterDelay final : public TavloAudioFilter
{
public:
    /// The store's size, and so the longest delay: stereo frames.
    static constexpr int capacity = 250'000;

    TavloAudioFilterDelay();

    void reset() override;
    int processSamples(const tagTavloAudioEffectParam& param, float* samples, int frames, int channels, int bits,
                       int rate) override;
    bool isEnabled(const tagTavloAudioEffectParam& param, int channels, int bits, int rate) const override;

private:
    struct Frame
    {
        float left, right;
    };
    struct Free
    {
        void operator()(Frame* frames) const { std::free(frames); }
    };

    void derive(const tagTavloAudioProcessParamDelay& delay, int rate);
    void stretch(double oldLength, double newLength);

    /// From the system's zeroed pages: those that no delay reaches take no memory.
    std::unique_ptr<Frame[], Free> _store;
    int _rate = 0; ///< Hz that the rest is derived for; 0 for none

    // derived from the record
    double _length = 0.0; ///< frames
    float _feedback = 0.0F;
    float _mixin = 0.0F;
    float _wet = 0.0F;
    float _dry = 0.0F;

    int _position = 0; ///< of the next frame in the store
};
