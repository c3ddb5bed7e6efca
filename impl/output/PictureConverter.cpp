#include "output/PictureConverter.h"

#include "output/ChromaTable.h"
#include "output/Nv12Rows.h"

#include "shared/VlcTypes.h"

#include <tavlo/records/MediaFormat.h>

#include <QDebug>

extern "C" {
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

#include <algorithm>
#include <array>

namespace tavlo {

namespace {

constexpr int planeLimit = 4;

struct Planes
{
    std::array<quint8*, planeLimit> data{};
    std::array<int, planeLimit> pitch{};
};

Planes planesOf(const picture_t* picture, bool swapped, bool flip = false)
{
    Planes planes;
    const int count = std::min(picture->i_planes, planeLimit);
    for (int i = 0; i < count; ++i) {
        const plane_t& plane = picture->p[swapped && i > 0 ? 3 - i : i];
        planes.data[static_cast<size_t>(i)] =
            plane.p_pixels + (flip ? ptrdiff_t{plane.i_visible_lines - 1} * plane.i_pitch : 0);
        planes.pitch[static_cast<size_t>(i)] = flip ? -plane.i_pitch : plane.i_pitch;
    }
    return planes;
}

bool isRgb(AVPixelFormat format)
{
    const AVPixFmtDescriptor* description = av_pix_fmt_desc_get(format);
    return description && (description->flags & AV_PIX_FMT_FLAG_RGB);
}

/// What cards and NDI send has no word on its matrix: those who receive it take that of their standard, which is BT.601
/// for fewer lines than 720.
int matrixOf(quint32 targetChroma, int height)
{
    return targetChroma == tavloFourcc("UYVY") && height < 720 ? SWS_CS_ITU601 : SWS_CS_ITU709;
}

/// Without it red, green and blue would always be turned by the matrix of BT.601.
void setMatrix(SwsContext* context, int kind)
{
    const int* matrix = sws_getCoefficients(kind);
    constexpr int full = 1, limited = 0, one = 1 << 16;
    sws_setColorspaceDetails(context, matrix, full, matrix, limited, 0, one, one);
}

} // namespace

void PictureConverter::FreeContext::operator()(SwsContext* context) const { sws_freeContext(context); }

PictureConverter::PictureConverter() = default;
PictureConverter::~PictureConverter() = default;

bool PictureConverter::open(quint32 sourceChroma, quint32 targetChroma, int width, int height)
{
    close();
    _width = width;
    _height = height;
    _blueFirst = sourceChroma == tavloFourcc("BGRA");
    _toNv12 = targetChroma == tavloFourcc("NV12") && (_blueFirst || sourceChroma == tavloFourcc("RGBA"));
    if (_toNv12)
        return true;
    const AVPixelFormat from = pixelFormatOfChroma(sourceChroma);
    const AVPixelFormat to = pixelFormatOfChroma(targetChroma);
    if (from != AV_PIX_FMT_NONE && to != AV_PIX_FMT_NONE && sws_isSupportedInput(from) && sws_isSupportedOutput(to))
        _context.reset(sws_getContext(width, height, from, width, height, to, SWS_BILINEAR | SWS_ACCURATE_RND, nullptr,
                                      nullptr, nullptr)); // "fast" would move pictures to the side
    if (!_context) {
        qDebug() << "PictureConverter::open: no way from chroma" << Qt::hex << sourceChroma << "to" << targetChroma
                 << Qt::dec << "at" << width << "x" << height;
        return false;
    }
    if (isRgb(from) && !isRgb(to))
        setMatrix(_context.get(), matrixOf(targetChroma, height));
    _swapSource = hasSwappedPlanes(sourceChroma);
    _swapTarget = hasSwappedPlanes(targetChroma);
    return true;
}

void PictureConverter::close()
{
    _context.reset();
    _toNv12 = false;
}

void PictureConverter::convert(const picture_t* source, picture_t* target, bool flip)
{
    const Planes from = planesOf(source, _swapSource, flip);
    const Planes to = planesOf(target, _swapTarget);
    if (_toNv12) {
        convertToNv12({from.data[0], from.pitch[0], _blueFirst}, _width, _height, to.data[0], to.pitch[0], to.data[1],
                      to.pitch[1]);
        return;
    }
    sws_scale(_context.get(), from.data.data(), from.pitch.data(), 0, _height, to.data.data(), to.pitch.data());
}

} // namespace tavlo
