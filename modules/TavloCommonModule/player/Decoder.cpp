#include "TavloCommonModule/player/Decoder.h"

#include "TavloCommonModule/player/FramePacket.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <QDebug>
#include <QThread>

#include <algorithm>
#include <array>
#include <cstring>

namespace tavlo {
namespace {

constexpr int mostThreads = 4; // many sources decode side by side

bool isSame(const AVCodecParameters& a, const AVCodecParameters& b)
{
    const bool sameExtra =
        a.extradata_size == b.extradata_size &&
        (a.extradata_size == 0 || std::memcmp(a.extradata, b.extradata, static_cast<size_t>(a.extradata_size)) == 0);
    return a.codec_id == b.codec_id && a.codec_tag == b.codec_tag && a.format == b.format && a.width == b.width &&
           a.height == b.height && a.sample_rate == b.sample_rate &&
           a.ch_layout.nb_channels == b.ch_layout.nb_channels && sameExtra;
}

} // namespace

bool Decoder::open(std::shared_ptr<const StreamInfo> stream, Hardware hardware, bool live)
{
    if (_context && isSame(*_stream->parameters, *stream->parameters)) {
        flush();
        _stream = std::move(stream);
        return true;
    }
    close();
    _stream = std::move(stream);
    if (!_frame)
        _frame.reset(av_frame_alloc());
    if (carriesFrames())
        return true;
    const AVCodec* const codec = avcodec_find_decoder(_stream->parameters->codec_id);
    const QString name = QString::fromUtf8(avcodec_get_name(_stream->parameters->codec_id));
    _context.reset(codec ? avcodec_alloc_context3(codec) : nullptr);
    if (!_context || avcodec_parameters_to_context(_context.get(), _stream->parameters) < 0) {
        qDebug().noquote() << "player: no decoder for" << name;
        _context.reset();
        return false;
    }
    _context->pkt_timebase = microsecondBase;
    _context->thread_count = std::clamp(QThread::idealThreadCount(), 1, mostThreads);
    if (live)
        _context->thread_type = FF_THREAD_SLICE; // threads of whole frames would hold one back each
    _context->max_pixels = int64_t{8192} * 8192;
    if (hardware != Hardware::None && _context->codec_type == AVMEDIA_TYPE_VIDEO)
        chooseHardware(*codec, hardware == Hardware::Cuda);
    const int result = avcodec_open2(_context.get(), codec, nullptr);
    if (result < 0) {
        qDebug().noquote() << "player: failed to open the decoder for" << name << "-" << ffmpegError(result);
        _context.reset();
    }
    return _context != nullptr;
}

/// The first of the known interfaces that the codec and this machine have.
void Decoder::chooseHardware(const AVCodec& codec, bool preferCuda)
{
    std::array types{AV_HWDEVICE_TYPE_VAAPI, AV_HWDEVICE_TYPE_CUDA};
    if (preferCuda)
        std::ranges::reverse(types);
    _hardwareAsked = true;
    if (std::ranges::none_of(types, [&](AVHWDeviceType type) { return openDevice(codec, type); }))
        return;
    _context->hw_device_ctx = av_buffer_ref(_device.get());
    _context->opaque = this;
    _context->get_format = [](AVCodecContext* context, const AVPixelFormat* offered) {
        const AVPixelFormat wanted = static_cast<const Decoder*>(context->opaque)->_deviceFormat;
        const AVPixelFormat* choice = offered;
        while (*choice != AV_PIX_FMT_NONE && *choice != wanted)
            ++choice;
        return *choice != AV_PIX_FMT_NONE ? wanted : avcodec_default_get_format(context, offered);
    };
}

bool Decoder::openDevice(const AVCodec& codec, AVHWDeviceType type)
{
    for (int i = 0; const AVCodecHWConfig* config = avcodec_get_hw_config(&codec, i); ++i) {
        if (config->device_type != type || !(config->methods & AV_CODEC_HW_CONFIG_METHOD_HW_DEVICE_CTX))
            continue;
        AVBufferRef* device = nullptr;
        if (av_hwdevice_ctx_create(&device, type, nullptr, nullptr, 0) < 0)
            return false;
        _device.reset(device);
        _deviceFormat = config->pix_fmt;
        return true;
    }
    return false;
}

/// A device that is there may still refuse a stream's size or profile: what comes out tells.
void Decoder::tellHardware(const AVFrame& first)
{
    if (!_hardwareAsked || std::exchange(_hardwareTold, true))
        return;
    if (_device && first.format == _deviceFormat)
        qDebug().noquote() << "player: decoding" << _context->codec->name << "with"
                           << av_get_pix_fmt_name(_deviceFormat);
    else
        qDebug().noquote() << "player: no graphics processor decodes this" << _context->codec->name
                           << "here, decoding in software";
}

void Decoder::close()
{
    _context.reset();
    _device.reset();
    _deviceFormat = AV_PIX_FMT_NONE;
    _hardwareAsked = false;
    _stream.reset();
}

void Decoder::flush()
{
    if (_context)
        avcodec_flush_buffers(_context.get());
}

void Decoder::decode(const AVPacket* packet, const TakeFrame& take, const MayStay& mayStay)
{
    if (_frame && packet && carriesFrames())
        unpack(*packet, take);
    if (!_context || !_frame)
        return;
    // What cannot be decoded is left out: the decoder finds its way back into the stream by itself.
    if (avcodec_send_packet(_context.get(), packet) < 0 && packet)
        return;
    bool wanted = true;
    while (wanted && avcodec_receive_frame(_context.get(), _frame.get()) >= 0) {
        tellHardware(*_frame);
        if (AVFrame* const frame = inReach(mayStay))
            wanted = take(*frame);
        av_frame_unref(_frame.get());
    }
    if (!packet || !wanted)
        flush();
}

bool Decoder::carriesFrames() const { return _stream && _stream->parameters->codec_id == AV_CODEC_ID_WRAPPED_AVFRAME; }

void Decoder::unpack(const AVPacket& packet, const TakeFrame& take)
{
    if (av_frame_ref(_frame.get(), frameOf(packet)) < 0)
        return;
    _frame->best_effort_timestamp = packet.pts;
    _frame->pkt_duration = packet.duration;
    take(*_frame);
    av_frame_unref(_frame.get());
}

/// In main memory, unless the frame may stay where it is.
AVFrame* Decoder::inReach(const MayStay& mayStay)
{
    if (_deviceFormat == AV_PIX_FMT_NONE || _frame->format != _deviceFormat || mayStay(*_frame))
        return _frame.get();
    if (!_fetched)
        _fetched.reset(av_frame_alloc());
    av_frame_unref(_fetched.get());
    if (av_hwframe_transfer_data(_fetched.get(), _frame.get(), 0) < 0)
        return nullptr;
    av_frame_copy_props(_fetched.get(), _frame.get());
    return _fetched.get();
}

} // namespace tavlo
