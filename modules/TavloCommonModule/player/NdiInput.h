#pragma once

#include "TavloCommonModule/ndi/NdiLibrary.h"
#include "TavloCommonModule/player/FrameInput.h"

namespace tavlo {

/// A sender on the network, received through NDI's library.
class NdiInput final : public FrameInput
{
public:
    explicit NdiInput(const std::atomic<bool>& interrupted) : FrameInput(interrupted) {}
    ~NdiInput() override { close(); }

private:
    class Connection;

    QString connect(const InputLocation& location, bool pictures, bool sound) override;
    void disconnect() override { _connection.reset(); }
    int fetch(Arrival& arrival) override;

    std::shared_ptr<Connection> find(const ndi::Library& library, const InputLocation& location, bool pictures) const;
    bool take(const ndi::VideoFrame& video, Arrival& arrival);
    bool take(const ndi::PlanarAudioFrame& audio, Arrival& arrival) const;

    std::shared_ptr<Connection> _connection; ///< pictures on their way keep it, too
    bool _cameAlready = false;               ///< something of it
    quint32 _toldLayout = 0;                 ///< one that cannot be shown
};

} // namespace tavlo
