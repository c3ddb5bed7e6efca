#include "TavloOutputModule/UrlTarget.h"

#include <utility>

namespace tavlo {

namespace {

constexpr qint64 queueLimit = 4'000'000;       // microseconds
constexpr std::chrono::seconds steadyTime{10}; // a connection that lasted as long was good

} // namespace

std::string shownUrl(const std::string& url)
{
    const size_t scheme = url.find("://");
    const size_t host = scheme == std::string::npos ? 0 : scheme + 3;
    std::string rest = url.substr(host);
    rest.erase(std::min(rest.find_first_of("?# "), rest.size()));
    const size_t slash = rest.find('/');
    const size_t user = rest.rfind('@', slash);
    std::string authority = rest.substr(0, slash);
    if (user != std::string::npos)
        authority.erase(0, user + 1);
    std::string path = slash == std::string::npos ? std::string() : rest.substr(slash);
    const size_t end = path.find_last_not_of('/'); // of the last step
    if (end != std::string::npos)
        path = path.substr(0, path.rfind('/', end) + 1) + "***";
    return url.substr(0, host) + authority + path;
}

UrlTarget::UrlTarget(std::string name, const StreamFormat& format, Muxer::Target target)
    : Target(std::move(name), format, queueLimit), _target(std::move(target))
{}

void UrlTarget::take(const CodedPacketPtr& packet)
{
    if (!_muxer && !connect(*packet)) {
        countDropped(*packet);
        return;
    }
    std::string error;
    if (_muxer->write(*packet, _origin, error)) {
        countWritten(*packet);
        return;
    }
    countDropped(*packet);
    _muxer.reset();
    if (std::chrono::steady_clock::now() - _connectedAt > steadyTime)
        beginPausesAnew();
    pause("lost " + shownUrl(_target.url) + ": " + error);
}

bool UrlTarget::connect(const CodedPacket& packet)
{
    if (!_format.canBegin(packet) || isPausing() || std::chrono::steady_clock::now() > _limits.endBy.load())
        return false;
    std::string error;
    _muxer = Muxer::open(_target, _format, _limits, error);
    if (!_muxer && error.empty()) { // so far
        setState(State::Waiting);
        return false;
    }
    if (!_muxer) {
        pause("cannot open " + shownUrl(_target.url) + ": " + error);
        return false;
    }
    _origin = packet.dts();
    _connectedAt = std::chrono::steady_clock::now();
    countOpening();
    setState(State::Running);
    tell("sends to " + shownUrl(_target.url));
    return true;
}

void UrlTarget::close()
{
    std::string error;
    if (_muxer)
        _muxer->finish(error);
    _muxer.reset();
}

} // namespace tavlo
