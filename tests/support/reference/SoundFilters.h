#pragma once

#include <array>
#include <cstddef>
#include <vector>

struct tagTavloAudioProcessParamDelay;
struct tagTavloAudioProcessParamNoiseGate;
struct tagTavloAudioProcessParamPitch;
struct tagTavloAudioProcessParamVolcalCut;
struct tagTavloEQualizerParam;

// The sound filters' formulas in doubles, one frame after the other. Sound is interleaved stereo, where nothing else is
// said; rates are in Hz.

namespace tavlo::test {

std::vector<double> gateReference(const std::vector<float>& in, const tagTavloAudioProcessParamNoiseGate& p,
                                  double rate);

std::vector<double> vocalCutReference(const std::vector<float>& in, const tagTavloAudioProcessParamVolcalCut& p,
                                      double rate);

/// Hz.
inline constexpr std::array<double, 10> equalizerCentres{60, 170, 310, 600, 1000, 3000, 6000, 12000, 14000, 16000};

/// The factor of a level in dB.
double factor(double decibels);

/// What an impulse of 1 becomes, one channel.
std::vector<double> equalizerReference(const tagTavloEQualizerParam& p, double rate, size_t count);

/// The magnitude of an impulse response.
double response(const std::vector<float>& impulse, double frequency, double rate);

/// What an impulse becomes, with echoes.
std::vector<double> echoReference(const tagTavloAudioProcessParamDelay& p, double left, double right, double rate,
                                  size_t frames);

/// For a crossfade of half the window, or a ratio of 1: one long store with both channels' rings in it.
std::vector<double> pitchReference(const std::vector<float>& in, const tagTavloAudioProcessParamPitch& p, double rate);

} // namespace tavlo::test
