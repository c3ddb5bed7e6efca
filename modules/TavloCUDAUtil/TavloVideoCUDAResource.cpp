#include "TavloCUDAUtil/TavloVideoCUDAResource.h"

#include "graphics/gl/TextureImpl.h"
#include "shared/CudaPicture.h"
#include "shared/ModuleFactory.h"
#include "shared/VlcTypes.h"

#include <tavlo/Export.h>

#include <QDebug>

#include <array>
#include <utility>

using tavlo::CudaPicture;
using tavlo::graphics::Texture;

namespace {

constexpr unsigned writeDiscard = 2; // of the flags with which CUDA takes an image: all of it is written each time

const CudaPicture& sysOf(const picture_t& picture) { return *reinterpret_cast<const CudaPicture*>(picture.p_sys); }

/// GL's name of a default texture, which stays the same.
unsigned nameOf(Texture& texture) { return texture.impl().front.name; }

} // namespace

bool TavloVideoCUDAResource::succeeds(CUresult result, const char* what)
{
    if (result == CUDA_SUCCESS)
        return true;
    const char* name = nullptr;
    _driver->errorName(result, &name);
    if (!std::exchange(_failureTold, true))
        qDebug() << "CUDA:" << what << "failed:" << (name ? name : "unknown error");
    return false;
}

bool TavloVideoCUDAResource::create(Texture* target, int, int)
{
    release();
    _driver = tavlo::CudaDriver::get();
    if (!_driver || !target)
        return false;
    unsigned count = 0;
    CUdevice device = 0;
    if (!succeeds(_driver->glDevices(&count, &device, 1, CU_GL_DEVICE_LIST_ALL), "to find the drawing's device"))
        return false;
    if (count == 0) {
        qDebug() << "CUDA: the drawing is on no device of CUDA's";
        return false;
    }
    CUcontext context = nullptr;
    if (!succeeds(_driver->retainContext(&context, device), "to open the drawing's device"))
        return false;
    const bool works = bind(*target, context);
    unbind();
    _driver->releaseContext(device);
    return works;
}

void TavloVideoCUDAResource::takePicture(picture_t* picture, qint64)
{
    if (!picture || !picture->p_sys || picture->format.i_chroma != tavlo::chromaInGraphicsMemory)
        return;
    picture_Hold(picture);
    picture_t* older = nullptr;
    {
        const std::lock_guard guard(_lock);
        older = std::exchange(_waiting, picture);
    }
    if (older)
        picture_Release(older);
}

bool TavloVideoCUDAResource::copyTo(Texture* target)
{
    picture_t* next = nullptr;
    {
        const std::lock_guard guard(_lock);
        next = std::exchange(_waiting, nullptr);
    }
    const bool done =
        next && _driver && target && bind(*target, static_cast<CUcontext>(sysOf(*next).context)) && copyPlanes(*next);
    if (done)
        std::swap(_shown, next);
    if (next)
        picture_Release(next);
    return done;
}

/// CUDA knows a texture by one of its contexts: those of the pictures.
bool TavloVideoCUDAResource::bind(Texture& target, CUcontext context)
{
    if (_bound && _boundName == nameOf(target) && _boundContext == context)
        return true;
    unbind();
    constexpr unsigned texture2D = 0x0DE1; // GL's word for the kind of texture
    CUcontext before = nullptr;
    if (!succeeds(_driver->pushContext(context), "to enter a context"))
        return false;
    const bool done =
        succeeds(_driver->registerImage(&_bound, nameOf(target), texture2D, writeDiscard), "to take a texture");
    _driver->popContext(&before);
    if (!done) {
        _bound = nullptr;
        return false;
    }
    _boundContext = context;
    _boundName = nameOf(target);
    return true;
}

void TavloVideoCUDAResource::unbind()
{
    if (!_bound)
        return;
    CUcontext before = nullptr;
    if (succeeds(_driver->pushContext(_boundContext), "to enter a context")) {
        _driver->unregister(std::exchange(_bound, nullptr));
        _driver->popContext(&before);
    }
    _bound = nullptr;
    _boundContext = nullptr;
    _boundName = 0;
}

/// Behind what the decoder has put into its stream, and in front of what GL draws next: mapping and unmapping order the
/// two on the graphics processor.
bool TavloVideoCUDAResource::copyPlanes(const picture_t& picture)
{
    const CudaPicture& source = sysOf(picture);
    auto* const stream = static_cast<CUstream>(source.stream);
    const size_t width = picture.format.i_width, height = picture.format.i_height;
    CUcontext before = nullptr;
    if (!succeeds(_driver->pushContext(_boundContext), "to enter a context"))
        return false;
    bool done = succeeds(_driver->map(1, &_bound, stream), "to map a texture");
    if (done) {
        CUDA_MEMCPY2D copy{};
        copy.srcMemoryType = CU_MEMORYTYPE_DEVICE;
        copy.dstMemoryType = CU_MEMORYTYPE_ARRAY;
        copy.WidthInBytes = width;
        done = succeeds(_driver->mappedArray(&copy.dstArray, _bound, 0, 0), "to reach a texture");
        struct Plane
        {
            quint64 address, pitch;
            size_t row, rows;
        };
        for (const Plane& plane : {Plane{source.luma, source.lumaPitch, 0, height},
                                   Plane{source.chroma, source.chromaPitch, height, height / 2}}) {
            copy.srcDevice = plane.address;
            copy.srcPitch = plane.pitch;
            copy.dstY = plane.row;
            copy.Height = plane.rows;
            done = done && succeeds(_driver->copy(&copy, stream), "to copy a picture");
        }
        done = succeeds(_driver->unmap(1, &_bound, stream), "to give a texture back") && done;
    }
    _driver->popContext(&before);
    return done;
}

void TavloVideoCUDAResource::videoStopped()
{
    picture_t* waiting = nullptr;
    {
        const std::lock_guard guard(_lock);
        waiting = std::exchange(_waiting, nullptr);
    }
    if (waiting)
        picture_Release(waiting);
}

void TavloVideoCUDAResource::release()
{
    videoStopped();
    unbind();
    if (picture_t* const shown = std::exchange(_shown, nullptr))
        picture_Release(shown);
}

extern "C" TAVLO_EXPORT IUnknownEx* CreateTavloVideoCUDAResource(const TavloInterfaceId& id, quint32 version)
{
    return tavlo::makeForModule<TavloVideoCUDAResource>(id, version);
}
