#include "TavloOutputModule/PlaylistTarget.h"

#include <utility>

namespace tavlo {

namespace {

constexpr qint64 queueLimit = 4'000'000; // microseconds

/// Gives the files of a playlist, and nothing else of its folder.
class PlaylistFolder final : public HttpResource
{
public:
    explicit PlaylistFolder(std::string folder) : _folder(std::move(folder)) {}

    HttpReply get(const std::string& step) override
    {
        const bool isList = step.ends_with(".m3u8");
        if (step.starts_with('.') || (!isList && !step.ends_with(".ts")))
            return {};
        return {isList ? "application/vnd.apple.mpegurl" : "video/mp2t", {}, _folder + '/' + step, {}};
    }

private:
    const std::string _folder;
};

} // namespace

PlaylistTarget::PlaylistTarget(std::string name, const StreamFormat& format, HttpAddress address, std::string folder)
    : Target(std::move(name), format, queueLimit), _address(std::move(address)),
      _folder(std::make_shared<PlaylistFolder>(std::move(folder)))
{
    publish();
}

void PlaylistTarget::take(const CodedPacketPtr&)
{
    if (!_place.isTaken() && !isPausing())
        publish();
}

void PlaylistTarget::publish()
{
    const std::string shown = _address.text() + "/index.m3u8";
    std::string error;
    if (!_place.take(_address.address, _address.port, _address.path, _folder, error))
        return pause("cannot serve " + shown + ": " + error);
    setState(State::Running);
    tell("serves " + shown);
}

} // namespace tavlo
