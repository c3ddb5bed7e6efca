#include "TavloOutputModule/SmallPictures.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libswscale/swscale.h>
}

#include <algorithm>
#include <cstring>
#include <utility>

namespace tavlo {

namespace {

constexpr int quality = 4 * FF_QP2LAMBDA; // of JPEG's 1 (best) to 31

} // namespace

void SmallPictures::FreeFfmpeg::operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
void SmallPictures::FreeFfmpeg::operator()(AVFrame* frame) const { av_frame_free(&frame); }
void SmallPictures::FreeFfmpeg::operator()(AVPacket* packet) const { av_packet_free(&packet); }
void SmallPictures::FreeFfmpeg::operator()(SwsContext* context) const { sws_freeContext(context); }

std::unique_ptr<SmallPictures> SmallPictures::open(const StreamFormat& format, int width)
{
    std::unique_ptr<SmallPictures> pictures(new SmallPictures);
    const int evenWidth = std::clamp(width, 32, std::max(format.width, 32)) & ~1;
    const int evenHeight = std::max(evenWidth * format.height / std::max(format.width, 1), 2) & ~1;
    pictures->_decoded.reset(av_frame_alloc());
    pictures->_packet.reset(av_packet_alloc());
    const bool opened = pictures->openDecoder(format) && pictures->openEncoder(evenWidth, evenHeight);
    return opened ? std::move(pictures) : nullptr;
}

bool SmallPictures::openDecoder(const StreamFormat& format)
{
    const AVCodec* const codec = avcodec_find_decoder(format.hevc ? AV_CODEC_ID_HEVC : AV_CODEC_ID_H264);
    _decoder.reset(codec ? avcodec_alloc_context3(codec) : nullptr);
    if (!_decoder)
        return false;
    const auto size = static_cast<size_t>(format.videoExtraData.size());
    _decoder->extradata = static_cast<quint8*>(av_mallocz(size + AV_INPUT_BUFFER_PADDING_SIZE));
    if (!_decoder->extradata)
        return false;
    std::memcpy(_decoder->extradata, format.videoExtraData.constData(), size);
    _decoder->extradata_size = static_cast<int>(size);
    _decoder->thread_count = 1; // a picture comes out as soon as it went in
    return avcodec_open2(_decoder.get(), codec, nullptr) == 0;
}

bool SmallPictures::openEncoder(int width, int height)
{
    const AVCodec* const codec = avcodec_find_encoder(AV_CODEC_ID_MJPEG);
    _encoder.reset(codec ? avcodec_alloc_context3(codec) : nullptr);
    _small.reset(av_frame_alloc());
    if (!_encoder || !_small)
        return false;
    _small->width = _encoder->width = width;
    _small->height = _encoder->height = height;
    _small->format = _encoder->pix_fmt = AV_PIX_FMT_YUVJ420P;
    _small->color_range = _encoder->color_range = AVCOL_RANGE_JPEG;
    _small->quality = _encoder->global_quality = quality;
    _encoder->flags |= AV_CODEC_FLAG_QSCALE;
    _encoder->time_base = {1, 1'000'000};
    _encoder->thread_count = 1;
    return avcodec_open2(_encoder.get(), codec, nullptr) == 0 && av_frame_get_buffer(_small.get(), 0) == 0;
}

void SmallPictures::decode(const CodedPacket& packet, const std::function<void(QByteArray, qint64)>& take)
{
    av_packet_unref(_packet.get());
    if (av_new_packet(_packet.get(), static_cast<int>(packet.block->i_buffer)) < 0)
        return;
    std::memcpy(_packet->data, packet.block->p_buffer, packet.block->i_buffer);
    _packet->pts = packet.pts();
    _packet->dts = packet.dts();
    avcodec_send_packet(_decoder.get(), _packet.get());
    while (avcodec_receive_frame(_decoder.get(), _decoded.get()) == 0)
        if (QByteArray jpeg = encode(*_decoded); !jpeg.isEmpty())
            take(std::move(jpeg), _decoded->pts);
}

/// JPEG means BT.601 of full range.
QByteArray SmallPictures::encode(const AVFrame& picture)
{
    if (!_scaler) {
        _scaler.reset(sws_getContext(picture.width, picture.height, static_cast<AVPixelFormat>(picture.format),
                                     _small->width, _small->height, AV_PIX_FMT_YUVJ420P, SWS_BILINEAR, nullptr, nullptr,
                                     nullptr));
        if (!_scaler)
            return {};
        constexpr int one = 1 << 16;
        sws_setColorspaceDetails(_scaler.get(), sws_getCoefficients(SWS_CS_ITU709), 0,
                                 sws_getCoefficients(SWS_CS_ITU601), 1, 0, one, one);
    }
    if (av_frame_make_writable(_small.get()) < 0)
        return {};
    sws_scale(_scaler.get(), picture.data, picture.linesize, 0, picture.height, _small->data, _small->linesize);
    _small->pts = picture.pts;
    avcodec_send_frame(_encoder.get(), _small.get());
    av_packet_unref(_packet.get());
    if (avcodec_receive_packet(_encoder.get(), _packet.get()) < 0)
        return {};
    return QByteArray(reinterpret_cast<const char*>(_packet->data), _packet->size);
}

} // namespace tavlo
