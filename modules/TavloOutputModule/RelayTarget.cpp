#include "TavloOutputModule/RelayTarget.h"

#include <utility>

namespace tavlo {

namespace {

constexpr qint64 queueLimit = 4'000'000; // microseconds

QByteArray asPart(const QByteArray& jpeg)
{
    return "--picture\r\nContent-Type: image/jpeg\r\nContent-Length: " + QByteArray::number(jpeg.size()) + "\r\n\r\n" +
           jpeg + "\r\n";
}

} // namespace

RelayTarget::RelayTarget(std::string name, const StreamFormat& format, HttpAddress address, int width,
                         size_t bufferCount)
    : Target(std::move(name), format, queueLimit), _address(std::move(address)), _width(width),
      _feed(std::make_shared<LiveFeed>("multipart/x-mixed-replace; boundary=picture",
                                       LiveFeed::Limit{.count = std::max<size_t>(bufferCount, 1)}))
{}

void RelayTarget::take(const CodedPacketPtr& packet)
{
    if (!_place.isTaken() && !isPausing())
        publish();
    if (!_place.isTaken())
        return countDropped(*packet);
    countWritten(*packet);
    if (_feed->viewers() > 0) {
        show(*packet);
    } else if (_pictures) {
        _pictures.reset();
        _feed->forget();
    }
}

void RelayTarget::publish()
{
    std::string error;
    if (!_place.take(_address.address, _address.port, _address.path, _feed, error))
        return pause("cannot serve " + _address.text() + ": " + error);
    countOpening();
    setState(State::Running);
    tell("serves " + _address.text());
}

void RelayTarget::show(const CodedPacket& packet)
{
    if (!packet.video || (!_pictures && !packet.key))
        return;
    if (!_pictures)
        _pictures = SmallPictures::open(_format, _width);
    if (_pictures)
        _pictures->decode(packet, [this](const QByteArray& jpeg, qint64 time) {
            _feed->push({asPart(jpeg), time, true});
        });
}

void RelayTarget::close()
{
    _feed->end(_limits.endBy.load());
    _place.leave();
}

} // namespace tavlo
