#include "TavloOutputModule/LiveTarget.h"

#include <utility>

namespace tavlo {

namespace {

bool endsWithFlv(const std::string& path) { return path.ends_with(".flv"); }

const char* typeOf(const std::string& path) { return endsWithFlv(path) ? "video/x-flv" : "video/mp2t"; }

} // namespace

LiveTarget::LiveTarget(std::string name, const StreamFormat& format, HttpAddress address)
    : ServedTarget(std::move(name), format, address,
                   std::make_shared<LiveFeed>(typeOf(address.path), LiveFeed::Limit{.span = queueLimit})),
      _isFlv(endsWithFlv(_address.path))
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
        _feed->push({std::exchange(_bytes, {}), packet->dts(), canBegin, packet->video || !_format.hasVideo()});
    countWritten(*packet);
    publish(); // with the first picture in the feed, so that nobody is sent away
}

bool LiveTarget::begin(const CodedPacket& packet)
{
    if (!_format.canBegin(packet) || isPausing())
        return false;
    std::string error;
    Muxer::Target muxer{_isFlv ? "flv" : "mpegts", {}, {}, &_bytes};
    if (_isFlv)
        muxer.options = {{"flvflags", "no_duration_filesize"}};
    _muxer = Muxer::open(muxer, _format, _limits, error);
    if (!_muxer) {
        pause("cannot write " + muxer.format + (_format.hevc ? " of HEVC" : "") + " for " + _address.text() + ": " +
              error);
        return false;
    }
    _origin = packet.dts();
    const QByteArray header = std::exchange(_bytes, {});
    if (_isFlv) // MPEG-TS repeats its own
        _feed->setHeader(header);
    return true;
}

} // namespace tavlo
