#include "channels/ProgramMix.h"

#include "audio/Audibility.h"

namespace tavlo {

void ProgramMix::setPicture(const Picture& picture)
{
    const std::lock_guard guard(_lock);
    _picture = picture;
}

void ProgramMix::setMixer(const tagTavloPresentAudioMixerParam& mixer)
{
    const std::lock_guard guard(_lock);
    _mixer = mixer;
}

ProgramMix::Volume ProgramMix::volume(int channel, int bus) const
{
    const auto at = static_cast<std::size_t>(channel);
    const std::lock_guard guard(_lock);
    const double own = _mixer.audioVolume[at];
    const Audibility heard =
        audibilityOf(_mixer.audioEnable[at], own, _picture.position, _picture.onProgram[at], _picture.onNext[at]);
    return {heard.volume, heard.mixed(), _mixer.audioVolumePGM[static_cast<std::size_t>(bus)]};
}

} // namespace tavlo
