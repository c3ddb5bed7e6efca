#include "TavloCommonModule/player/PictureWriter.h"

#include "shared/ChromaFormats.h"

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <array>
#include <utility>

namespace tavlo {
namespace {

/// What can be written; of two with one format the first is what a frame of that format is.
constexpr std::array writable{tavloFourcc("I420"), tavloFourcc("YV12"), tavloFourcc("NV12"), tavloFourcc("NV21"),
                              tavloFourcc("YUY2"), tavloFourcc("YVYU"), tavloFourcc("UYVY"), tavloFourcc("RGBA"),
                              tavloFourcc("BGRA"), tavloFourcc("RV32")};

AVPixelFormat formatOf(const AVFrame& frame) { return static_cast<AVPixelFormat>(frame.format); }

bool isFullRange(const AVFrame& frame)
{
    const AVPixelFormat format = formatOf(frame);
    return format == AV_PIX_FMT_YUVJ420P || format == AV_PIX_FMT_YUVJ422P || format == AV_PIX_FMT_YUVJ444P ||
           format == AV_PIX_FMT_YUVJ440P || frame.color_range == AVCOL_RANGE_JPEG;
}

bool isColours(AVPixelFormat format)
{
    const AVPixFmtDescriptor* const description = av_pix_fmt_desc_get(format);
    return description && (description->flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL)) != 0;
}

bool hasAlpha(AVPixelFormat format)
{
    const AVPixFmtDescriptor* const description = av_pix_fmt_desc_get(format);
    return description && (description->flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
}

/// The scaler warns of the old names of full range formats.
AVPixelFormat plainFormat(AVPixelFormat format)
{
    switch (format) {
    case AV_PIX_FMT_YUVJ420P:
        return AV_PIX_FMT_YUV420P;
    case AV_PIX_FMT_YUVJ422P:
        return AV_PIX_FMT_YUV422P;
    case AV_PIX_FMT_YUVJ444P:
        return AV_PIX_FMT_YUV444P;
    case AV_PIX_FMT_YUVJ440P:
        return AV_PIX_FMT_YUV440P;
    default:
        return format;
    }
}

/// Standard definition is BT.601 unless it says otherwise.
int matrixOf(const AVFrame& frame)
{
    switch (frame.colorspace) {
    case AVCOL_SPC_BT709:
        return SWS_CS_ITU709;
    case AVCOL_SPC_BT470BG:
    case AVCOL_SPC_SMPTE170M:
        return SWS_CS_ITU601;
    case AVCOL_SPC_FCC:
        return SWS_CS_FCC;
    case AVCOL_SPC_SMPTE240M:
        return SWS_CS_SMPTE240M;
    case AVCOL_SPC_BT2020_NCL:
    case AVCOL_SPC_BT2020_CL:
        return SWS_CS_BT2020;
    default:
        return frame.height < 720 ? SWS_CS_ITU601 : SWS_CS_ITU709;
    }
}

MatrixConversion::Matrix sharesOf(int matrix)
{
    switch (matrix) {
    case SWS_CS_FCC:
        return {0.30, 0.11};
    case SWS_CS_ITU601:
        return {0.299, 0.114};
    case SWS_CS_SMPTE240M:
        return {0.212, 0.087};
    case SWS_CS_BT2020:
        return {0.2627, 0.0593};
    default:
        return {0.2126, 0.0722};
    }
}

} // namespace

bool PictureWriter::isDrawn(const AVFrame& frame) { return !isFullRange(frame) && matrixOf(frame) == SWS_CS_ITU709; }

quint32 PictureWriter::naturalChroma(const AVFrame& frame)
{
    const AVPixelFormat format = formatOf(frame);
    const auto* const found = std::ranges::find(writable, format, &pixelFormatOfChroma);
    if (found != writable.end() && (isColours(format) || !isFullRange(frame)))
        return *found;
    return isColours(format) || hasAlpha(format) ? tavloFourcc("RGBA") : tavloFourcc("NV12");
}

bool PictureWriter::canWrite(quint32 chroma) { return std::ranges::find(writable, chroma) != writable.end(); }

bool PictureWriter::write(const AVFrame& frame, picture_t& picture)
{
    const AVPixelFormat wanted = pixelFormatOfChroma(_chroma);
    const bool fits = formatOf(frame) == wanted && (isColours(wanted) || isDrawn(frame));
    if (fits) {
        copy(frame, picture);
    } else if (MatrixConversion::canConvert(frame, _chroma)) {
        _matrices.convert(frame, sharesOf(matrixOf(frame)), isFullRange(frame), picture, _chroma);
    } else {
        if (!convert(frame, wanted))
            return false;
        copy(*_converted, picture);
    }
    return true;
}

bool PictureWriter::convert(const AVFrame& frame, AVPixelFormat format)
{
    if (!_converted || _converted->width != frame.width || _converted->height != frame.height ||
        _converted->format != format) {
        _converted.reset(av_frame_alloc());
        if (!_converted)
            return false;
        _converted->width = frame.width;
        _converted->height = frame.height;
        _converted->format = format;
        if (av_frame_get_buffer(_converted.get(), 0) < 0)
            return false;
    }
    _scaler.reset(sws_getCachedContext(_scaler.release(), frame.width, frame.height, plainFormat(formatOf(frame)),
                                       frame.width, frame.height, format, SWS_BILINEAR | SWS_ACCURATE_RND, nullptr,
                                       nullptr, nullptr));
    if (!_scaler)
        return false;
    sws_setColorspaceDetails(_scaler.get(), sws_getCoefficients(matrixOf(frame)), isFullRange(frame),
                             sws_getCoefficients(SWS_CS_ITU709), isColours(format), 0, 1 << 16, 1 << 16);
    return sws_scale(_scaler.get(), frame.data, frame.linesize, 0, frame.height, _converted->data,
                     _converted->linesize) == frame.height;
}

/// Planes of the sink may lie one behind the other in a texture that has room for half the picture's rows and no more,
/// whatever they say of their own height.
void PictureWriter::copy(const AVFrame& frame, picture_t& picture) const
{
    const bool swapped = hasSwappedPlanes(_chroma);
    for (int i = 0; i < picture.i_planes; ++i) {
        const int from = swapped && i > 0 ? 3 - i : i;
        const plane_t& plane = picture.p[i];
        const int room = i == 0 ? frame.height : picture.p_sys ? frame.height / 2 : (frame.height + 1) / 2;
        const int bytes = std::min(av_image_get_linesize(formatOf(frame), frame.width, from), plane.i_pitch);
        av_image_copy_plane(plane.p_pixels, plane.i_pitch, frame.data[from], frame.linesize[from], bytes,
                            std::min(room, plane.i_lines));
    }
}

} // namespace tavlo
