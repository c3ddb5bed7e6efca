#include "TavloMpegModule/TavloMpegAudioEncoderFDK.h"

#include "shared/ModuleFactory.h"
#include "shared/VlcTypes.h"

#include <tavlo/Export.h>
#include <tavlo/TavloOutputStatistics.h>

#include <QDebug>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/channel_layout.h>
#include <libswresample/swresample.h>
}

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

namespace {

constexpr int quieter = AV_LOG_TRACE - AV_LOG_FATAL;
constexpr qint64 silenceChunk = 1024; // samples

/// Unsigned bytes, signed words, signed double words or floats, interleaved.
AVSampleFormat sampleFormatOf(const tagTavloAudioInfo& info)
{
    switch (info.bitsPerSample) {
    case 8:
        return AV_SAMPLE_FMT_U8;
    case 16:
        return AV_SAMPLE_FMT_S16;
    case 32:
        return info.audioFourcc == tavloFourcc("fl32") ? AV_SAMPLE_FMT_FLT : AV_SAMPLE_FMT_S32;
    default:
        return AV_SAMPLE_FMT_NONE;
    }
}

} // namespace

void TavloMpegAudioEncoderFDK::FreeFfmpeg::operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
void TavloMpegAudioEncoderFDK::FreeFfmpeg::operator()(AVFrame* frame) const { av_frame_free(&frame); }
void TavloMpegAudioEncoderFDK::FreeFfmpeg::operator()(AVPacket* packet) const { av_packet_free(&packet); }
void TavloMpegAudioEncoderFDK::FreeFfmpeg::operator()(SwrContext* context) const { swr_free(&context); }

TavloMpegAudioEncoderFDK::~TavloMpegAudioEncoderFDK() { TavloMpegAudioEncoderFDK::close(); }

void TavloMpegAudioEncoderFDK::init(quint32, ITavloMpegAudioEncoderSink* sink) { _sink = sink; }

bool TavloMpegAudioEncoderFDK::open(const tagTavloAudioInfo& audioInfo, const tagTavloPresentOutputParam& param)
{
    close();
    if (!openCodec(audioInfo, param) || !openConverter(audioInfo)) {
        qDebug() << "TavloMpegAudioEncoderFDK::open: cannot code channels, rate, bits" << audioInfo.channels
                 << audioInfo.sampleRate << audioInfo.bitsPerSample;
        close();
        return false;
    }
    _sampleBytes = audioInfo.channels * audioInfo.bitsPerSample / 8;
    _timeline = tavlo::SampleTimeline(audioInfo.sampleRate);
    _silence.assign(static_cast<size_t>(silenceChunk * _sampleBytes), audioInfo.bitsPerSample == 8 ? 0x80 : 0);
    _filled = 0;
    _sent = 0;
    _coded.reset();
    _lastPts = std::numeric_limits<qint64>::min();
    return true;
}

bool TavloMpegAudioEncoderFDK::openCodec(const tagTavloAudioInfo& audioInfo, const tagTavloPresentOutputParam& param)
{
    const AVCodec* const codec = avcodec_find_encoder(AV_CODEC_ID_AAC);
    _codec.reset(codec ? avcodec_alloc_context3(codec) : nullptr);
    if (!_codec || audioInfo.channels < 1 || audioInfo.channels > 8)
        return false;
    const quint32 wanted = param.audioSettings[1]; // channels; 0 as they come
    av_channel_layout_default(&_codec->ch_layout,
                              wanted == 1 || wanted == 2 ? static_cast<int>(wanted) : audioInfo.channels);
    _codec->log_level_offset = quieter;
    _codec->sample_fmt = AV_SAMPLE_FMT_FLTP;
    _codec->sample_rate = audioInfo.sampleRate;
    _codec->time_base = {1, audioInfo.sampleRate};
    _codec->bit_rate = static_cast<qint64>(std::clamp(param.audioBitrate, 16U, 1024U)) * 1000;
    _codec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    if (avcodec_open2(_codec.get(), codec, nullptr) < 0)
        return false;
    _packet.reset(av_packet_alloc());
    _frame.reset(av_frame_alloc());
    _frame->format = AV_SAMPLE_FMT_FLTP;
    _frame->nb_samples = _codec->frame_size;
    _frame->sample_rate = _codec->sample_rate;
    return av_channel_layout_copy(&_frame->ch_layout, &_codec->ch_layout) == 0 &&
           av_frame_get_buffer(_frame.get(), 0) == 0;
}

bool TavloMpegAudioEncoderFDK::openConverter(const tagTavloAudioInfo& audioInfo)
{
    AVChannelLayout layout{};
    av_channel_layout_default(&layout, audioInfo.channels);
    SwrContext* converter = nullptr;
    const int made = swr_alloc_set_opts2(&converter, &_codec->ch_layout, AV_SAMPLE_FMT_FLTP, audioInfo.sampleRate,
                                         &layout, sampleFormatOf(audioInfo), audioInfo.sampleRate, 0, nullptr);
    _converter.reset(converter);
    return made == 0 && swr_init(converter) == 0;
}

