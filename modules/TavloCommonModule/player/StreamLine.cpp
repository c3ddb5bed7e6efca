#include "TavloCommonModule/player/StreamLine.h"

#include <pthread.h>

#include <utility>

namespace tavlo {
namespace {

Decoder::Hardware wantedHardware(const tagTavloSourcePlayerInfo& info)
{
    if (info.hwDecode == 0)
        return Decoder::Hardware::None;
    return info.kind == TavloSourcePlayerKindTvmpCuda ? Decoder::Hardware::Cuda : Decoder::Hardware::Any;
}

} // namespace

void StreamLine::start(const char* threadName)
{
    _thread = std::thread([this, threadName] {
        pthread_setname_np(pthread_self(), threadName);
        run();
    });
}

void StreamLine::join()
{
    if (_thread.joinable())
        _thread.join();
}

void StreamLine::run()
{
    QueueEntry entry;
    while (_queue.pop(entry))
        handle(entry);
    finish();
    _decoder.close();
}

void StreamLine::handle(QueueEntry& entry)
{
    if (entry.segment) {
        beginSegment(std::move(entry.segment));
        return;
    }
    if (!_segment || isOver())
        return;
    if (entry.isLast)
        endAll();
    else if (!entry.packet)
        drain();
    else if (_decodes)
        decode(entry.packet.get());
}

void StreamLine::beginSegment(SegmentPtr segment)
{
    const bool anew = !_segment || _segment->epoch != segment->epoch;
    _segment = std::move(segment);
    _nextStamp = _segment->stampOfItem + _segment->from;
    if (anew)
        _gatePassed = false;
    const auto& stream = streamOf(*_segment);
    _decodes = stream && _decoder.open(stream, wantedHardware(_context.info), _segment->live);
    begin(anew);
}

bool StreamLine::takeFrame(AVFrame& frame)
{
    const qint64 stamp = frame.best_effort_timestamp != AV_NOPTS_VALUE ? frame.best_effort_timestamp : _nextStamp;
    _nextStamp = stamp + frame.pkt_duration;
    return (_segment->isBeyondEnd(stamp) || take(frame, stamp)) && !isOver();
}

void StreamLine::decode(const AVPacket* packet)
{
    _decoder.decode(
        packet, [this](AVFrame& frame) { return takeFrame(frame); },
        [this](const AVFrame& frame) { return mayStay(frame); });
}

void StreamLine::drain()
{
    if (_decodes)
        decode(nullptr);
    if (!isOver())
        endSegment();
    if (!isOver())
        passGate(); // a stream without a single frame keeps nobody waiting
}

bool StreamLine::passGate()
{
    if (!std::exchange(_gatePassed, true)) {
        const qint64 wanted = qint64{1000} * _context.plan.entries[_segment->item].cachingMilliseconds;
        if (!_context.gate.pass(
                _line, _segment->epoch, [this] { return isOver(); },
                [this, wanted] { return _queue.fill() >= wanted; }))
            return false;
        _context.progress.advance(_segment->timelineStart);
    }
    return !isOver();
}

} // namespace tavlo
