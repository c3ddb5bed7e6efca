#pragma once

#include "channels/TavloPresentChannelPGM.h"
#include "channels/TavloPresentChannelPVM.h"
#include "channels/TavloPresentChannelSource.h"

#include <memory>
#include <vector>

namespace tavlo {

/// The channels of an engine. Frame thread.
class ChannelSet
{
public:
    /// Each makes a channel, keeps it and creates it; false when creating it failed. The channel is kept in any case.
    bool addProgram(const ChannelSite& site, const QSizeF& frame);
    bool addPreview(const ChannelSite& site, const QSizeF& frame);
    bool addSource(const ChannelSite& site, const QSizeF& frame);

    /// From the last to the first. Sources end first: they stop calling preview and program.
    void destroy();

    /// By its id, or null.
    TavloPresentChannelRich* find(int channelId) const;

    /// By its place among the sources, or null.
    TavloPresentChannelSource* source(int index) const;

    TavloPresentChannelPVM* preview() const { return _preview; } ///< null before it is made
    TavloPresentChannelPGM* program() const { return _program; } ///< null before it is made
    const std::vector<std::unique_ptr<TavloPresentChannelRich>>& all() const { return _channels; }
    const std::vector<TavloPresentChannelSource*>& sources() const { return _sources; }

private:
    template <class Channel>
    Channel* keep(const ChannelSite& site);

    std::vector<std::unique_ptr<TavloPresentChannelRich>> _channels; ///< program, preview, then the sources
    std::vector<TavloPresentChannelSource*> _sources;
    TavloPresentChannelPVM* _preview = nullptr;
    TavloPresentChannelPGM* _program = nullptr;
};

} // namespace tavlo
