#pragma once

#include "TavloOutputModule/ServedTarget.h"
#include "TavloOutputModule/SmallPictures.h"

namespace tavlo {

/// Small pictures without sound for those who want to see what goes out, as motion JPEG over HTTP, which any browser
/// shows. Nothing is decoded while nobody looks.
class RelayTarget final : public ServedTarget
{
public:
    /// \param width        of the pictures, pixels
    /// \param bufferCount  pictures that may wait for a viewer
    RelayTarget(std::string name, const StreamFormat& format, HttpAddress address, int width, size_t bufferCount);

private:
    void take(const CodedPacketPtr& packet) override;
    void show(const CodedPacket& packet);

    const int _width;
    std::unique_ptr<SmallPictures> _pictures; ///< target's thread, while somebody looks
};

} // namespace tavlo
