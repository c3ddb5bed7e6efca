#pragma once

#include "TavloCommonModule/audio/DriftControl.h"
#include "TavloCommonModule/audio/DriftResampler.h"
#include "TavloCommonModule/audio/LoopingSource.h"
#include "openal/OpenAlDevice.h"

#include <QString>

#include <memory>
#include <vector>

namespace tavlo {

/// Plays the mix on a device, at the pace of the device's own clock.
///
/// The device plays a ring of half a second; blocks are put into it ahead of where it plays, and what it has played
/// becomes silence behind it: a mix that is late is heard as a gap, not as an echo. Owner's thread, but for `write`.
class MixOutput
{
public:
    /// Null, with a log line, when there is no such device. Takes as long as the device takes.
    static std::unique_ptr<MixOutput> open(const QString& deviceName, int channels, int rate);

    ~MixOutput();
    MixOutput(const MixOutput&) = delete;
    MixOutput& operator=(const MixOutput&) = delete;

    enum class State
    {
        Playing, ///< the device has played on since the last block
        Waiting, ///< it has not: it takes more at once
        Lost,    ///< it has been unplugged
    };

    /// Mixing thread. Allocates nothing. \param block interleaved floats in the format of `open`
    State write(const float* block, int frames, float volume);

private:
    MixOutput(int channels, int rate);

    int advance();
    void silence(int position, int frames);
    int wrapped(int position) const { return position % _ring.frames(); }

    OpenAlDevice _device;
    LoopingSource _ring;
    const int _channels;
    const int _rate; ///< Hz, of the mix

    // fixed after open
    int _deviceRate = 0; ///< Hz
    int _wanted = 0;     ///< frames that are to lie ahead of the device

    // mixing thread
    std::unique_ptr<DriftResampler> _resampler; ///< to the device's rate
    DriftControl _control;
    int _position = 0; ///< of the device in the ring
    int _ahead = 0;    ///< frames that lie ahead of it
    std::vector<float> _silence;
};

} // namespace tavlo
