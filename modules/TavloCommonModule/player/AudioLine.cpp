#include "TavloCommonModule/player/AudioLine.h"

#include "TavloCommonModule/player/MonotonicClock.h"

#include <QDebug>

#include <algorithm>
#include <cmath>

namespace tavlo {
namespace {

constexpr double looseness = 40'000.0;         ///< microseconds that time stamps may be off their samples
constexpr double loosenessAtEdge = 3'000.0;    ///< the same for the first of an entry
constexpr double longestSilence = 2'000'000.0; ///< microseconds that are filled; beyond, the sound simply ends

} // namespace

AudioLine::AudioLine(PlayContext& context)
    : StreamLine(context, context.sound, StartGate::Sound),
      _channels(std::clamp(context.wanted.audioInfo.channels, 1, 8)),
      _rate(std::clamp(context.wanted.audioInfo.sampleRate, 8000, 192'000)), _format(context.wanted.audioInfo),
      _converter(_channels, _rate), _tempo(_channels, _rate)
{
    _format.channels = _channels;
    _format.sampleRate = _rate;
    _format.bitsPerSample = 16;
    _format.audioFourcc = tavloFourcc("s16l");
}

void AudioLine::begin(bool anew)
{
    _edge = true;
    if (!anew)
        return;
    if (_announced)
        _context.sink->OnMediaSourcePlayerDoAudioFlush(true);
    _converter.reset();
    _tempo.close();
    _tempoRate = 1.0;
    _placed = false;
    _counts = false;
    _ready.clear();
    _readyBegin = 0;
}

bool AudioLine::take(AVFrame& frame, qint64 stamp)
{
    if (!_announced) {
        _announced = true;
        _context.sink->OnMediaSourcePlayerDoAudioStart(_format);
    }
    followRate();
    placeAt(_segment->timelineOf(stamp));
    _decoded.clear();
    _inTimeline += durationOf(_converter.process(frame, _decoded));
    const auto frames = static_cast<qint64>(_decoded.size()) / _channels;
    const qint64 dropped = std::min(_toDrop, frames);
    _toDrop -= dropped;
    _decoded.erase(_decoded.begin(), _decoded.begin() + dropped * _channels);
    if (_tempoRate != 1.0)
        _tempo.process(_decoded);
    _ready.insert(_ready.end(), _decoded.begin(), _decoded.end());
    return handOver(false);
}

/// The next frame stands there: fills a hole, leaves out what was played already, and lets small steps be.
void AudioLine::placeAt(qint64 timeline)
{
    const double begin = static_cast<double>(timeline);
    const double limit = std::exchange(_edge, false) ? loosenessAtEdge : looseness;
    if (!_placed) {
        _placed = true;
        const double first = std::max(begin, static_cast<double>(_segment->timelineStart));
        _inTimeline = _readyTimeline = first;
        _toDrop = 0;
    }
    const double hole = begin - _inTimeline;
    if (hole > longestSilence) {
        handOver(true);
        _inTimeline = _readyTimeline = begin;
    } else if (hole > limit) {
        addSilence(std::llround(hole));
    } else if (hole < -limit || (hole < 0 && _toDrop == 0 && begin < static_cast<double>(_segment->timelineStart))) {
        dropInFront(std::llround(-hole));
    }
}

void AudioLine::addSilence(qint64 microsecondsOfIt)
{
    const qint64 frames = av_rescale(microsecondsOfIt, _rate, 1'000'000);
    const auto audible = std::llround(static_cast<double>(frames) / _tempoRate);
    _ready.insert(_ready.end(), static_cast<size_t>(audible * _channels), qint16{0});
    _inTimeline += durationOf(static_cast<double>(frames));
}

void AudioLine::dropInFront(qint64 microsecondsOfIt)
{
    const qint64 frames = av_rescale(microsecondsOfIt, _rate, 1'000'000);
    _inTimeline -= durationOf(static_cast<double>(frames));
    _toDrop += frames;
}

void AudioLine::followRate()
{
    const double rate = _context.clock.rate();
    if (rate == _tempoRate)
        return;
    endAll();
    _tempoRate = rate;
    if (rate != 1.0)
        _tempo.open(rate);
    _readyTimeline = _inTimeline;
}

void AudioLine::endSegment()
{
    if (!_placed)
        return;
    _decoded.clear();
    _inTimeline += durationOf(_converter.drain(_decoded));
    if (_tempoRate != 1.0)
        _tempo.process(_decoded);
    _ready.insert(_ready.end(), _decoded.begin(), _decoded.end());
    // What makes no whole block waits for the next entry.
    handOver(false);
    _context.clock.noteHandedOver(PlayClock::noSound);
}

void AudioLine::endAll()
{
    if (!_placed)
        return;
    _tempo.drain(_decoded);
    _ready.insert(_ready.end(), _decoded.begin(), _decoded.end());
    handOver(true);
}

void AudioLine::finish()
{
    if (!std::exchange(_announced, false))
        return;
    _context.sink->OnMediaSourcePlayerDoAudioFlush(true);
    _context.sink->OnMediaSourcePlayerDoAudioStop();
}

/// \param all  the last block may be shorter
bool AudioLine::handOver(bool all)
{
    const size_t whole = static_cast<size_t>(_rate / blocksPerSecond);
    const auto channels = static_cast<size_t>(_channels);
    for (;;) {
        const size_t frames = (_ready.size() - _readyBegin) / channels;
        if (frames < whole && (!all || frames == 0))
            break;
        if (!handOverBlock(std::min(frames, whole)))
            return false;
    }
    _ready.erase(_ready.begin(), _ready.begin() + static_cast<std::ptrdiff_t>(_readyBegin));
    _readyBegin = 0;
    return true;
}

bool AudioLine::handOverBlock(size_t frames)
{
    const qint64 timeline = std::llround(_readyTimeline);
    if (!passGate() || !_context.clock.waitForSound(timeline - lead(), [this] { return isOver(); }))
        return false;
    if (keepTime(timeline)) {
        if (!_segment->video || _segment->video->isPicture)
            _context.progress.advance(timeline);
        sendBlock(frames, timeline);
    }
    _readyBegin += frames * static_cast<size_t>(_channels);
    _readyTimeline += durationOf(static_cast<double>(frames)) * _tempoRate;
    _context.clock.noteHandedOver(std::llround(_readyTimeline));
    return true;
}

/// What to do about a block that is late. \return whether it is played
bool AudioLine::keepTime(qint64 timeline)
{
    const qint64 late = _context.clock.position() - timeline;
    if (late < lateLimit)
        return true;
    if (_segment->live && _context.sound.fill() >= late)
        return false; // more is there already: catches up
    // Nothing is lost: all waits for the sound, and what is live has to fill its buffer again.
    const qint64 buffer = _segment->live ? lead() : 0;
    _context.clock.shift(-(late + buffer));
    return true;
}

void AudioLine::sendBlock(size_t frames, qint64 timeline)
{
    const size_t bytes = frames * static_cast<size_t>(_channels) * sizeof(qint16);
    block_Init(&_block, _ready.data() + _readyBegin, bytes);
    _block.pf_release = [](block_t*) {}; // it is this line's
    _block.i_nb_samples = static_cast<unsigned>(frames);
    _block.i_length = durationOf(static_cast<double>(frames));
    _block.i_pts = _block.i_dts = _context.clock.dateOf(timeline);
    qint64 played = 0;
    if (!_counts && _context.sink->OnMediaSourcePlayerDoAudioTime(&played) == 0) {
        _counts = true;
        _playedAtFirst = _lastPlayed = played;
        _handedOver = 0;
    }
    _context.sink->OnMediaSourcePlayerDoAudioSample(0, &_block, _format);
    _handedOver += _block.i_length;
    noteHeard(timeline + std::llround(static_cast<double>(_block.i_length) * _tempoRate));
}

/// \param timelineEnd  of what has been handed over
void AudioLine::noteHeard(qint64 timelineEnd)
{
    qint64 played = 0;
    if (!_counts || _context.sink->OnMediaSourcePlayerDoAudioTime(&played) != 0) {
        _counts = false;
        return;
    }
    if (played < _lastPlayed) { // a device that was opened anew, and has this block alone
        _playedAtFirst = played;
        _handedOver = _block.i_length;
    }
    _lastPlayed = played;
    const qint64 waits = std::max<qint64>(_handedOver - (played - _playedAtFirst), 0);
    _context.clock.noteHeard(timelineEnd - std::llround(static_cast<double>(waits) * _tempoRate));
}

/// A small network buffer leaves no time to be early.
qint64 AudioLine::lead() const
{
    const qint64 caching = qint64{1000} * _context.plan.entries[_segment->item].cachingMilliseconds;
    return _segment->live ? std::min(longestLead, caching / 2) : longestLead;
}

qint64 AudioLine::durationOf(double frames) const { return std::llround(frames * 1e6 / _rate); }

} // namespace tavlo
