#pragma once

#include <tavlo/TavloPresentChannelID.h>
#include <tavlo/records/AudioRecords.h>

#include <bitset>
#include <mutex>

namespace tavlo {

/// Which channels are heard on a program bus, and how loud.
///
/// The frame thread says what is on air and what the operator has set; the sources' audio threads ask. The lock inside
/// is held for a copy.
class ProgramMix
{
public:
    using Channels = std::bitset<TavloMixedChannelLimit>;

    /// Where the picture stands: what is seen in the program and in the channel that comes, and how far the take is.
    struct Picture
    {
        Channels onProgram;
        Channels onNext;
        double position = 0.0; ///< of the running take, 0 to 1
    };

    /// Frame thread.
    void setPicture(const Picture& picture);
    void setMixer(const tagTavloPresentAudioMixerParam& mixer);

    struct Volume
    {
        double channel = 0.0; ///< of the channel by itself, heard or not
        double program = 0.0; ///< at which it goes into the bus, 0 when it is not heard there
        double bus = 0.0;     ///< master of the bus
    };

    /// Any thread. \param channel below TavloMixedChannelLimit \param bus below TavloProgramBusCount
    Volume volume(int channel, int bus) const;

private:
    mutable std::mutex _lock;
    // guarded by _lock
    Picture _picture;
    tagTavloPresentAudioMixerParam _mixer;
};

} // namespace tavlo
