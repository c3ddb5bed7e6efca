#include "sources/PicturePool.h"

#include "drawing/PictureChroma.h"

#include <QDebug>

#include <algorithm>
#include <array>
#include <memory>
#include <utility>

namespace tavlo {

namespace {

using graphics::Format;

/// How a layout lies in a texture of a picture's size.
struct ChromaRow
{
    quint32 chroma;
    Format format;
    quint32 texelsPerPixel;
    enum class Planes
    {
        One,
        Two,
        Three
    } planes;
    bool swapsPlanes; ///< the second and the third one change places
};

using Planes = ChromaRow::Planes;

constexpr quint32 chromaBgrx = tavloFourcc("RV32");

constexpr std::array rows{
    ChromaRow{tavloFourcc("I420"), Format::R8_UNORM, 1, Planes::Three, true},
    ChromaRow{tavloFourcc("YV12"), Format::R8_UNORM, 1, Planes::Three, false},
    ChromaRow{tavloFourcc("NV12"), Format::R8_UNORM, 1, Planes::Two, false},
    ChromaRow{tavloFourcc("NV21"), Format::R8_UNORM, 1, Planes::Two, false},
    ChromaRow{tavloFourcc("YUY2"), Format::R8_UNORM, 2, Planes::One, false},
    ChromaRow{tavloFourcc("YVYU"), Format::R8_UNORM, 2, Planes::One, false},
    ChromaRow{tavloFourcc("UYVY"), Format::R8_UNORM, 2, Planes::One, false},
    ChromaRow{tavloFourcc("VYUY"), Format::R8_UNORM, 2, Planes::One, false},
    ChromaRow{chromaRgba, Format::R8G8B8A8_UNORM, 1, Planes::One, false},
    ChromaRow{tavloFourcc("BGRA"), Format::B8G8R8A8_UNORM, 1, Planes::One, false},
    ChromaRow{chromaBgrx, Format::B8G8R8X8_UNORM, 1, Planes::One, false},
};

const ChromaRow* rowOf(quint32 chroma)
{
    const auto row =
        std::find_if(rows.begin(), rows.end(), [chroma](const ChromaRow& r) { return r.chroma == chroma; });
    return row != rows.end() ? row : nullptr;
}

/// What pictures and their pool share; the last picture ends it.
struct Sys : PooledPicture
{
    PicturePool* pool = nullptr;
};

Sys* sysOf(const picture_t& picture) { return reinterpret_cast<Sys*>(picture.p_sys); }

void destroyPicture(picture_t* picture)
{
    delete sysOf(*picture);
    free(picture);
}

void layOut(picture_t& picture, const ChromaRow& row, const graphics::Mapped& mapped)
{
    const auto height = static_cast<int>(picture.format.i_height);
    quint8* plane = reinterpret_cast<quint8*>(mapped.data);
    for (int i = 0; i < picture.i_planes; ++i) {
        picture.p[i].p_pixels = plane;
        picture.p[i].i_pitch = static_cast<int>(mapped.rowPitch);
        picture.p[i].i_lines = i == 0 ? height : height / 2;
        plane += std::size_t{mapped.rowPitch} * static_cast<std::size_t>(picture.p[i].i_lines);
    }
    if (row.swapsPlanes)
        std::swap(picture.p[1].p_pixels, picture.p[2].p_pixels);
}

} // namespace

PooledPicture* pooledPicture(const picture_t& picture) { return sysOf(picture); }

PictureLayout pictureLayout(quint32 decoded, const graphics::Device& device)
{
    const ChromaRow* row = rowOf(decoded);
    if (!row || !graphics::supports(device.formatSupport(row->format), graphics::FormatSupport::Texture2D))
        row = rowOf(tavloFourcc("NV12"));
    const bool opaque = isYuv(row->chroma) || row->chroma == chromaBgrx;
    if (opaque && device.adapter().software)
        return {chromaRgba, chromaRgbx};
    return {row->chroma, isYuv(row->chroma) ? row->chroma : opaque ? chromaRgbx : chromaRgba};
}

picture_pool_t* PicturePool::create(const video_format_t& format, quint32 drawn, graphics::Device& device,
                                    graphics::Context& context, Wanted wanted, void* owner)
{
    reset();
    _context = &context;
    _wanted = wanted;
    _owner = owner;
    _scratch = picture_NewFromFormat(&format);
    std::array<picture_t*, pictureCount> pictures{};
    for (picture_t*& picture : pictures)
        picture = makePicture(format, drawn, device);
    if (std::ranges::find(pictures, nullptr) != pictures.end()) {
        for (picture_t* const picture : pictures) {
            if (picture)
                picture_Release(picture);
        }
        return nullptr;
    }
    picture_pool_configuration_t configuration{};
    configuration.picture_count = pictureCount;
    configuration.picture = pictures.data();
    configuration.lock = &mapPicture;
    return picture_pool_NewExtended(&configuration);
}

void PicturePool::reset()
{
    if (_scratch)
        picture_Release(_scratch);
    _scratch = nullptr;
    _context = nullptr;
}

picture_t* PicturePool::makePicture(const video_format_t& format, quint32 drawn, graphics::Device& device)
{
    const ChromaRow* const row = rowOf(format.i_chroma);
    if (!row)
        return nullptr;
    const quint32 width = format.i_width, height = format.i_height;
    auto sys = std::make_unique<Sys>();
    sys->pool = this;
    sys->chroma = drawn;
    graphics::TextureDesc desc{width * row->texelsPerPixel, height, row->format, graphics::Usage::Dynamic};
    if (row->planes == Planes::Three) {
        desc.height = height + (height & ~1U);
        sys->planeOffset[0] = width * height;
        sys->planeOffset[1] = width * (height + height / 2); // a whole row, of odd heights too
    } else if (row->planes == Planes::Two) {
        desc.height = height + height / 2;
        sys->planeOffset[0] = width * height;
    }
    sys->texture = device.createTexture(desc);
    if (!sys->texture) {
        qDebug() << "failed to TavloPresentSourceMediaVLC::OnMediaSourcePlayerDoVideoSamplePool::AllocateTextures";
        return nullptr;
    }
    picture_resource_t resource{};
    resource.p_sys = reinterpret_cast<picture_sys_t*>(sys.get());
    resource.pf_destroy = &destroyPicture;
    picture_t* const picture = picture_NewFromResource(&format, &resource);
    if (picture)
        (void)sys.release();
    return picture;
}

int PicturePool::mapPicture(picture_t* picture)
{
    Sys& sys = *sysOf(*picture);
    PicturePool& pool = *sys.pool;
    if (!pool._wanted(pool._owner)) {
        if (!pool._scratch)
            return -1;
        for (int i = 0; i < picture->i_planes; ++i)
            picture->p[i] = pool._scratch->p[i];
        return 0;
    }
    if (sys.mapped) {
        qDebug() << "TavloPresentSourceMediaVLC::onDirect3D11MapPoolTexture::if (p_sys->mapped)";
        return -1;
    }
    const auto mapped = pool._context->map(*sys.texture, graphics::MapMode::WriteDiscard);
    if (!mapped) {
        qDebug() << "failed to TavloPresentSourceMediaVLC::onDirect3D11MapPoolTexture::p_sys->context->Map";
        return -1;
    }
    sys.mapped = true;
    layOut(*picture, *rowOf(picture->format.i_chroma), *mapped);
    return 0;
}

} // namespace tavlo
