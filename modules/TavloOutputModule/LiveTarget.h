#pragma once

#include "TavloOutputModule/ServedTarget.h"

namespace tavlo {

/// A stream that viewers fetch over HTTP: FLV from a path that ends so, MPEG-TS from any other.
class LiveTarget final : public ServedTarget
{
public:
    LiveTarget(std::string name, const StreamFormat& format, HttpAddress address);

private:
    void take(const CodedPacketPtr& packet) override;
    bool begin(const CodedPacket& packet);

    const bool _isFlv;

    // target's thread
    std::unique_ptr<Muxer> _muxer;
    QByteArray _bytes; ///< what the muxer wrote
    qint64 _origin = 0;
};

} // namespace tavlo
