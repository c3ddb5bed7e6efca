#pragma once

#include <tavlo/records/MediaFormat.h>

extern "C" {
#include <libavutil/pixfmt.h>
}

#include <algorithm>
#include <array>

namespace tavlo {

/// A layout of pictures by its two names: a four-character code and FFmpeg's.
struct ChromaRow
{
    quint32 chroma;
    AVPixelFormat format;
};

inline constexpr std::array chromaFormats{
    ChromaRow{tavloFourcc("I444"), AV_PIX_FMT_YUV444P},     ChromaRow{tavloFourcc("J444"), AV_PIX_FMT_YUVJ444P},
    ChromaRow{tavloFourcc("I440"), AV_PIX_FMT_YUV440P},     ChromaRow{tavloFourcc("J440"), AV_PIX_FMT_YUVJ440P},
    ChromaRow{tavloFourcc("I422"), AV_PIX_FMT_YUV422P},     ChromaRow{tavloFourcc("J422"), AV_PIX_FMT_YUVJ422P},
    ChromaRow{tavloFourcc("I420"), AV_PIX_FMT_YUV420P},     ChromaRow{tavloFourcc("YV12"), AV_PIX_FMT_YUV420P},
    ChromaRow{tavloFourcc("IYUV"), AV_PIX_FMT_YUV420P},     ChromaRow{tavloFourcc("J420"), AV_PIX_FMT_YUVJ420P},
    ChromaRow{tavloFourcc("I411"), AV_PIX_FMT_YUV411P},     ChromaRow{tavloFourcc("I410"), AV_PIX_FMT_YUV410P},
    ChromaRow{tavloFourcc("YVU9"), AV_PIX_FMT_YUV410P},     ChromaRow{tavloFourcc("NV12"), AV_PIX_FMT_NV12},
    ChromaRow{tavloFourcc("NV21"), AV_PIX_FMT_NV21},        ChromaRow{tavloFourcc("I09L"), AV_PIX_FMT_YUV420P9LE},
    ChromaRow{tavloFourcc("I09B"), AV_PIX_FMT_YUV420P9BE},  ChromaRow{tavloFourcc("I0AL"), AV_PIX_FMT_YUV420P10LE},
    ChromaRow{tavloFourcc("I0AB"), AV_PIX_FMT_YUV420P10BE}, ChromaRow{tavloFourcc("I29L"), AV_PIX_FMT_YUV422P9LE},
    ChromaRow{tavloFourcc("I29B"), AV_PIX_FMT_YUV422P9BE},  ChromaRow{tavloFourcc("I2AL"), AV_PIX_FMT_YUV422P10LE},
    ChromaRow{tavloFourcc("I2AB"), AV_PIX_FMT_YUV422P10BE}, ChromaRow{tavloFourcc("I40A"), AV_PIX_FMT_YUVA420P},
    ChromaRow{tavloFourcc("I42A"), AV_PIX_FMT_YUVA422P},    ChromaRow{tavloFourcc("I49L"), AV_PIX_FMT_YUV444P9LE},
    ChromaRow{tavloFourcc("I49B"), AV_PIX_FMT_YUV444P9BE},  ChromaRow{tavloFourcc("I4AL"), AV_PIX_FMT_YUV444P10LE},
    ChromaRow{tavloFourcc("I4AB"), AV_PIX_FMT_YUV444P10BE}, ChromaRow{tavloFourcc("I4FL"), AV_PIX_FMT_YUV444P16LE},
    ChromaRow{tavloFourcc("I4FB"), AV_PIX_FMT_YUV444P16BE}, ChromaRow{tavloFourcc("YUY2"), AV_PIX_FMT_YUYV422},
    ChromaRow{tavloFourcc("YUYV"), AV_PIX_FMT_YUYV422},     ChromaRow{tavloFourcc("YVYU"), AV_PIX_FMT_YVYU422},
    ChromaRow{tavloFourcc("UYVY"), AV_PIX_FMT_UYVY422},     ChromaRow{tavloFourcc("Y411"), AV_PIX_FMT_UYYVYY411},
    ChromaRow{tavloFourcc("RGB4"), AV_PIX_FMT_RGB4},        ChromaRow{tavloFourcc("RGB8"), AV_PIX_FMT_RGB8},
    ChromaRow{tavloFourcc("RV15"), AV_PIX_FMT_RGB555LE},    ChromaRow{tavloFourcc("RV16"), AV_PIX_FMT_RGB565LE},
    ChromaRow{tavloFourcc("RV24"), AV_PIX_FMT_BGR24},       ChromaRow{tavloFourcc("RV32"), AV_PIX_FMT_BGR0},
    ChromaRow{tavloFourcc("RGBA"), AV_PIX_FMT_RGBA},        ChromaRow{tavloFourcc("ARGB"), AV_PIX_FMT_ARGB},
    ChromaRow{tavloFourcc("BGRA"), AV_PIX_FMT_BGRA},        ChromaRow{tavloFourcc("GREY"), AV_PIX_FMT_GRAY8},
    ChromaRow{tavloFourcc("RGBP"), AV_PIX_FMT_PAL8},        ChromaRow{tavloFourcc("GBR8"), AV_PIX_FMT_GBRP},
    ChromaRow{tavloFourcc("GB9L"), AV_PIX_FMT_GBRP9LE},     ChromaRow{tavloFourcc("GB9B"), AV_PIX_FMT_GBRP9BE},
    ChromaRow{tavloFourcc("GBAL"), AV_PIX_FMT_GBRP10LE},    ChromaRow{tavloFourcc("GBAB"), AV_PIX_FMT_GBRP10BE},
    ChromaRow{tavloFourcc("XY12"), AV_PIX_FMT_XYZ12LE},
};

/// The pixel format of the same layout as a chroma; AV_PIX_FMT_NONE for one that has none.
constexpr AVPixelFormat pixelFormatOfChroma(quint32 chroma)
{
    const auto* const found = std::ranges::find(chromaFormats, chroma, &ChromaRow::chroma);
    return found != chromaFormats.end() ? found->format : AV_PIX_FMT_NONE;
}

/// Whether a chroma keeps its second component of colour in front of the first, other than its pixel format.
constexpr bool hasSwappedPlanes(quint32 chroma)
{
    return chroma == tavloFourcc("YV12") || chroma == tavloFourcc("YVU9");
}

} // namespace tavlo
