#pragma once

#include "TavloOutputModule/LiveTarget.h"
#include "TavloOutputModule/SmallPictures.h"

namespace tavlo {

/// Small pictures without sound for those who want to see what goes out, as motion JPEG over HTTP, which any browser
/// shows. Nothing is decoded while nobody looks.
class RelayTarget final : public Target
{
public:
    /// \param width        of the pictures, pixels
    /// \param bufferCount  pictures that may wait for a viewer
    RelayTarget(std::string name, const StreamFormat& format, HttpAddress address, int width, size_t bufferCount);

    quint64 viewers() const override { return _feed->viewers(); }
    quint64 viewerDropped() const override { return _feed->dropped(); }

private:
    void take(const CodedPacketPtr& packet) override;
    void close() override;
    std::chrono::milliseconds patience() const override { return std::chrono::seconds(2); }

    void publish();
    void show(const CodedPacket& packet);

    const HttpAddress _address;
    const int _width;
    const std::shared_ptr<LiveFeed> _feed;

    // target's thread
    HttpPlace _place;
    std::unique_ptr<SmallPictures> _pictures; ///< while somebody looks
};

} // namespace tavlo
