#include "TavloCommonModule/player/Demuxer.h"

extern "C" {
#include <libavutil/time.h>
}

#include <QDebug>

#include <algorithm>
#include <utility>

namespace tavlo {
namespace {

constexpr qint64 readAhead = 2'000'000;        ///< microseconds of each stream
constexpr size_t mostBytes = 96 << 20;         ///< of both streams
constexpr qint64 stillLength = 5'000'000;      ///< microseconds that a still picture of a list stands
constexpr qint64 jumpLimit = 3'000'000;        ///< microseconds between packets that are no pause
constexpr qint64 soundBeyondPicture = 100'000; ///< microseconds by which the coder's last frame may be longer
constexpr qint64 latencyWindow = 5'000'000;    ///< microseconds

qint64 stampOf(const AVPacket& packet) { return packet.dts != AV_NOPTS_VALUE ? packet.dts : packet.pts; }

/// What a packet lasts where its container doesn't say, microseconds.
qint64 guessedDuration(const StreamInfo& stream)
{
    const AVCodecParameters& parameters = *stream.parameters;
    if (parameters.codec_type == AVMEDIA_TYPE_AUDIO)
        return parameters.frame_size > 0 && parameters.sample_rate > 0
                   ? av_rescale(parameters.frame_size, 1'000'000, parameters.sample_rate)
                   : 20'000;
    return stream.frameRate.num > 0 ? av_rescale(stream.frameRate.den, 1'000'000, stream.frameRate.num) : 40'000;
}

} // namespace

Demuxer::Demuxer(std::shared_ptr<PlayContext> context, bool second)
    : _context(std::move(context)), _second(second), _input(makeInput(entry(), _context->aborted))
{
    _readings[0].queue = &_context->pictures;
    _readings[1].queue = &_context->sound;
}

void Demuxer::run()
{
    if (!_second)
        _context->progress.opening(0);
    if (entry().pace == InputLocation::Pace::Device)
        _deviceBase = av_gettime();
    bool newEpoch = true;
    while (follow(play(newEpoch), newEpoch)) {
    }
    _input->close();
}

const InputLocation& Demuxer::entry() const { return _second ? *_context->plan.second : _context->plan.entries[_item]; }

bool Demuxer::triesForEver() const
{
    return _context->plan.entries.size() == 1 && entry().pace != InputLocation::Pace::File;
}

/// Plays the entry from its place on to its end, or until something comes between.
Demuxer::Outcome Demuxer::play(bool newEpoch)
{
    if (_context->aborted)
        return Outcome::Aborted;
    const bool isOpen = _input->isOpen() && _openEntry == _item && !_input->isLive();
    const bool moved = isOpen && _input->seek(_from);
    if (!moved) {
        if (!openEntry())
            return _context->aborted ? Outcome::Aborted : Outcome::Failed;
        if (_from > 0 && (_input->isLive() || !_input->seek(_from)))
            _from = 0;
    }
    // A list that could not be read ahead in time begins anew, or its pictures would be late.
    if (!_hasBegun)
        newEpoch = true;
    else if (_context->clock.isStarted() && _context->clock.position() > _timelineEnd + 50'000)
        newEpoch = true;
    const bool sought = std::exchange(_fromSeek, false);
    if (entry().pace == InputLocation::Pace::Device || _input->isLive())
        _segment.reset(); // begins with the first packet
    else
        beginSegment(sought     ? Begin::Sought
                     : newEpoch ? Begin::Anew
                                : Begin::Continued,
                     _input->firstStamp(), _from, !sought && _from == 0);
    return readSegment();
}

bool Demuxer::openEntry()
{
    const auto& wanted = _context->wanted;
    _openEntry = -1;
    if (!_input->open(entry(), wanted.videoInfo.enable != 0, wanted.audioInfo.enable != 0))
        return false;
    _openEntry = _item;
    return true;
}

/// Decides what comes next. False when the play is over.
bool Demuxer::follow(Outcome outcome, bool& newEpoch)
{
    switch (outcome) {
    case Outcome::Aborted:
        return false;
    case Outcome::Seek:
        newEpoch = true;
        return takeSeek();
    case Outcome::Ended:
        _failures = 0;
        return goOnAfterEnd(newEpoch);
    case Outcome::Failed:
    case Outcome::Broken:
        break;
    }
    return goOnAfterFailure(outcome, newEpoch);
}

bool Demuxer::goOnAfterEnd(bool& newEpoch)
{
    const int count = static_cast<int>(_context->plan.entries.size());
    newEpoch = false;
    _from = 0;
    if (_item + 1 < count || _context->info.playbackLoop == 1) {
        _item = (_item + 1) % count;
        return true;
    }
    newEpoch = true;
    _context->progress.finishAt(_timelineEnd);
    for (const Reading& reading : _readings)
        reading.queue->push({.segment = nullptr, .packet = nullptr, .isLast = true});
    if (!_hasBegun || waitForEnd())
        _context->progress.advance(_timelineEnd);
    return idle();
}

bool Demuxer::goOnAfterFailure(Outcome outcome, bool& newEpoch)
{
    ++_failures;
    if (triesForEver()) {
        newEpoch = true;
        const SegmentPtr played = _context->progress.current();
        _from = played && !played->live ? std::max<qint64>(played->itemTimeOf(_context->clock.position()), 0) : 0;
        if (!_second)
            _context->progress.opening(_item);
        return waitToRetry();
    }
    const int count = static_cast<int>(_context->plan.entries.size());
    if (outcome == Outcome::Failed)
        _context->progress.skip(_item, _timelineEnd);
    if (!_hasBegun)
        _context->progress.advance(_timelineEnd); // nothing plays that would come there
    if (_context->info.playbackLoop == 1 && _failures >= count && !waitToRetry())
        return false;
    return goOnAfterEnd(newEpoch);
}

/// Nothing is left to play: waits for a place to go to.
bool Demuxer::idle()
{
    {
        std::unique_lock lock(_context->readerLock);
        _context->readerWake.wait(lock, [this] { return _context->aborted || _context->seek.has_value(); });
    }
    return !_context->aborted && takeSeek();
}

bool Demuxer::takeSeek()
{
    const std::scoped_lock lock(_context->readerLock);
    if (_context->seek) {
        _item = _context->seek->item;
        _from = _context->seek->time;
        _fromSeek = true;
        _context->seek.reset();
    }
    return !_context->aborted;
}

/// 1, 2, 4, 8 and then 15 seconds, each a fifth shorter or longer, so that many players don't ask all at once.
bool Demuxer::waitToRetry()
{
    const double seconds = std::min(15.0, static_cast<double>(1 << std::min(_failures - 1, 4)));
    const double factor = std::uniform_real_distribution<double>(0.8, 1.2)(_random);
    const double pause = std::clamp(seconds * factor, 1.0, 15.0);
    qDebug().noquote() << "player: trying again in" << QString::number(pause, 'f', 1) << "s:" << entry().name;
    if (!_context->pause(std::chrono::microseconds(static_cast<qint64>(pause * 1e6))) && !_context->aborted)
        return takeSeek();
    return !_context->aborted;
}

/// \param from  microseconds of the entry that are left out
void Demuxer::beginSegment(Begin how, qint64 stampOfItem, qint64 from, bool beginsItem)
{
    PlayContext& context = *_context;
    auto segment = std::make_shared<Segment>();
    if (how == Begin::Continued) {
        segment->epoch = _segment ? _segment->epoch : context.epoch.load();
    } else {
        context.pictures.clear();
        context.sound.clear();
        segment->epoch = how == Begin::Anew ? ++context.epoch : context.epoch.load(); // a seek began one already
        _timelineEnd = std::max(_timelineEnd, context.clock.position());
    }
    segment->item = _item;
    segment->itemLength = _input->isStill() ? stillLength : _input->length();
    segment->stampOfItem = stampOfItem;
    segment->from = from;
    segment->timelineStart = _timelineEnd;
    segment->beginsItem = beginsItem;
    segment->live = _input->isLive();
    segment->video = _input->video();
    segment->audio = _input->audio();
    _segment = segment;
    _packetsOfSegment = 0;
    _hasBegun = true;
    for (Reading& reading : _readings)
        reading.lastStamp = reading.end = AV_NOPTS_VALUE;
    _readings[0].stream = segment->video;
    _readings[1].stream = segment->audio;
    if (!_second)
        context.progress.add(segment);
    context.clock.setLive(segment->live);
    if (how != Begin::Continued)
        armStart();
    for (Reading& reading : _readings) {
        if (reading.stream)
            reading.queue->push({segment, nullptr});
    }
}

/// Devices stamp their pictures and sound with the wall clock: the time line runs from the start, and each begins on it
/// when it is there.
void Demuxer::beginDeviceSegment(qint64 firstStamp)
{
    const qint64 now = av_gettime();
    const bool isWallClock = std::abs(firstStamp - now) < 2'000'000;
    _timelineEnd = 0;
    if (!_context->deviceClockRuns.exchange(true)) {
        _context->clock.reset(now - _deviceBase - qint64{1000} * entry().cachingMilliseconds);
        _context->clock.start();
    }
    beginSegment(Begin::Continued, isWallClock ? _deviceBase : firstStamp - (now - _deviceBase), 0, true);
}

void Demuxer::armStart()
{
    unsigned lines = 0;
    if (_segment->video && !(_segment->audio && _segment->video->isPicture))
        lines |= StartGate::Pictures;
    if (_segment->audio)
        lines |= StartGate::Sound;
    _context->clock.reset(_segment->timelineStart);
    _context->gate.arm(_segment->epoch, lines, qint64{1000} * entry().cachingMilliseconds);
    _latencySince = _newestAt = _longestGap = 0;
}

Demuxer::Outcome Demuxer::readSegment()
{
    for (;;) {
        if (!waitForRoom())
            return _context->aborted ? Outcome::Aborted : Outcome::Seek;
        PacketPtr packet(av_packet_alloc());
        const int result = packet ? _input->read(*packet) : AVERROR(ENOMEM);
        if (_context->aborted)
            return Outcome::Aborted;
        if (result < 0)
            return endSegment(result);
        hand(std::move(packet));
    }
}

Demuxer::Outcome Demuxer::endSegment(int result)
{
    const bool live = _input->isLive();
    if (_segment) {
        _timelineEnd = segmentEnd();
        for (const Reading& reading : _readings) {
            if (reading.stream)
                reading.queue->push({});
        }
    }
    if (result != AVERROR_EOF || live) {
        qDebug().noquote() << "player: reading ended:" << entry().name << "-" << ffmpegError(result);
        _input->close();
        return Outcome::Broken;
    }
    if (_packetsOfSegment == 0) {
        qDebug().noquote() << "player: nothing to play in" << entry().name;
        _input->close();
        return Outcome::Broken;
    }
    return Outcome::Ended;
}

void Demuxer::hand(PacketPtr packet)
{
    Reading& reading = readingOf(*packet);
    const auto& stream = reading.stream ? reading.stream : _input->isVideo(*packet) ? _input->video() : _input->audio();
    av_packet_rescale_ts(packet.get(), stream->timeBase, microsecondBase);
    if (packet->duration <= 0)
        packet->duration = guessedDuration(*stream);
    if (!_segment) {
        const qint64 first = stampOf(*packet);
        if (first == AV_NOPTS_VALUE)
            return;
        if (entry().pace == InputLocation::Pace::Device)
            beginDeviceSegment(packet->pts);
        else
            beginSegment(Begin::Anew, packet->pts != AV_NOPTS_VALUE ? packet->pts : first, 0, true);
    } else if (jumps(reading, *packet)) {
        continueAfterJump(*packet);
    }
    if (const qint64 stamp = stampOf(*packet); stamp != AV_NOPTS_VALUE && !_segment->isBeyondEnd(stamp)) {
        reading.lastStamp = stamp;
        if (packet->pts == AV_NOPTS_VALUE || std::abs(packet->pts - stamp) > jumpLimit)
            packet->pts = stamp;
        const qint64 begin = packet->pts;
        const qint64 end = _segment->timelineOf(begin + packet->duration);
        reading.end = reading.end == AV_NOPTS_VALUE ? end : std::max(reading.end, end);
    }
    if (++_packetsOfSegment == 250)
        _failures = 0;
    if (_segment->live && entry().pace != InputLocation::Pace::Device)
        keepLatency(reading.end);
    reading.queue->push({nullptr, std::move(packet)});
}

bool Demuxer::jumps(const Reading& reading, const AVPacket& packet) const
{
    const qint64 stamp = stampOf(packet);
    return stamp != AV_NOPTS_VALUE && reading.lastStamp != AV_NOPTS_VALUE && _input->stampsMayJump() &&
           std::abs(stamp - reading.lastStamp) > jumpLimit && entry().pace != InputLocation::Pace::Device;
}

/// The rest is played on without a hole, as a segment of its own.
void Demuxer::continueAfterJump(const AVPacket& packet)
{
    _timelineEnd = segmentEnd();
    const qint64 stamp = packet.pts != AV_NOPTS_VALUE ? packet.pts : packet.dts;
    const qint64 played = _segment->itemTimeOf(_timelineEnd);
    for (const Reading& reading : _readings) {
        if (reading.stream)
            reading.queue->push({});
    }
    beginSegment(Begin::Continued, stamp - played, played, false);
}

/// A live input that was held up and then came all at once would stay late: when more than the wanted buffer waits, and
/// never less within some seconds, the rest is left out.
void Demuxer::keepLatency(qint64 newest)
{
    PlayContext& context = *_context;
    if (newest == AV_NOPTS_VALUE || !context.clock.isStarted() || context.paused) {
        _newestAt = 0;
        return;
    }
    const qint64 now = context.clock.now();
    const qint64 latency = newest - context.clock.position();
    if (_latencySince == 0) {
        _latencySince = now;
        _leastLatency = latency;
        _lastGap = std::exchange(_longestGap, 0);
    }
    _leastLatency = std::min(_leastLatency, latency);
    const qint64 piece = pieceLength(now);
    if (now - _latencySince < std::max(latencyWindow, 2 * piece))
        return;
    const qint64 wanted = qint64{1000} * entry().cachingMilliseconds + piece;
    const qint64 excess = _leastLatency - wanted;
    _latencySince = 0;
    if (excess < std::max<qint64>(wanted, 1'000'000))
        return;
    qDebug().noquote() << "player: leaving out" << excess / 1000 << "ms to be live again:" << entry().name;
    context.clock.shift(excess);
}

/// What comes over HTTP may come in pieces of some seconds, each at once and none on the dot: the time without a packet,
/// which has to be bridged. Of what comes as it is made a gap is an accident.
qint64 Demuxer::pieceLength(qint64 now)
{
    const qint64 before = std::exchange(_newestAt, now);
    if (before == 0 || entry().pace != InputLocation::Pace::Remote)
        return 0;
    _longestGap = std::max(_longestGap, now - before);
    return std::max(_longestGap, _lastGap);
}

/// Waits until each stream's queue has room, or one takes all memory. False when playing ends or goes elsewhere.
bool Demuxer::waitForRoom()
{
    const auto isFull = [this] {
        const size_t bytes = _context->pictures.bytes() + _context->sound.bytes();
        if (bytes > mostBytes)
            return true;
        return _segment && !_segment->live && std::all_of(_readings.begin(), _readings.end(), [](const Reading& r) {
                   return !r.stream || r.stream->isPicture || r.queue->fill() > readAhead;
               });
    };
    while (isFull()) {
        if (!_context->pause(std::chrono::milliseconds(40)))
            return false;
    }
    const std::scoped_lock lock(_context->readerLock);
    return !_context->aborted && !_context->seek;
}

/// Waits for the end of the time line, and until all that was read has been seen and heard, which can be later. False
/// when playing ends or goes elsewhere.
bool Demuxer::waitForEnd()
{
    while (!_context->pictures.isDrained() || !_context->sound.isDrained()) {
        if (!_context->pause(std::chrono::milliseconds(10)))
            return false;
    }
    unsigned epoch = 0;
    {
        const std::scoped_lock lock(_context->readerLock);
        if (_context->seek)
            return false;
        epoch = _context->epoch;
    }
    return _context->clock.waitForPicture(_timelineEnd, [&] { return _context->isOver(epoch); });
}

/// Where the segment's last picture ends; where its sound does when that is longer for good.
qint64 Demuxer::segmentEnd() const
{
    if (_input->isOpen() && _input->isStill())
        return _segment->timelineStart + stillLength - _segment->from;
    const qint64 begin = _segment->timelineStart;
    const auto endOf = [&](const Reading& r) {
        return !r.stream || r.stream->isPicture || r.end == AV_NOPTS_VALUE ? begin : std::max(r.end, begin);
    };
    const qint64 picture = endOf(_readings[0]);
    const qint64 sound = endOf(_readings[1]);
    return picture == begin || sound > picture + soundBeyondPicture ? sound : picture;
}

} // namespace tavlo
