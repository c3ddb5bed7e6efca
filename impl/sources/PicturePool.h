#pragma once

#include "graphics/Context.h"
#include "graphics/Device.h"
#include "shared/VlcTypes.h"

#include <QtGlobal>

#include <vlc_picture_pool.h>

namespace tavlo {

/// What a picture of the pool is made of; its `p_sys`.
struct PooledPicture
{
    graphics::TexturePtr texture; ///< holds all planes, one behind the other
    quint32 chroma = 0;           ///< as what it is drawn
    quint32 planeOffset[2] = {};  ///< of the second and third plane, texels from the first
    bool mapped = false;          ///< the decoder writes into the texture; decoder's thread
};

/// The pool's own picture; null for one that a decoder made by itself.
PooledPicture* pooledPicture(const picture_t& picture);

/// How a decoder's pictures become pictures of the drawing.
struct PictureLayout
{
    quint32 written = 0; ///< the layout that the decoder is asked for
    quint32 drawn = 0;   ///< as what its pictures are drawn
};

/// Layouts that the drawing reads are left as they are; NV12 takes the place of any other. With the software renderer
/// decoders write the target's own layout instead, but for pictures that may be transparent: a loop on a decoder's
/// thread makes colours of YUV for a small part of what a shader costs there, and what it wrote need only be copied.
PictureLayout pictureLayout(quint32 decoded, const graphics::Device& device);

/// A decoder's pictures, whose planes lie in textures that it writes in place.
///
/// A picture that is taken while nobody wants another one is given plain memory instead: the decoder goes on, and what
/// it writes is left behind. Decoder's thread.
class PicturePool
{
public:
    /// Asked before each picture: whether a texture is wanted for it.
    using Wanted = bool (*)(void* owner);

    static constexpr unsigned pictureCount = 4;

    PicturePool() = default;
    ~PicturePool() { reset(); }
    PicturePool(const PicturePool&) = delete;
    PicturePool& operator=(const PicturePool&) = delete;

    /// Makes the pictures; the decoder releases what it gets. Null, the reason in the log, when it cannot.
    /// \param drawn    as what they are drawn
    /// \param context  maps the textures; lent as long as the pictures live
    picture_pool_t* create(const video_format_t& format, quint32 drawn, graphics::Device& device,
                           graphics::Context& context, Wanted wanted, void* owner);

    /// No more pictures are taken.
    void reset();

private:
    static int mapPicture(picture_t* picture);
    picture_t* makePicture(const video_format_t& format, quint32 drawn, graphics::Device& device);

    graphics::Context* _context = nullptr;
    Wanted _wanted = nullptr;
    void* _owner = nullptr;
    picture_t* _scratch = nullptr; ///< plain memory of the format
};

} // namespace tavlo
