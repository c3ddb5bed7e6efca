#include "audio/AudioLevels.h"

#include "base/Clock.h"

#include <tavlo/TavloPresentUtil.h>
#include <tavlo/records/MediaFormat.h>

#include <algorithm>

namespace tavlo {

void AudioLevels::updateSource(quint32 channel, const void* samples, unsigned length, const tagTavloAudioInfo& format,
                               double volume)
{
    if (channel < _levels.sourceLevel.size())
        update(_levels.sourceLevel[channel], _levels.sourceTime[channel], samples, length, format, volume);
}

void AudioLevels::updatePvm(const void* samples, unsigned length, const tagTavloAudioInfo& format, double volume)
{
    update(_levels.pvmLevel, _levels.pvmTime, samples, length, format, volume);
}

void AudioLevels::updatePgm(quint32 bus, const void* samples, unsigned length, const tagTavloAudioInfo& format,
                            double volume)
{
    if (bus < _levels.pgmLevel.size())
        update(_levels.pgmLevel[bus], _levels.pgmTime[bus], samples, length, format, volume);
}

void AudioLevels::setBusVolume(quint32 bus, quint32 channel, float volume)
{
    const std::lock_guard lock(_lock);
    if (bus < _levels.pgmBusVolume.size() && channel < _levels.pgmBusVolume[bus].size())
        _levels.pgmBusVolume[bus][channel] = volume;
}

tagTavloPresentAudioLevel AudioLevels::get() const
{
    const std::lock_guard lock(_lock);
    return _levels;
}

/// A block with nothing to measure leaves the meter as it is.
void AudioLevels::update(Meter& meter, quint32& time, const void* samples, unsigned length,
                         const tagTavloAudioInfo& format, double volume)
{
    constexpr float unmeasured = -1.0F;
    Meter measured;
    measured.fill(unmeasured);
    TavloPresentUtil::updateAudioLevelData(measured.data(), samples, length, format.channels, format.bitsPerSample,
                                           format.sampleRate, volume);
    const std::lock_guard lock(_lock);
    std::transform(measured.begin(), measured.end(), meter.begin(), meter.begin(),
                   [](float now, float before) { return now == unmeasured ? before : now; });
    time = millisecondClock();
}

} // namespace tavlo
