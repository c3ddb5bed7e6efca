#pragma once

#include "audio/TavloAudioFilter.h"

#include <array>

struct tagTavloEQualizerParam;

/// A graphic equalizer of ten bands, each one octave wide, for up to 32 channels. Further channels stay as they are.
///
/// The gains are read on every block. With all gains at 0 dB and no preamp the sound comes out at a quarter: the
/// presets' preamp of 8 dB is made for that headroom.
class TavloAudioFilterEqualizer final : public TavloAudioFilter
{
public:
    static constexpr int bandCount = 10;
    static constexpr int channelLimit = 32;

    void reset() override;
    int processSamples(const tagTavloAudioEffectParam& param, float* samples, int frames, int channels, int bits,
                       int rate) override;
    bool isEnabled(const tagTavloAudioEffectParam& param, int channels, int bits, int rate) const override;

private:
    using Bands = std::array<double, bandCount>;

    struct Channel
    {
        double x1 = 0.0, x2 = 0.0;
        Bands y1{}, y2{};
    };

    void derive(int rate);
    void processChannel(Channel& state, const Bands& amps, double preamp, float* samples, int frames, int stride) const;

    int _rate = 0; ///< Hz that the coefficients are derived for; 0 for none

    // derived from the rate
    Bands _alpha{}, _beta{}, _gamma{};

    std::array<Channel, channelLimit> _channels{};
};
