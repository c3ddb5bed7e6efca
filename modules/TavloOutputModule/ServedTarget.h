#pragma once

#include "TavloOutputModule/LiveFeed.h"
#include "TavloOutputModule/NetAddress.h"
#include "TavloOutputModule/Target.h"

namespace tavlo {

/// Where a server listens and what for.
struct HttpAddress
{
    std::string address; ///< of this machine
    quint16 port = 0;
    std::string path;

    std::string text() const { return "http://" + urlHost(address) + ':' + std::to_string(port) + path; }
};

/// What viewers fetch over HTTP: a feed, and the place at which it is served.
class ServedTarget : public Target
{
public:
    quint64 viewers() const override { return _feed->viewers(); }
    quint64 viewerDropped() const override { return _feed->dropped(); }

protected:
    static constexpr qint64 queueLimit = 4'000'000; ///< microseconds that may wait

    ServedTarget(std::string name, const StreamFormat& format, HttpAddress address, std::shared_ptr<LiveFeed> feed);

    /// Serves the feed, if it is not served; after a failure it pauses before the next attempt. Target's thread.
    /// \return whether it is served
    bool publish();

    void close() override;
    std::chrono::milliseconds patience() const override { return std::chrono::seconds(2); }

    const HttpAddress _address;
    const std::shared_ptr<LiveFeed> _feed;

private:
    HttpPlace _place; ///< target's thread
};

} // namespace tavlo
