#pragma once

#include "TavloOutputModule/LiveFeed.h"
#include "TavloOutputModule/Target.h"

namespace tavlo {

/// Where a server listens and what for.
struct HttpAddress
{
    std::string address; ///< of this machine
    quint16 port = 0;
    std::string path;

    std::string text() const { return "http://" + address + ':' + std::to_string(port) + path; }
};

/// A stream that viewers fetch over HTTP: FLV from a path that ends so, MPEG-TS from any other.
class LiveTarget final : public Target
{
public:
    LiveTarget(std::string name, const StreamFormat& format, HttpAddress address);

    quint64 viewers() const override { return _feed->viewers(); }
    quint64 viewerDropped() const override { return _feed->dropped(); }

private:
    void take(const CodedPacketPtr& packet) override;
    void close() override;
    std::chrono::milliseconds patience() const override { return std::chrono::seconds(2); }

    bool begin(const CodedPacket& packet);
    void publish();

    const HttpAddress _address;
    const bool _isFlv;
    const std::shared_ptr<LiveFeed> _feed;

    // target's thread
    HttpPlace _place;
    std::unique_ptr<Muxer> _muxer;
    QByteArray _bytes; ///< what the muxer wrote
    qint64 _origin = 0;
};

} // namespace tavlo
