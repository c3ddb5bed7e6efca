#include "TavloAudioPortModule/TavloAudioNoiseSuppress.h"

#include "shared/ModuleFactory.h"
#include "shared/VlcTypes.h"

#include <tavlo/Export.h>

#include <QDebug>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int strongest = 60; ///< dB
constexpr int framesPerSecond = 100;
constexpr int mostChannels = 32;

bool canProcess(int channels, int bits, int rate)
{
    return channels >= 1 && channels <= mostChannels && (bits == 8 || bits == 16) && rate >= 8000 && rate <= 192'000;
}

SpeexPreprocessState* makeState(int frameSize, int rate, int decibels)
{
    SpeexPreprocessState* const state = speex_preprocess_state_init(frameSize, rate);
    if (!state)
        return nullptr;
    int on = 1;
    int gain = -decibels;
    speex_preprocess_ctl(state, SPEEX_PREPROCESS_SET_DENOISE, &on);
    speex_preprocess_ctl(state, SPEEX_PREPROCESS_SET_NOISE_SUPPRESS, &gain);
    return state;
}

qint16 wideSample(quint8 sample) { return static_cast<qint16>((sample - 128) * 256); }

quint8 narrowSample(qint16 sample) { return static_cast<quint8>(std::clamp((sample + 128) / 256, -128, 127) + 128); }

} // namespace

bool TavloAudioNoiseSuppress::open(int level, int channels, int bits, int rate)
{
    close();
    if (!canProcess(channels, bits, rate)) {
        qDebug() << "TavloAudioNoiseSuppress::open: cannot process channels, bits, rate" << channels << bits << rate;
        return false;
    }
    const int decibels = static_cast<int>(std::min<qint64>(std::llabs(level), strongest));
    _frameSize = static_cast<size_t>(rate / framesPerSecond);
    for (int c = 0; c < channels && decibels > 0; ++c) {
        Channel channel;
        channel.state.reset(makeState(static_cast<int>(_frameSize), rate, decibels));
        if (!channel.state) {
            qDebug() << "TavloAudioNoiseSuppress::open: no memory";
            close();
            return false;
        }
        channel.in.assign(_frameSize, 0);
        channel.out.assign(_frameSize, 0);
        _channels.push_back(std::move(channel));
    }
    _channelCount = channels;
    _bits = bits;
    _rate = rate;
    return true;
}

block_t* TavloAudioNoiseSuppress::process(block_t* block, int channels, int bits, int rate, qint64)
{
    if (!block || _channels.empty() || channels != _channelCount || bits != _bits || rate != _rate)
        return block;
    const size_t sampleBytes = bits == 8 ? sizeof(quint8) : sizeof(qint16);
    const size_t frames = block->i_buffer / sampleBytes / _channels.size();
    quint8* at = block->p_buffer;
    for (size_t i = 0; i < frames; ++i) {
        for (Channel& channel : _channels) {
            if (bits == 8) {
                *at = narrowSample(exchange(channel, wideSample(*at)));
            } else {
                qint16 sample;
                std::memcpy(&sample, at, sizeof sample);
                sample = exchange(channel, sample);
                std::memcpy(at, &sample, sizeof sample);
            }
            at += sampleBytes;
        }
        if (++_filled == _frameSize)
            endFrame();
    }
    return block;
}

void TavloAudioNoiseSuppress::close()
{
    _channels.clear();
    _channelCount = 0;
    _filled = 0;
}

/// Takes a sample in and gives the one of a frame ago.
qint16 TavloAudioNoiseSuppress::exchange(Channel& channel, qint16 sample) const
{
    channel.in[_filled] = sample;
    return channel.out[_filled];
}

void TavloAudioNoiseSuppress::endFrame()
{
    for (Channel& channel : _channels) {
        speex_preprocess_run(channel.state.get(), channel.in.data());
        std::swap(channel.in, channel.out);
    }
    _filled = 0;
}

extern "C" TAVLO_EXPORT IUnknownEx* CreateTavloAudioNoiseSuppress(const TavloInterfaceId& id, quint32 version)
{
    return tavlo::makeForModule<TavloAudioNoiseSuppress>(id, version);
}
