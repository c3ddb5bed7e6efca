#include "TavloCommonModule/audio/MixOutput.h"

#include <QDebug>

#include <algorithm>

namespace tavlo {

namespace {

constexpr double leastAhead = 0.025; ///< seconds, beside what the device takes at once

} // namespace

MixOutput::MixOutput(int channels, int rate) : _channels(channels), _rate(rate) {}

std::unique_ptr<MixOutput> MixOutput::open(const QString& deviceName, int channels, int rate)
{
    std::unique_ptr<MixOutput> output(new MixOutput(channels, rate));
    if (!output->_device.open(deviceName, rate))
        return nullptr;
    const int deviceRate = output->_device.rate();
    const int update = output->_device.updateFrames();
    const int wanted = static_cast<int>(leastAhead * deviceRate) + update * 3 / 2;
    const int frames = std::max(deviceRate / 2, 4 * wanted);
    output->_deviceRate = deviceRate;
    output->_wanted = wanted;
    output->_resampler = std::make_unique<DriftResampler>(channels, deviceRate);
    output->_silence.assign(static_cast<size_t>(frames * channels), 0.0F);
    if (deviceRate <= 0 || !output->_resampler->setSource({channels, 32, rate}) ||
        !output->_ring.create(output->_device, channels, deviceRate, frames)) {
        qDebug() << "sound mix: the device" << deviceName << "cannot play channels, rate" << channels << rate;
        return nullptr;
    }
    return output;
}

MixOutput::~MixOutput()
{
    if (_device.isOpen())
        _ring.destroy(_device);
}

MixOutput::State MixOutput::write(const float* block, int frames, float volume)
{
    if (!_device.isConnected())
        return State::Lost;
    const OpenAlDevice::Scope scope(_device);
    _ring.setVolume(volume);
    const int played = advance();
    const int converted = _resampler->convert(block, frames, _control.trim());
    if (converted <= 0 || _ahead + converted > 3 * _wanted)
        return State::Waiting; // a device that stands still gets no more, nor one that a late mix would put behind
    _ring.put(wrapped(_position + _ahead), _resampler->samples(), converted);
    _ahead += converted;
    _control.update(static_cast<double>(_ahead) / _deviceRate, static_cast<double>(frames) / _rate);
    return played > 0 ? State::Playing : State::Waiting;
}

/// Follows the device. \return the frames that it has played
int MixOutput::advance()
{
    const int position = _ring.position();
    const int played = wrapped(position - _position + _ring.frames());
    silence(_position, std::min(played, _ahead));
    _position = position;
    _ahead -= played;
    if (_ahead <= 0) { // at first, and when the mix was late
        _ahead = _wanted;
        const double wanted = static_cast<double>(_wanted) / _deviceRate;
        _control.restart(wanted, 2.0 * wanted);
    }
    return played;
}

void MixOutput::silence(int position, int frames)
{
    if (frames > 0)
        _ring.put(position, _silence.data(), frames);
}

} // namespace tavlo
