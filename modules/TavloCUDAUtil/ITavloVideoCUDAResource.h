#pragma once

#include <tavlo/IUnknownEx.h>

#include <QtGlobal>

struct picture_t;

namespace tavlo::graphics {
class Texture;
}

/// Takes decoded pictures that lie in graphics memory to a texture, without a way through the processor's memory. Made by
/// `CreateTavloVideoCUDAResource` of `TavloCUDAUtil`. Nothing of it waits for the graphics processor.
class ITavloVideoCUDAResource : public IUnknownEx
{
public:
    static constexpr TavloInterfaceId interfaceId{0x2e6b10d4, 0x97a3, 0x4c58, 0xb1, 0x3f, 0x60,
                                                  0x8d,       0x42,   0xe9,   0x15, 0x01};

    /// Frame thread, its context current. Finds out whether pictures can come to textures of this device at all.
    /// \param target  any default texture that is drawn into  \param width, height  of it
    /// \return false, the reason in the log, when they cannot: no driver, another maker's device
    virtual bool create(tavlo::graphics::Texture* target, int width, int height) = 0;

    /// A picture whose `p_sys` is a tavlo::CudaPicture; others are ignored. Held until a newer one comes. Decoder's thread.
    virtual void takePicture(picture_t* picture, qint64 reserved) = 0;

    /// Brings the newest picture into the target. Frame thread, its context current.
    /// \param target  a default texture of one byte a texel, as wide as the picture and half again as high: brightness,
    ///                behind it chroma in pairs. It has to outlive the resource, or the next call with another one
    /// \return whether there was a newer one, and the target shows it
    virtual bool copyTo(tavlo::graphics::Texture* target) = 0;

    // Decoder's thread.
    virtual void videoStarted() = 0;
    virtual void videoStopped() = 0;

    /// Lets go of the target and of what is held. Frame thread, its context current.
    virtual void release() = 0;

protected:
    ~ITavloVideoCUDAResource() = default;
};
