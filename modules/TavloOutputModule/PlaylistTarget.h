#pragma once

#include "TavloOutputModule/ServedTarget.h"

namespace tavlo {

/// Serves the playlist of a folder and its segments, which another target writes there. Of packets it takes nothing: they
/// tell it when to try again.
class PlaylistTarget final : public Target
{
public:
    /// Serves from now on, if it can.
    PlaylistTarget(std::string name, const StreamFormat& format, HttpAddress address, std::string folder);

private:
    void take(const CodedPacketPtr& packet) override;
    void close() override { _place.leave(); }
    std::chrono::milliseconds patience() const override { return std::chrono::seconds(2); }

    void publish();

    const HttpAddress _address;
    const std::shared_ptr<HttpResource> _folder;
    HttpPlace _place; ///< target's thread, once it runs
};

} // namespace tavlo
