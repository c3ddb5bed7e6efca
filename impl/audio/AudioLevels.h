#pragma once

#include <tavlo/records/AudioRecords.h>

#include <mutex>

struct tagTavloAudioInfo;

namespace tavlo {

/// The meters of an engine. Any thread: sound is measured on the caller's, the lock is held for the result alone.
class AudioLevels
{
public:
    /// The meter of a source channel, with the millisecond clock. Channels that are not mixed are ignored.
    /// \param samples  of 16 bits, interleaved \param length bytes \param volume scales what the meter shows
    void updateSource(quint32 channel, const void* samples, unsigned length, const tagTavloAudioInfo& format,
                      double volume);

    void updatePvm(const void* samples, unsigned length, const tagTavloAudioInfo& format, double volume);

    /// \param bus 0 to 3; others are ignored
    void updatePgm(quint32 bus, const void* samples, unsigned length, const tagTavloAudioInfo& format, double volume);

    /// How loud a channel goes into a bus; 0 when it is not audible there.
    void setBusVolume(quint32 bus, quint32 channel, float volume);

    tagTavloPresentAudioLevel get() const;

private:
    using Meter = tagTavloPresentAudioLevel::Meter;

    void update(Meter& meter, quint32& time, const void* samples, unsigned length, const tagTavloAudioInfo& format,
                double volume);

    mutable std::mutex _lock;
    tagTavloPresentAudioLevel _levels; ///< guarded by _lock
};

} // namespace tavlo
