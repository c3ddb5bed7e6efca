#include "TavloOutputModule/RelayTarget.h"

#include <utility>

namespace tavlo {

namespace {

QByteArray asPart(const QByteArray& jpeg)
{
    return "--picture\r\nContent-Type: image/jpeg\r\nContent-Length: " + QByteArray::number(jpeg.size()) + "\r\n\r\n" +
           jpeg + "\r\n";
}

} // namespace

RelayTarget::RelayTarget(std::string name, const StreamFormat& format, HttpAddress address, int width,
                         size_t bufferCount)
    : ServedTarget(std::move(name), format, std::move(address),
                   std::make_shared<LiveFeed>("multipart/x-mixed-replace; boundary=picture",
                                              LiveFeed::Limit{.count = std::max<size_t>(bufferCount, 1)})),
      _width(width)
{}

void RelayTarget::take(const CodedPacketPtr& packet)
{
    if (!publish())
        return countDropped(*packet);
    countWritten(*packet);
    if (_feed->viewers() > 0) {
        show(*packet);
    } else if (_pictures) {
        _pictures.reset();
        _feed->forget();
    }
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

} // namespace tavlo
