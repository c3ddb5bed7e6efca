#pragma once

#include "audio/TavloAudioFilter.h"

#include <vector>

struct tagTavloAudioProcessParamPitch;

/// Shifts the pitch of the first two channels and keeps the speed.
///
/// The sound goes through a ring of one window; a head reads it at another speed than it is written. Where one head
/// would run over the other, the reading fades to a place further on and goes on from there: to the one, between a
/// crossfade away and a crossfade before the heads meet again, that sounds most alike. A tone keeps its phase so, and
/// with it its pitch.
class TavloAudioFilterPitch final : public TavloAudioFilter
{
public:
    void reset() override;
    int processSamples(const tagTavloAudioEffectParam& param, float* samples, int frames, int channels, int bits,
                       int rate) override;
    bool isEnabled(const tagTavloAudioEffectParam& param, int channels, int bits, int rate) const override;

private:
    struct Frame
    {
        float left, right;
    };

    /// Keeps what a change of speed would fold over half the rate out of the sound.
    struct LowPass
    {
        struct History
        {
            double x1 = 0.0, x2 = 0.0, y1 = 0.0, y2 = 0.0;
        };

        void tune(double ratio, int rate);
        float process(History& history, float x) const;
        Frame process(Frame frame) { return {process(left, frame.left), process(right, frame.right)}; }

        double b0 = 0.0, b1 = 0.0, b2 = 0.0, a1 = 0.0, a2 = 0.0;
        History left, right;
    };

    void derive(const tagTavloAudioProcessParamPitch& pitch, int rate);
    Frame step(Frame in);
    Frame readAt(double position) const;
    Frame readAcrossWriteHead();
    double findJump();
    int findRoughJump(int nearest);
    double likeness(int jump) const;
    int likenessBegin() const;
    Frame meanAt(int position) const;
    double wrapped(double position) const;
    const Frame& frameAt(int position) const;

    int _rate = 0; ///< Hz that the rest is derived for; 0 for none

    // derived from the record
    bool _filterOn = false;
    int _window = 0;    ///< frames of the ring
    int _crossfade = 0; ///< frames, at most half the window
    int _choice = 0;    ///< frames; how far the longest and the shortest jump lie apart
    int _compared = 0;  ///< frames, of the sound at both ends of a jump
    double _ratio = 1.0;
    float _wet = 0.0F;
    float _dry = 0.0F;
    LowPass _lowPass;

    // running
    std::vector<Frame> _ring;
    int _write = 0;
    double _read = 0.0;
    std::vector<Frame> _roughHere, _roughThere; ///< scratch
    double _jump = 0.0;                         ///< frames to the place that the reading fades to; 0 where it does not
};
