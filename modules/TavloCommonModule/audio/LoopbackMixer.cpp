#include "TavloCommonModule/audio/LoopbackMixer.h"

#include "TavloCommonModule/audio/MixInput.h"

#include <QDebug>

#include <algorithm>

namespace tavlo {

bool LoopbackMixer::open(int channels, int rate)
{
    close();
    if (!_device.openLoopback(channels, rate))
        return false;
    _channels = channels;
    _rate = rate;
    _volume = 1.0F;
    _scratch.assign(static_cast<size_t>(blockFrames() * channels), 0.0F);
    return true;
}

void LoopbackMixer::close()
{
    for (Entry& entry : _entries)
        entry.source.destroy(_device);
    _entries.clear();
    _device.close();
}

std::shared_ptr<MixInput> LoopbackMixer::add()
{
    Entry entry{std::make_shared<MixInput>(_channels, _rate, blockFrames()), {}, true};
    if (!_device.isOpen() || !entry.source.create(_device, _channels, _rate, blockFrames())) {
        qDebug() << "sound mix: no more sources than" << _entries.size();
        return nullptr;
    }
    _entries.push_back(std::move(entry));
    return _entries.back().input;
}

void LoopbackMixer::remove(const std::shared_ptr<MixInput>& input)
{
    const auto found = std::find_if(_entries.begin(), _entries.end(), [&](const Entry& e) { return e.input == input; });
    if (found == _entries.end())
        return;
    found->source.destroy(_device);
    _entries.erase(found);
}

// Each source's buffer is one block long, and each block is rendered in one piece: the sources begin their buffers
// together with the block, and what has been put there is what is mixed.
void LoopbackMixer::mix(float* block, float volume)
{
    const OpenAlDevice::Scope scope(_device);
    if (volume != _volume)
        alListenerf(AL_GAIN, volume);
    _volume = volume;
    for (Entry& entry : _entries) {
        const bool sounds = entry.input->take(_scratch.data());
        if (sounds || !entry.isSilent)
            entry.source.put(0, _scratch.data(), blockFrames());
        entry.isSilent = !sounds;
        entry.source.setVolume(entry.input->volume());
    }
    _device.render(block, blockFrames());
}

} // namespace tavlo
