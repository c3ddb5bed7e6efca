#include "audio/TavloAudioFilterPitch.h"

#include "audio/FilterMath.h"

#include <tavlo/records/AudioRecords.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr double longestWindow = 1000.0; ///< milliseconds
constexpr int mostFrames = 768'000;      ///< of the window, whatever rate a format claims
constexpr double longestPeriod = 10.0;   ///< milliseconds; among jumps that differ by a period one keeps the phase
constexpr int roughness = 4;             ///< frames that make one in the first, rough look at all jumps
constexpr double mostOctaves = 6.0;      ///< either way: beyond, a step would be longer than the shortest window

int framesOf(double milliseconds, int rate)
{
    const double frames = std::min(tavlo::finiteOr(milliseconds, 0.0), longestWindow) * 0.001 * rate;
    return static_cast<int>(std::clamp(frames, 0.0, double{mostFrames}));
}

/// The correlation of two sounds, by the strength of the second.
class Likeness
{
public:
    template <class Frame>
    void add(const Frame& a, const Frame& b)
    {
        _product += a.left * b.left + a.right * b.right;
        _power += b.left * b.left + b.right * b.right;
    }

    double value() const { return _product / std::sqrt(_power); }

private:
    float _product = 0.0F;
    float _power = 1e-12F;
};

} // namespace

void TavloAudioFilterPitch::reset() { _rate = 0; }

bool TavloAudioFilterPitch::isEnabled(const tagTavloAudioEffectParam& param, int, int, int) const
{
    return TavloAudioPresetIsPitch(param.preset);
}

int TavloAudioFilterPitch::processSamples(const tagTavloAudioEffectParam& param, float* samples, int frames,
                                          int channels, int bits, int rate)
{
    if (!isEnabled(param, channels, bits, rate) || rate <= 0)
        return 0;
    if (rate != _rate)
        derive(param.processPitch, rate);
    for (int i = 0; i < frames; ++i, samples += channels) {
        const Frame in{samples[0], channels > 1 ? samples[1] : 0.0F};
        const Frame out = step(in);
        samples[0] = out.left;
        if (channels > 1)
            samples[1] = out.right;
    }
    return frames;
}

void TavloAudioFilterPitch::derive(const tagTavloAudioProcessParamPitch& pitch, int rate)
{
    _rate = rate;
    _filterOn = pitch.discreteFilterValue > 0.5;
    _window = std::max(framesOf(pitch.windowSizeMsValue, rate), 2);
    _crossfade = std::min(framesOf(pitch.overlapSizeMsValue, rate), _window / 2);
    _choice = std::min(_window - 2 * _crossfade, framesOf(longestPeriod, rate));
    _compared = std::min(_crossfade, _choice);
    _roughHere.resize(static_cast<size_t>(_compared / roughness));
    _roughThere.resize(static_cast<size_t>((_compared + _choice) / roughness));
    const double octaves = (pitch.centsPitchValue * 0.01 + pitch.semitonesPitchValue) / 12.0 + pitch.octavesPitchValue;
    _ratio = std::exp2(std::clamp(tavlo::finiteOr(octaves, 0.0), -mostOctaves, mostOctaves));
    _lowPass.tune(_ratio, rate);
    _dry = static_cast<float>(tavlo::sixthsToFactor(pitch.dryMixValue));
    _wet = static_cast<float>(tavlo::sixthsToFactor(pitch.wetMixValue));

    _ring.assign(static_cast<size_t>(_window), {0.0F, 0.0F});
    _write = 0;
    _read = _window / 2;
    _jump = 0.0;
}

TavloAudioFilterPitch::Frame TavloAudioFilterPitch::step(Frame in)
{
    Frame out = readAcrossWriteHead();
    _read = wrapped(_read + _ratio);
    const bool filterInput = _filterOn && _ratio > 1.0;
    _ring[static_cast<size_t>(_write)] = filterInput ? _lowPass.process(in) : in;
    out = {out.left * _wet, out.right * _wet};
    if (_filterOn && _ratio < 1.0)
        out = _lowPass.process(out);
    if (++_write >= _window)
        _write = 0;
    return {in.left * _dry + out.left, in.right * _dry + out.right};
}

/// What the head reads now. A head faster than the writing one comes up to it from behind, a slower one is caught up
/// with from behind; near the meeting the sound fades to what lies a jump ahead.
TavloAudioFilterPitch::Frame TavloAudioFilterPitch::readAcrossWriteHead()
{
    const Frame here = readAt(_read);
    double distance = 0.0; // frames to the meeting
    if (_ratio >= 1.0)
        distance = _write - (_read > _write ? _read - _window : _read);
    else
        distance = (_read < _write ? _read + _window : _read) - _write;
    const bool meeting =
        _ratio >= 1.0 ? distance > 0.0 && distance <= _crossfade : distance >= 0.0 && distance < _crossfade;
    if (!meeting) {
        _jump = 0.0;
        return here;
    }
    if (_jump == 0.0)
        _jump = findJump();
    const double ahead = wrapped(_read + _jump);
    const Frame there = readAt(ahead);
    const auto t = static_cast<float>(distance / _crossfade);
    // Before the heads stand on one frame, which a whole ratio would have them do: there the oldest sound begins.
    const bool meetsNext = _ratio >= 1.0 ? distance <= _ratio - 1.0 : distance < 1.0 - _ratio;
    if (meetsNext) {
        _read = ahead;
        _jump = 0.0;
    }
    return {t * here.left + (1.0F - t) * there.left, t * here.right + (1.0F - t) * there.right};
}

