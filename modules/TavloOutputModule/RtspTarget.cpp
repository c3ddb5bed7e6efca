#include "TavloOutputModule/RtspTarget.h"

#include "TavloOutputModule/NetAddress.h"

#include <utility>

namespace tavlo {

namespace {

constexpr qint64 queueLimit = 4'000'000; // microseconds

} // namespace

RtspTarget::RtspTarget(std::string name, const StreamFormat& format, std::string address, quint16 port,
                       std::string path)
    : Target(std::move(name), format, queueLimit), _address(std::move(address)), _port(port), _path(std::move(path))
{}

quint64 RtspTarget::viewers() const
{
    const std::lock_guard guard(_serverLock);
    return _server ? _server->viewers() : 0;
}

quint64 RtspTarget::viewerDropped() const
{
    const std::lock_guard guard(_serverLock);
    return _server ? _server->dropped() : 0;
}

void RtspTarget::take(const CodedPacketPtr& packet)
{
    if (!_server && !isPausing())
        publish();
    if (!_server)
        return countDropped(*packet);
    _server->push(*packet);
    countWritten(*packet);
}

void RtspTarget::publish()
{
    const std::string shown = "rtsp://" + urlHost(_address) + ':' + std::to_string(_port) + _path;
    std::string error;
    std::unique_ptr<RtspServer> server = RtspServer::open(_address, _port, _path, _format, error);
    if (!server)
        return pause("cannot serve " + shown + ": " + error);
    {
        const std::lock_guard guard(_serverLock);
        _server = std::move(server);
    }
    countOpening();
    setState(State::Running);
    tell("serves " + shown);
}

void RtspTarget::close()
{
    std::unique_ptr<RtspServer> server;
    const std::lock_guard guard(_serverLock);
    server = std::move(_server);
}

} // namespace tavlo
