#include "TavloOutputModule/Muxer.h"

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
}

#include <array>
#include <cstring>
#include <utility>

namespace tavlo {

namespace {

std::string errorText(int result)
{
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
    av_strerror(result, text.data(), text.size());
    return text.data();
}

bool setExtraData(AVCodecParameters& parameters, const QByteArray& data)
{
    const auto size = static_cast<size_t>(data.size());
    parameters.extradata = static_cast<quint8*>(av_mallocz(size + AV_INPUT_BUFFER_PADDING_SIZE));
    if (!parameters.extradata)
        return false;
    std::memcpy(parameters.extradata, data.constData(), size);
    parameters.extradata_size = static_cast<int>(size);
    return true;
}

void describeVideo(AVStream& stream, const StreamFormat& format)
{
    AVCodecParameters& parameters = *stream.codecpar;
    parameters.codec_type = AVMEDIA_TYPE_VIDEO;
    parameters.codec_id = format.hevc ? AV_CODEC_ID_HEVC : AV_CODEC_ID_H264;
    parameters.format = 0; // yuv420p
    parameters.width = format.width;
    parameters.height = format.height;
    parameters.bit_rate = format.videoBitrate;
    parameters.sample_aspect_ratio = {1, 1};
    parameters.color_range = AVCOL_RANGE_MPEG;
    parameters.color_space = AVCOL_SPC_BT709;
    parameters.color_primaries = AVCOL_PRI_BT709;
    parameters.color_trc = AVCOL_TRC_BT709;
    parameters.chroma_location = AVCHROMA_LOC_CENTER;
    stream.avg_frame_rate = stream.r_frame_rate = {format.fpsNum, format.fpsDen};
    stream.time_base = {format.fpsDen, format.fpsNum};
}

void describeAudio(AVStream& stream, const StreamFormat& format)
{
    AVCodecParameters& parameters = *stream.codecpar;
    parameters.codec_type = AVMEDIA_TYPE_AUDIO;
    parameters.codec_id = AV_CODEC_ID_AAC;
    parameters.sample_rate = format.sampleRate;
    parameters.frame_size = 1024;
    av_channel_layout_default(&parameters.ch_layout, format.channels);
    stream.time_base = {1, format.sampleRate};
}

} // namespace

void Muxer::FreeContext::operator()(AVFormatContext* context) const
{
    if (context->pb && (context->flags & AVFMT_FLAG_CUSTOM_IO)) {
        av_freep(&context->pb->buffer);
        avio_context_free(&context->pb);
    } else if (context->pb && !(context->oformat->flags & AVFMT_NOFILE)) {
        avio_closep(&context->pb);
    }
    avformat_free_context(context);
}

/// A playlist that failed frees what it has of its segment with its trailer alone, which then ends nothing for viewers.
Muxer::~Muxer()
{
    beginCall();
    if (!_begun || std::strcmp(_context->oformat->name, "hls") != 0)
        return;
    av_opt_set(_context->priv_data, "hls_flags", "+omit_endlist", 0);
    av_write_trailer(_context.get());
}

std::unique_ptr<Muxer> Muxer::open(const Target& target, const StreamFormat& format, const Limits& limits,
                                   std::string& error)
{
    std::unique_ptr<Muxer> muxer(new Muxer(limits, target.patience));
    if (target.prepare)
        target.prepare();
    AVFormatContext* context = nullptr;
    const int made = avformat_alloc_output_context2(&context, nullptr, target.format.c_str(), target.url.c_str());
    muxer->_context.reset(context);
    if (made < 0 || !muxer->addStreams(format)) {
        error = errorText(made < 0 ? made : AVERROR(ENOMEM));
        return nullptr;
    }
    return muxer->openOutput(target, error) ? std::move(muxer) : nullptr;
}

bool Muxer::addStreams(const StreamFormat& format)
{
    if (format.hasVideo()) {
        AVStream* const stream = avformat_new_stream(_context.get(), nullptr);
        if (!stream || !setExtraData(*stream->codecpar, format.videoExtraData))
            return false;
        describeVideo(*stream, format);
        _videoIndex = stream->index;
    }
    if (format.hasAudio()) {
        AVStream* const stream = avformat_new_stream(_context.get(), nullptr);
        if (!stream || !setExtraData(*stream->codecpar, format.audioExtraData))
            return false;
        describeAudio(*stream, format);
        _audioIndex = stream->index;
    }
    return true;
}

bool Muxer::openOutput(const Target& target, std::string& error)
{
    AVFormatContext& context = *_context;
    context.flags |= AVFMT_FLAG_FLUSH_PACKETS;
    context.avoid_negative_ts =
        0; // times begin with 0 here; a shift by the first packet would send later ones below it
    context.interrupt_callback = {[](void* self) { return static_cast<Muxer*>(self)->isOverdue() ? 1 : 0; }, this};
    beginCall();
    AVDictionary* options = nullptr;
    for (const auto& [name, value] : target.options)
        av_dict_set(&options, name.c_str(), value.c_str(), 0);
    int result = 0;
    if (target.bytes)
        result = openBytes(target.bytes) ? 0 : AVERROR(ENOMEM);
    else if (!(context.oformat->flags & AVFMT_NOFILE))
        result = avio_open2(&context.pb, target.url.c_str(), AVIO_FLAG_WRITE, &context.interrupt_callback, &options);
    if (result >= 0)
        result = avformat_write_header(&context, &options);
    av_dict_free(&options);
    _begun = result >= 0;
    _repeatsHeaders = target.format == "mpegts";
    if (target.waitsForPeer && result == AVERROR_EXIT)
        return false;
    return succeeded(result, error);
}

bool Muxer::openBytes(QByteArray* bytes)
{
    constexpr int bufferSize = 65'536;
    auto* const buffer = static_cast<unsigned char*>(av_malloc(bufferSize));
    if (!buffer)
        return false;
    const auto append = [](void* to, quint8* data, int size) {
        static_cast<QByteArray*>(to)->append(reinterpret_cast<const char*>(data), size);
        return size;
    };
    _context->pb = avio_alloc_context(buffer, bufferSize, 1, bytes, nullptr, append, nullptr);
    if (!_context->pb)
        av_free(buffer);
    _context->flags |= AVFMT_FLAG_CUSTOM_IO;
    return _context->pb != nullptr;
}

bool Muxer::isOverdue() const
{
    const Time now = std::chrono::steady_clock::now();
    return now > _callEnds || now > _limits.endBy.load();
}

bool Muxer::succeeded(int result, std::string& error) const
{
    if (result >= 0 && _context->pb && _context->pb->error < 0)
        result = _context->pb->error;
    if (result < 0)
        error = errorText(result);
    return result >= 0;
}

bool Muxer::write(const CodedPacket& packet, qint64 origin, std::string& error)
{
    const int index = packet.video ? _videoIndex : _audioIndex;
    if (index < 0)
        return true;
    const auto inStream = [&](qint64 microseconds) {
        return av_rescale_q(microseconds - origin, {1, 1'000'000}, _context->streams[index]->time_base);
    };
    AVPacket out{};
    out.stream_index = index;
    out.data = packet.block->p_buffer;
    out.size = static_cast<int>(packet.block->i_buffer);
    out.pts = inStream(packet.pts());
    out.dts = inStream(packet.dts());
    if (out.dts < 0)
        return true;
    out.duration = inStream(packet.dts() + packet.block->i_length) - out.dts; // up to the next one, to the tick
    out.pos = -1;
    if (packet.key || !packet.video)
        out.flags = AV_PKT_FLAG_KEY;
    if (packet.key && _repeatsHeaders)
        av_opt_set(_context->priv_data, "mpegts_flags", "+resend_headers", 0);
    beginCall();
    return succeeded(av_write_frame(_context.get(), &out), error);
}

std::string Muxer::sessionDescription(const std::vector<std::unique_ptr<Muxer>>& muxers)
{
    std::vector<AVFormatContext*> contexts;
    for (const auto& muxer : muxers)
        contexts.push_back(muxer->_context.get());
    std::array<char, 8192> text{};
    av_sdp_create(contexts.data(), static_cast<int>(contexts.size()), text.data(), static_cast<int>(text.size()));
    return text.data();
}

bool Muxer::finish(std::string& error)
{
    beginCall();
    if (!std::exchange(_begun, false))
        return false;
    return succeeded(av_write_trailer(_context.get()), error);
}

} // namespace tavlo