/// The jump whose end is most like its beginning. A head that is caught up with jumps as far as it can before it is
/// faded to from behind; a faster one jumps, round the ring, as far back.
double TavloAudioFilterPitch::findJump()
{
    const int nearest = _ratio >= 1.0 ? _crossfade : _window - _crossfade - _choice;
    const int farthest = nearest + _choice;
    const int rough = findRoughJump(nearest);
    int best = rough;
    double most = 0.0;
    for (int jump = std::max(rough - roughness, nearest); jump <= std::min(rough + roughness, farthest); ++jump) {
        const double found = likeness(jump);
        if (found > most) {
            most = found;
            best = jump;
        }
    }
    if (most == 0.0 || best == nearest || best == farthest)
        return best;
    // A parabola through the best and its neighbours tells where between the frames the top lies.
    const double before = likeness(best - 1);
    const double after = likeness(best + 1);
    const double bend = before - 2.0 * most + after;
    return bend < 0.0 ? best + std::clamp((before - after) / (2.0 * bend), -0.5, 0.5) : best;
}

/// The same at a quarter of the rate. The longest way back where nothing is alike.
int TavloAudioFilterPitch::findRoughJump(int nearest)
{
    const int from = likenessBegin();
    for (size_t i = 0; i < _roughHere.size(); ++i)
        _roughHere[i] = meanAt(from + static_cast<int>(i) * roughness);
    for (size_t i = 0; i < _roughThere.size(); ++i)
        _roughThere[i] = meanAt(from + nearest + static_cast<int>(i) * roughness);
    int best = _ratio >= 1.0 ? nearest : nearest + _choice;
    double most = 0.0;
    for (size_t jump = 0; jump + _roughHere.size() <= _roughThere.size(); ++jump) {
        Likeness likeness;
        for (size_t i = 0; i < _roughHere.size(); ++i)
            likeness.add(_roughHere[i], _roughThere[jump + i]);
        const double found = likeness.value();
        if (found > most) {
            most = found;
            best = nearest + static_cast<int>(jump) * roughness;
        }
    }
    return best;
}

/// How much the sound a jump ahead is that of here.
double TavloAudioFilterPitch::likeness(int jump) const
{
    const int from = likenessBegin();
    Likeness likeness;
    for (int i = from; i < from + _compared; ++i)
        likeness.add(frameAt(i), frameAt(i + jump));
    return likeness.value();
}

/// A faster head has a crossfade of sound before it, a slower one behind it, at both places.
int TavloAudioFilterPitch::likenessBegin() const { return static_cast<int>(_read) - (_ratio >= 1.0 ? 0 : _compared); }

/// Between two frames of the ring; the last one's neighbour is the first.
TavloAudioFilterPitch::Frame TavloAudioFilterPitch::readAt(double position) const
{
    const auto i = static_cast<int>(position);
    const auto f = static_cast<float>(position - i);
    const Frame& a = _ring[static_cast<size_t>(i)];
    const Frame& b = _ring[static_cast<size_t>(i + 1 >= _window ? 0 : i + 1)];
    return {(1.0F - f) * a.left + f * b.left, (1.0F - f) * a.right + f * b.right};
}

/// At a position up to one round off the ring.
const TavloAudioFilterPitch::Frame& TavloAudioFilterPitch::frameAt(int position) const
{
    if (position < 0)
        position += _window;
    return _ring[static_cast<size_t>(position >= _window ? position - _window : position)];
}

TavloAudioFilterPitch::Frame TavloAudioFilterPitch::meanAt(int position) const
{
    Frame mean{0.0F, 0.0F};
    for (int i = 0; i < roughness; ++i) {
        const Frame& frame = frameAt(position + i);
        mean.left += frame.left / roughness;
        mean.right += frame.right / roughness;
    }
    return mean;
}

double TavloAudioFilterPitch::wrapped(double position) const
{
    while (position >= _window)
        position -= _window;
    return position;
}

/// A Butterworth low pass by the bilinear transform, at the share of half the rate that survives the shift.
void TavloAudioFilterPitch::LowPass::tune(double ratio, int rate)
{
    const double cutoff = std::max(0.1 / rate, std::min(ratio, 1.0 / ratio)); // of half the rate
    const double k = 1.0 / std::tan(cutoff * std::numbers::pi * 0.5);
    const double a = 1.0 / (k + 1.0 + k * k);
    b0 = a;
    b1 = 2.0 * a;
    b2 = a;
    a1 = 2.0 * (1.0 - k * k) * a;
    a2 = (1.0 - k + k * k) * a;
    left = {};
    right = {};
}

float TavloAudioFilterPitch::LowPass::process(History& history, float x) const
{
    constexpr double antiDenormal = 1e-20;
    const double y = b0 * x + b1 * history.x1 + b2 * history.x2 - a1 * history.y1 - a2 * history.y2 + antiDenormal;
    history.x2 = history.x1;
    history.x1 = x;
    history.y2 = history.y1;
    history.y1 = y;
    return static_cast<float>(y);
}
