#include "TavloOutputModule/RtpTarget.h"

#include <utility>

namespace tavlo {

namespace {

constexpr qint64 queueLimit = 4'000'000; // microseconds

class Description final : public HttpResource
{
public:
    explicit Description(std::string text) : _text(std::move(text)) {}
    HttpReply get(const std::string& step) override
    {
        if (!step.empty())
            return {};
        return {"application/sdp", QByteArray::fromStdString(_text), {}, {}};
    }

private:
    const std::string _text;
};

} // namespace

RtpTarget::RtpTarget(std::string name, const StreamFormat& format, Destination destination, HttpAddress description)
    : Target(std::move(name), format, queueLimit), _destination(std::move(destination)),
      _description(std::move(description))
{}

void RtpTarget::take(const CodedPacketPtr& packet)
{
    if (_muxers.empty() && !connect(*packet))
        return countDropped(*packet);
    for (const auto& muxer : _muxers) { // each takes what is its own
        std::string error;
        if (muxer->write(*packet, _origin, error))
            continue;
        countDropped(*packet);
        close();
        return pause("lost " + _destination.address + ": " + error);
    }
    countWritten(*packet);
}

bool RtpTarget::connect(const CodedPacket& packet)
{
    if (!_format.canBegin(packet) || isPausing())
        return false;
    StreamFormat pictures = _format, sound = _format;
    pictures.audioExtraData.clear();
    sound.videoExtraData.clear();
    std::string error;
    const bool opened = (!_format.hasVideo() || open(pictures, _destination.port, error)) &&
                        (!_format.hasAudio() || open(sound, _destination.port + 2, error));
    if (!opened || !_place.take(_description.address, _description.port, _description.path,
                                std::make_shared<Description>(Muxer::sessionDescription(_muxers)), error)) {
        close();
        pause("cannot send to " + _destination.address + " and serve " + _description.text() + ": " + error);
        return false;
    }
    _origin = packet.dts();
    countOpening();
    setState(State::Running);
    tell("sends to " + _destination.address + ", described at " + _description.text());
    return true;
}

bool RtpTarget::open(const StreamFormat& format, int port, std::string& error)
{
    const std::string url = "rtp://" + urlHost(_destination.address) + ':' + std::to_string(port) +
                            "?pkt_size=1316&ttl=" + std::to_string(_destination.timeToLive);
    std::unique_ptr<Muxer> muxer = Muxer::open({"rtp", url, {}}, format, _limits, error);
    if (!muxer)
        return false;
    _muxers.push_back(std::move(muxer));
    return true;
}

void RtpTarget::close()
{
    std::string error;
    for (const auto& muxer : _muxers)
        muxer->finish(error);
    _muxers.clear();
    _place.leave();
}

} // namespace tavlo
