// The program's sound: which channels are heard and how loud, the mix, and its way to meter and outputs.

#include "base/Clock.h"
#include "channels/TavloPresentChannelPGM.h"

#include <tavlo/TavloPresentUtil.h>
#include <tavlo/records/EngineRecords.h>

#include <algorithm>

using namespace tavlo;

void TavloPresentChannelPGM::openMix()
{
    if (hasFlag(ChannelWithoutMix))
        return;
    const tagTavloPresentEngineInfo& engine = _site.engine->engineInfo();
    const tagTavloAudioInfo& audio = engine.audioInfo;
    _audioPreview.reset(TavloPresentUtil::createAudioPreviewObject());
    if (!_audioPreview)
        return;
    setAudioMixer(_site.engine->audioMixerParam());
    _audioPreview->setSink(this);
    _audioPreview->open(engine.pgmAudioDevName, audio.sampleRate, audio.channels, audio.bitsPerSample,
                        static_cast<int>(engine.channelCount));
}

void TavloPresentChannelPGM::setAudioMixer(const tagTavloPresentAudioMixerParam& mixer)
{
    _mix.setMixer(mixer);
    if (_audioPreview)
        _audioPreview->setVolume(static_cast<float>(mixer.audioVolumePGMDev[static_cast<std::size_t>(_pgmIndex)]));
}

/// Tells the audio threads where the picture stands.
void TavloPresentChannelPGM::publishPicture()
{
    ProgramMix::Picture picture;
    picture.position = std::clamp(_switchProcessPos, 0.0, 1.0);
    for (int channel = 0; channel < TavloMixedChannelLimit; ++channel) {
        const auto at = static_cast<std::size_t>(channel);
        picture.onProgram[at] = _site.engine->isOnProgram(channel);
        picture.onNext[at] = _site.engine->isOnNext(channel);
    }
    _mix.setPicture(picture);
}

void TavloPresentChannelPGM::pushAudio(int channelId, int, block_t* block, const tagTavloAudioInfo& format)
{
    if (channelId < 0 || channelId >= TavloMixedChannelLimit)
        return;
    const auto channel = static_cast<std::size_t>(channelId);
    const auto bus = static_cast<std::size_t>(_pgmIndex);
    tagTavloPresentAudioLevel& levels = _site.engine->audioLevel();
    const ProgramMix::Volume volume = _mix.volume(channelId, _pgmIndex);
    measureBlock(levels.sourceLevel[channel], levels.sourceTime[channel], block->p_buffer, block->i_buffer, format,
                 volume.channel);
    if (!_audioPreview)
        return;
    std::atomic_ref(levels.pgmBusVolume[bus][channel])
        .store(static_cast<float>(volume.program), std::memory_order_relaxed);
    _audioPreview->writeAudio(static_cast<quint32>(channelId), static_cast<quint32>(_pgmIndex), volume.bus, block,
                              format, volume.program);
}

void TavloPresentChannelPGM::audioFlush(int channelId, bool now)
{
    if (_audioPreview)
        _audioPreview->flush(static_cast<quint32>(channelId), now);
}

int TavloPresentChannelPGM::audioTime(int channelId, qint64& microseconds)
{
    microseconds = 0;
    return _audioPreview ? _audioPreview->getTime(static_cast<quint32>(channelId), &microseconds) : -1;
}

void TavloPresentChannelPGM::audioPause(int channelId, qint64 date)
{
    if (_audioPreview)
        _audioPreview->pause(static_cast<quint32>(channelId), date);
}

void TavloPresentChannelPGM::audioResume(int channelId, qint64 date)
{
    if (_audioPreview)
        _audioPreview->resume(static_cast<quint32>(channelId), date);
}

IUnknownEx* TavloPresentChannelPGM::queryInterface(const TavloInterfaceId& id, quint32 version)
{
    if (id == ITavloAudioPreviewObjectSink::interfaceId && acceptsInterfaceVersion(version))
        return static_cast<ITavloAudioPreviewObjectSink*>(this);
    return TavloPresentChannelRich2::queryInterface(id, version);
}

void TavloPresentChannelPGM::OnAudioPreviewSamples(ITavloAudioPreviewObject*, const void* samples, int length,
                                                   const tagTavloAudioInfo& format)
{
    _site.engine->updatePGMLevel(channelId(), samples, static_cast<quint32>(length), format);
}

void TavloPresentChannelPGM::updateLevel(const void* samples, quint32 length, const tagTavloAudioInfo& format)
{
    const auto bus = static_cast<std::size_t>(_pgmIndex);
    tagTavloPresentAudioLevel& levels = _site.engine->audioLevel();
    measureBlock(levels.pgmLevel[bus], levels.pgmTime[bus], samples, length, format, 1.0);
    const qint64 bytesPerSecond = qint64{format.sampleRate} * format.channels * format.bitsPerSample / 8;
    const qint64 microseconds = bytesPerSecond > 0 ? length * 1'000'000 / bytesPerSecond : 0;
    const qint64 due = _soundClock.stamp(static_cast<qint64>(millisecondClockMicroseconds()), microseconds);
    if (outputTarget())
        outputTarget()->commitAudioData(samples, static_cast<int>(length), due);
}
