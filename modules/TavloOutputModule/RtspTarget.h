#pragma once

#include "TavloOutputModule/LiveTarget.h"
#include "TavloOutputModule/RtspServer.h"

namespace tavlo {

/// A stream that viewers fetch over RTSP.
class RtspTarget final : public Target
{
public:
    RtspTarget(std::string name, const StreamFormat& format, std::string address, quint16 port, std::string path);

    quint64 viewers() const override;
    quint64 viewerDropped() const override;

private:
    void take(const CodedPacketPtr& packet) override;
    void close() override;
    std::chrono::milliseconds patience() const override { return std::chrono::seconds(2); }

    void publish();

    const std::string _address;
    const quint16 _port;
    const std::string _path;

    // changed by the target's thread alone, under _serverLock; others read under it
    mutable std::mutex _serverLock;
    std::unique_ptr<RtspServer> _server;
};

} // namespace tavlo
