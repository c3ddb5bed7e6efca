#pragma once

#include "TavloOutputModule/Target.h"

namespace tavlo {

/// The URL without its user, password, query and last step of the path, which may be a key. Of what is none as well.
std::string shownUrl(const std::string& url);

/// A stream to or for somebody else, opened by libavformat. A connection that fails or is lost is tried again, without
/// end, and begins with the next key picture.
class UrlTarget final : public Target
{
public:
    UrlTarget(std::string name, const StreamFormat& format, Muxer::Target target);

private:
    void take(const CodedPacketPtr& packet) override;
    void close() override;
    std::chrono::milliseconds patience() const override { return std::chrono::seconds(2); }

    bool connect(const CodedPacket& packet);

    const Muxer::Target _target;

    // target's thread
    std::unique_ptr<Muxer> _muxer;
    qint64 _origin = 0; ///< dts of the connection's first packet
    std::chrono::steady_clock::time_point _connectedAt{};
};

} // namespace tavlo