void TavloMpegAudioEncoderFDK::close()
{
    if (_codec && _converter) {
        if (_filled > 0)
            sendFrame(_filled);
        avcodec_send_frame(_codec.get(), nullptr);
        receive();
        if (_coded)
            _sink->onEncoded(static_cast<ITavloMpegAudioEncoder*>(this), _coded.release());
    }
    _converter.reset();
    _codec.reset();
    _frame.reset();
}

void TavloMpegAudioEncoderFDK::getExtraData(const quint8** data, int* size)
{
    *data = _codec ? _codec->extradata : nullptr;
    *size = _codec ? _codec->extradata_size : 0;
}

void TavloMpegAudioEncoderFDK::encode(const void* data, int size, qint64 pts, qint64)
{
    if (!_codec)
        return;
    const qint64 samples = size / _sampleBytes;
    const tavlo::SampleTimeline::Place place = _timeline.accept(pts, samples);
    if (place.silence > 0)
        takeSilence(place.silence);
    _skippedSamples.fetch_add(static_cast<quint64>(place.skip), std::memory_order_relaxed);
    takeSamples(static_cast<const quint8*>(data) + place.skip * _sampleBytes, samples - place.skip);
}

void TavloMpegAudioEncoderFDK::takeSilence(qint64 samples)
{
    _silentSamples.fetch_add(static_cast<quint64>(samples), std::memory_order_relaxed);
    for (qint64 left = samples; left > 0; left -= silenceChunk)
        takeSamples(_silence.data(), std::min(left, silenceChunk));
}

void TavloMpegAudioEncoderFDK::takeSamples(const quint8* data, qint64 samples)
{
    while (samples > 0) {
        const auto part = static_cast<int>(std::min<qint64>(samples, _codec->frame_size - _filled));
        std::array<quint8*, 8> to{};
        for (size_t i = 0; i < static_cast<size_t>(_frame->ch_layout.nb_channels); ++i)
            to[i] = _frame->extended_data[i] + size_t{sizeof(float)} * static_cast<size_t>(_filled);
        if (swr_convert(_converter.get(), to.data(), part, &data, part) < 0)
            return;
        data += qint64{part} * _sampleBytes;
        samples -= part;
        _filled += part;
        if (_filled == _codec->frame_size)
            sendFrame(_filled);
    }
}

void TavloMpegAudioEncoderFDK::sendFrame(int samples)
{
    _frame->nb_samples = samples;
    _frame->pts = _sent;
    avcodec_send_frame(_codec.get(), _frame.get());
    _sent += samples;
    _filled = 0;
    receive();
    av_frame_make_writable(_frame.get());
}

void TavloMpegAudioEncoderFDK::receive()
{
    while (avcodec_receive_packet(_codec.get(), _packet.get()) == 0) {
        if (tavlo::BlockPtr block{block_Alloc(static_cast<size_t>(_packet->size))}) {
            std::memcpy(block->p_buffer, _packet->data, static_cast<size_t>(_packet->size));
            _lastPts = std::max(_timeline.timeOf(_packet->pts), _lastPts + 1); // led back, the times still rise
            block->i_pts = block->i_dts = _lastPts;
            block->i_length = _packet->duration * 1'000'000 / _codec->sample_rate;
            block->i_nb_samples = static_cast<unsigned>(_packet->duration);
            deliver(std::move(block));
        }
        av_packet_unref(_packet.get());
    }
}

/// The block before this one goes, since only now it is known how long it lasts: times that are led back would have it
/// reach into this one, and containers refuse that.
void TavloMpegAudioEncoderFDK::deliver(tavlo::BlockPtr block)
{
    if (_coded) {
        const qint64 distance = block->i_pts - _coded->i_pts;
        if (distance < 2 * _coded->i_length) // else the times have jumped
            _coded->i_length = distance;
        _sink->onEncoded(static_cast<ITavloMpegAudioEncoder*>(this), _coded.release());
    }
    _coded = std::move(block);
}

void TavloMpegAudioEncoderFDK::getStatistics(tagTavloOutputStatistics* statistics)
{
    statistics->silentSamples += _silentSamples.load(std::memory_order_relaxed);
    statistics->skippedSamples += _skippedSamples.load(std::memory_order_relaxed);
}

extern "C" TAVLO_EXPORT IUnknownEx* CreateTavloMpegAudioEncoderFDK(const TavloInterfaceId& id, quint32 version)
{
    return tavlo::makeForModule<TavloMpegAudioEncoderFDK>(id, version);
}
