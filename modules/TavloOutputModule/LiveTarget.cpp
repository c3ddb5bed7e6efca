#include "TavloOutputModule/LiveTarget.h"

#include <utility>

namespace tavlo {

namespace {

constexpr qint64 queueLimit = 4'000'000; // microseconds, of the target and of each viewer

bool endsWithFlv(const std::string& path) { return path.ends_with(".flv"); }

const char* typeOf(const std::string& path) { return endsWithFlv(path) ? "video/x-flv" : "video/mp2t"; }

} // namespace

LiveTarget::LiveTarget(std::string name, const StreamFormat& format, HttpAddress address)
    : Target(std::move(name), format, queueLimit), _address(std::move(address)), _isFlv(endsWithFlv(_address.path)),
      _feed(std::make_shared<LiveFeed>(typeOf(_address.path), LiveFeed::Limit{.span = queueLimit}))
{}

void LiveTarget::take(const CodedPacketPtr& packet)
{
    std::string error;
    if ((!_muxer && !begin(*packet)) || !_muxer->write(*packet, _origin, error)) {
        countDropped(*packet);
        return;
    }
    const bool canBegin = _format.canBegin(*packet);
    if (!_bytes.isEmpty())
        _feed->push({std::exchange(_bytes, {}), packet->dts(), canBegin});
    countWritten(*packet);
    if (!_place.isTaken() && !isPausing())
        publish();
}

bool LiveTarget::begin(const CodedPacket& packet)
{
    if (!_format.canBegin(packet))
        return false;
    std::string error;
    Muxer::Target muxer{_isFlv ? "flv" : "mpegts", {}, {}, &_bytes};
    if (_isFlv)
        muxer.options = {{"flvflags", "no_duration_filesize"}};
    _muxer = Muxer::open(muxer, _format, _limits, error);
    if (!_muxer)
        return false;
    _origin = packet.dts();
    const QByteArray header = std::exchange(_bytes, {});
    if (_isFlv) // MPEG-TS repeats its own
        _feed->setHeader(header);
    return true;
}

/// With the first picture in the feed, so that nobody is sent away.
void LiveTarget::publish()
{
    std::string error;
    if (!_place.take(_address.address, _address.port, _address.path, _feed, error))
        return pause("cannot serve " + _address.text() + ": " + error);
    countOpening();
    setState(State::Running);
    tell("serves " + _address.text());
}

void LiveTarget::close()
{
    _feed->end(_limits.endBy.load());
    _place.leave();
}

} // namespace tavlo
