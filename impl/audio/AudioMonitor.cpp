#include "audio/AudioMonitor.h"

#include "audio/DitheredGain.h"

#include <cstring>

namespace tavlo {

namespace {

constexpr int spareBytes = 1024; ///< of the buffer: blocks of nearly one length need not let it grow

void turnSigns(char* bytes, int length)
{
    for (int i = 0; i < length; ++i)
        bytes[i] = static_cast<char>(static_cast<unsigned char>(bytes[i]) ^ 0x80U);
}

} // namespace

AudioMonitor::AudioMonitor() : _render("TavloAudioPortModule", "CreateTavloAudioPortRenderOutput") {}

bool AudioMonitor::open(const QString& deviceName, const tagTavloAudioInfo& format)
{
    close();
    if (deviceName == QLatin1String("None") || deviceName == QLatin1String("Disable"))
        return false;
    const std::lock_guard lock(_lock);
    if (!_render.isReady())
        _render.create();
    _format = format;
    _isOpen = _render.isReady() && _render->open(deviceName, format.channels, format.sampleRate, format.bitsPerSample);
    return _isOpen;
}

void AudioMonitor::close()
{
    const std::lock_guard lock(_lock);
    if (_isOpen)
        _render->close();
    _isOpen = false;
}

bool AudioMonitor::isOpen() const
{
    const std::lock_guard lock(_lock);
    return _isOpen;
}

void AudioMonitor::write(const void* samples, int length, double volume)
{
    const std::lock_guard lock(_lock);
    if (!_isOpen || !samples || length <= 0)
        return;
    if (volume == 1.0) {
        _render->write(samples, length, 0, 0);
        return;
    }
    if (_buffer.size() < length)
        _buffer.resize(length + spareBytes);
    std::memcpy(_buffer.data(), samples, static_cast<size_t>(length));
    // Sound of eight bits has its middle at 128, the gain's at 0.
    if (_format.bitsPerSample == 8)
        turnSigns(_buffer.data(), length);
    scaleWithDither(_buffer.data(), length, _format.bitsPerSample, volume);
    if (_format.bitsPerSample == 8)
        turnSigns(_buffer.data(), length);
    _render->write(_buffer.constData(), length, 0, 0);
}

} // namespace tavlo
