#include "engines/ChannelSet.h"

#include <algorithm>

namespace tavlo {

template <class Channel>
Channel* ChannelSet::keep(const ChannelSite& site)
{
    auto channel = std::make_unique<Channel>(site);
    Channel* const kept = channel.get();
    _channels.push_back(std::move(channel));
    return kept;
}

bool ChannelSet::addProgram(const ChannelSite& site, const QSizeF& frame)
{
    _program = keep<TavloPresentChannelPGM>(site);
    return _program->createChannel(frame);
}

bool ChannelSet::addPreview(const ChannelSite& site, const QSizeF& frame)
{
    _preview = keep<TavloPresentChannelPVM>(site);
    return _preview->createChannel(frame);
}

bool ChannelSet::addSource(const ChannelSite& site, const QSizeF& frame)
{
    _sources.push_back(keep<TavloPresentChannelSource>(site));
    return _sources.back()->createChannel(frame);
}

void ChannelSet::destroy()
{
    _sources.clear();
    for (; !_channels.empty(); _channels.pop_back()) {
        _channels.back()->destroyChannel();
        if (_channels.back().get() == _preview)
            _preview = nullptr;
        else if (_channels.back().get() == _program)
            _program = nullptr;
    }
}

TavloPresentChannelRich* ChannelSet::find(int channelId) const
{
    const auto found =
        std::ranges::find_if(_channels, [channelId](const auto& channel) { return channel->channelId() == channelId; });
    return found != _channels.end() ? found->get() : nullptr;
}

TavloPresentChannelSource* ChannelSet::source(int index) const
{
    return index >= 0 && static_cast<std::size_t>(index) < _sources.size() ? _sources[static_cast<std::size_t>(index)]
                                                                           : nullptr;
}

} // namespace tavlo
