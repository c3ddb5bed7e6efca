#include "TavloCommonModule/audio/MixInput.h"

#include <QDebug>

#include <algorithm>
#include <utility>

namespace tavlo {

namespace {

// Seconds.
constexpr double fadeTime = 0.005;
constexpr double leastReserve = 0.020;
constexpr double reserveStep = 0.010;
constexpr double mostReserve = 0.150;
constexpr double mostAhead = 0.120;  ///< that a source may keep waiting beyond its reserve
constexpr double mostExcess = 0.250; ///< what may wait beyond what is wanted
constexpr double ringTime = 1.0;     ///< a source may also hand over much at once, or while it is paused
constexpr double soonAgain = 0.5;    ///< a sound that comes back within this was late, not at its end

int framesIn(double seconds, int rate) { return static_cast<int>(seconds * rate); }

} // namespace

MixInput::MixInput(int channels, int rate, int block)
    : _channels(channels), _rate(rate), _block(block), _fade(framesIn(fadeTime, rate)), _resampler(channels, rate),
      _ring(channels, framesIn(ringTime, rate)), _reserve(framesIn(leastReserve, rate)),
      _scratch(static_cast<size_t>(_fade * channels))
{}

bool MixInput::write(const void* data, int length, const SoundFormat& format)
{
    const std::lock_guard lock(_writeLock);
    if (!takeFormat(format))
        return false;
    const int sourceFrames = length / format.frameBytes();
    if (!data || sourceFrames <= 0)
        return true;
    const int frames = _resampler.convert(data, sourceFrames, _trim.load(std::memory_order_relaxed));
    if (frames < 0) {
        tellFailure(format);
        return false;
    }
    noteLength(frames);
    if (std::exchange(_isSilenced, false))
        fadeIn(_resampler.samples(), frames);
    _ring.write(_resampler.samples(), frames);
    countSource(sourceFrames, format);
    return true;
}

void MixInput::writeSilence(int length, const SoundFormat& format)
{
    const std::lock_guard lock(_writeLock);
    if (!takeFormat(format))
        return;
    const int sourceFrames = length / format.frameBytes();
    const auto frames = static_cast<int>(qint64{sourceFrames} * _rate / format.rate);
    noteLength(frames);
    _ring.writeSilence(frames);
    _isSilenced = true;
    countSource(sourceFrames, format);
}

/// Under the lock.
bool MixInput::takeFormat(const SoundFormat& format)
{
    if (format != _resampler.source()) {
        _earlierMicroseconds = _writtenMicroseconds;
        _sourceFrames = 0;
    }
    if (_resampler.setSource(format))
        return true;
    tellFailure(format);
    return false;
}

/// Under the lock.
void MixInput::tellFailure(const SoundFormat& format)
{
    if (!std::exchange(_failureTold, true))
        qDebug() << "sound mix: cannot convert channels, bits, rate" << format.channels << format.bits << format.rate;
}

/// Under the lock. Shorter blocks count little by little: one short block does not make a source a punctual one.
void MixInput::noteLength(int frames)
{
    const int longest = _longestBlock.load(std::memory_order_relaxed);
    _longestBlock.store(std::max(frames, longest - longest / 64), std::memory_order_relaxed);
}

/// Under the lock.
void MixInput::countSource(int frames, const SoundFormat& format)
{
    _sourceFrames += frames;
    _writtenMicroseconds.store(_earlierMicroseconds + _sourceFrames * 1'000'000 / format.rate,
                               std::memory_order_relaxed);
}

void MixInput::flush(bool now) { (now ? _dropped : _complete).store(_ring.writePosition(), std::memory_order_release); }

qint64 MixInput::playedMicroseconds() const
{
    const quint64 dropped = _dropped.load(std::memory_order_acquire);
    const quint64 from = std::max(_ring.readPosition(), dropped);
    const auto waiting = static_cast<qint64>(std::max(_ring.writePosition(), from) - from);
    const qint64 played = _writtenMicroseconds.load(std::memory_order_relaxed) - waiting * 1'000'000 / _rate;
    qint64 told = _toldMicroseconds.load(std::memory_order_relaxed);
    while (told < played && !_toldMicroseconds.compare_exchange_weak(told, played, std::memory_order_relaxed)) {
    }
    return std::max(told, played);
}

bool MixInput::take(float* block)
{
    const quint64 dropped = _dropped.load(std::memory_order_acquire);
    const bool isFlushed = dropped > _ring.readPosition();
    const bool mayPlay = _isListening && !_isPaused && !isFlushed;
    const int waiting = _ring.fill();
    const bool begins = !_isPlaying && mayPlay && canBegin(waiting);
    if (begins)
        begin();
    const bool wasPlaying = _isPlaying || begins;
    _isPlaying = wasPlaying && mayPlay && waiting >= _block + _fade;

    int frames = 0;
    if (wasPlaying)
        frames = _ring.read(block, mayPlay ? _block : std::min(_fade, _block));
    if (begins)
        fadeIn(block, frames);
    if (_isPlaying) {
        leaveOutExcess(block);
        _trim = _control.update(static_cast<double>(_ring.fill()) / _rate, static_cast<double>(_block) / _rate);
        return true;
    }
    end(block, frames, wasPlaying && mayPlay ? waiting : frames);
    if (!mayPlay)
        _silentBlocks = framesIn(soonAgain, _rate) / _block; // what follows does not come late
    if (isFlushed)
        _ring.skipTo(dropped);
    return frames > 0;
}

/// Whether enough waits.
bool MixInput::canBegin(int waiting) const
{
    const bool isComplete = waiting > 0 && _ring.readPosition() < _complete.load(std::memory_order_acquire);
    return isComplete || waiting >= _reserve + std::max(_longestBlock.load(std::memory_order_relaxed), _block);
}

void MixInput::begin()
{
    if (_silentBlocks > 0 && _silentBlocks * _block < framesIn(soonAgain, _rate))
        _reserve = std::min(_reserve + framesIn(reserveStep, _rate), framesIn(mostReserve, _rate));
    _silentBlocks = 0;
    // On average half a block of the source's waits above the reserve. A source that keeps more ahead may: pictures
    // follow the sound, and would have to be left out while it is brought nearer.
    const int longest = _longestBlock.load(std::memory_order_relaxed);
    const double least = _reserve + longest / 2.0 - _block;
    const double most = least + std::max(longest + 2.0 * _block, mostAhead * _rate);
    _control.restart(least / _rate, most / _rate);
}

/// The last frames fade, the rest of the block is silent. \param known frames of which the rest is too short to go on
void MixInput::end(float* block, int frames, int known)
{
    const int fade = std::min(_fade, frames);
    float* at = block + (frames - fade) * _channels;
    for (int i = 0; i < fade * _channels; ++i)
        *at++ *= 1.0F - static_cast<float>(i / _channels + 1) / static_cast<float>(fade);
    std::fill(at, block + _block * _channels, 0.0F);
    _ring.skipTo(_ring.readPosition() + static_cast<quint64>(std::max(known - frames, 0)));
    ++_silentBlocks;
}

/// Too much waits to be caught up with by speed: the block ends in a fade to what comes later.
void MixInput::leaveOutExcess(float* block)
{
    const int wanted = framesIn(_control.wanted(), _rate);
    if (_ring.fill() <= wanted + framesIn(mostExcess, _rate))
        return;
    if (!std::exchange(_excessTold, true))
        qDebug() << "sound mix: a source gives more sound than is played, the oldest is dropped";
    _ring.skipTo(_ring.writePosition() - static_cast<quint64>(wanted + _fade));
    const int frames = _ring.read(_scratch.data(), std::min(_fade, _block));
    float* at = block + (_block - frames) * _channels;
    for (int i = 0; i < frames * _channels; ++i, ++at) {
        const float t = static_cast<float>(i / _channels + 1) / static_cast<float>(frames);
        *at += t * (_scratch[static_cast<size_t>(i)] - *at);
    }
}

void MixInput::fadeIn(float* block, int frames) const
{
    const int fade = std::min(_fade, frames);
    for (int i = 0; i < fade * _channels; ++i)
        block[i] *= static_cast<float>(i / _channels) / static_cast<float>(fade);
}

} // namespace tavlo
