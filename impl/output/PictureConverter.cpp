#include "output/PictureConverter.h"

#include "output/ChromaTable.h"

#include "shared/VlcTypes.h"

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

Planes planesOf(const picture_t* picture, bool swapped)
{
    Planes planes;
    const int count = std::min(picture->i_planes, planeLimit);
    for (int i = 0; i < count; ++i) {
        const plane_t& plane = picture->p[swapped && i > 0 ? 3 - i : i];
        planes.data[static_cast<size_t>(i)] = plane.p_pixels;
        planes.pitch[static_cast<size_t>(i)] = plane.i_pitch;
    }
    return planes;
}

bool isRgb(AVPixelFormat format)
{
    const AVPixFmtDescriptor* description = av_pix_fmt_desc_get(format);
    return description && (description->flags & AV_PIX_FMT_FLAG_RGB);
}

/// Without it red, green and blue would be turned by the matrix of BT.601.
void setMatrix(SwsContext* context)
{
    const int* matrix = sws_getCoefficients(SWS_CS_ITU709);
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
    const AVPixelFormat from = pixelFormatOfChroma(sourceChroma);
    const AVPixelFormat to = pixelFormatOfChroma(targetChroma);
    if (from != AV_PIX_FMT_NONE && to != AV_PIX_FMT_NONE && sws_isSupportedInput(from) && sws_isSupportedOutput(to))
        _context.reset(sws_getContext(width, height, from, width, height, to, SWS_FAST_BILINEAR | SWS_ACCURATE_RND,
                                      nullptr, nullptr, nullptr));
    if (!_context) {
        qDebug() << "PictureConverter::open: no way from chroma" << Qt::hex << sourceChroma << "to" << targetChroma
                 << Qt::dec << "at" << width << "x" << height;
        return false;
    }
    if (isRgb(from) && !isRgb(to))
        setMatrix(_context.get());
    _swapSource = hasSwappedPlanes(sourceChroma);
    _swapTarget = hasSwappedPlanes(targetChroma);
    _height = height;
    return true;
}

void PictureConverter::close() { _context.reset(); }

void PictureConverter::convert(const picture_t* source, picture_t* target)
{
    const Planes from = planesOf(source, _swapSource);
    const Planes to = planesOf(target, _swapTarget);
    sws_scale(_context.get(), from.data.data(), from.pitch.data(), 0, _height, to.data.data(), to.pitch.data());
}

void PictureConverter::convert(const picture_t* source, quint8* target, int pitch)
{
    const Planes from = planesOf(source, _swapSource);
    Planes to;
    to.data[0] = target;
    to.pitch[0] = pitch;
    sws_scale(_context.get(), from.data.data(), from.pitch.data(), 0, _height, to.data.data(), to.pitch.data());
}

} // namespace tavlo
