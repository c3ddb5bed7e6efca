#include "TavloOutputModule/ServedTarget.h"

#include <utility>

namespace tavlo {

ServedTarget::ServedTarget(std::string name, const StreamFormat& format, HttpAddress address,
                           std::shared_ptr<LiveFeed> feed)
    : Target(std::move(name), format, queueLimit), _address(std::move(address)), _feed(std::move(feed))
{}

bool ServedTarget::publish()
{
    if (_place.isTaken() || isPausing())
        return _place.isTaken();
    std::string error;
    if (!_place.take(_address.address, _address.port, _address.path, _feed, error)) {
        pause("cannot serve " + _address.text() + ": " + error);
        return false;
    }
    countOpening();
    setState(State::Running);
    tell("serves " + _address.text());
    return true;
}

void ServedTarget::close()
{
    _feed->end(_limits.endBy.load());
    _place.leave();
}

} // namespace tavlo
