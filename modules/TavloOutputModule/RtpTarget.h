#pragma once

#include "TavloOutputModule/LiveTarget.h"

#include <vector>

namespace tavlo {

/// Pictures and sound as RTP to one address or group, and over HTTP the description (SDP) that viewers begin with.
class RtpTarget final : public Target
{
public:
    struct Destination
    {
        std::string address; ///< of one machine or of a group
        quint16 port = 0;    ///< of the pictures; the sound's is two higher
        int timeToLive = 1;  ///< hops, of a group
    };

    RtpTarget(std::string name, const StreamFormat& format, Destination destination, HttpAddress description);

private:
    void take(const CodedPacketPtr& packet) override;
    void close() override;
    std::chrono::milliseconds patience() const override { return std::chrono::seconds(2); }

    bool connect(const CodedPacket& packet);
    bool open(const StreamFormat& format, int port, std::string& error);

    const Destination _destination;
    const HttpAddress _description;

    // target's thread
    std::vector<std::unique_ptr<Muxer>> _muxers; ///< one for the pictures, one for the sound
    HttpPlace _place;
    qint64 _origin = 0; ///< dts of the first packet
};

} // namespace tavlo
