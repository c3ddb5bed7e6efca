// Stands in for CUDA's driver: the functions that go between it and textures of GL. It keeps what it is asked for.

#include "FakeCuda.h"

#include <ffnvcodec/dynlink_cuda.h>

namespace {

FakeCuda fake;
int own; // the device's own context

} // namespace

#define FAKE_EXPORT extern "C" __attribute__((visibility("default")))

FAKE_EXPORT FakeCuda* fakeCuda() { return &fake; }

FAKE_EXPORT CUresult cuInit(unsigned) { return CUDA_SUCCESS; }

FAKE_EXPORT CUresult cuGetErrorName(CUresult, const char** name)
{
    *name = "a fault of the device";
    return CUDA_SUCCESS;
}

FAKE_EXPORT CUresult cuGLGetDevices_v2(unsigned* count, CUdevice* devices, unsigned, CUGLDeviceList)
{
    *count = fake.devices;
    *devices = 3;
    return CUDA_SUCCESS;
}

FAKE_EXPORT CUresult cuDevicePrimaryCtxRetain(CUcontext* context, CUdevice)
{
    ++fake.retained;
    *context = reinterpret_cast<CUcontext>(&own);
    return CUDA_SUCCESS;
}

FAKE_EXPORT CUresult cuDevicePrimaryCtxRelease(CUdevice)
{
    --fake.retained;
    return CUDA_SUCCESS;
}

FAKE_EXPORT CUresult cuCtxPushCurrent_v2(CUcontext context)
{
    ++fake.depth;
    fake.context = context;
    return CUDA_SUCCESS;
}

FAKE_EXPORT CUresult cuCtxPopCurrent_v2(CUcontext*)
{
    --fake.depth;
    fake.context = nullptr;
    return CUDA_SUCCESS;
}

FAKE_EXPORT CUresult cuGraphicsGLRegisterImage(CUgraphicsResource* resource, GLuint image, GLenum, unsigned)
{
    ++fake.registered;
    fake.texture = image;
    *resource = reinterpret_cast<CUgraphicsResource>(&fake);
    return CUDA_SUCCESS;
}

FAKE_EXPORT CUresult cuGraphicsUnregisterResource(CUgraphicsResource)
{
    --fake.registered;
    return CUDA_SUCCESS;
}

FAKE_EXPORT CUresult cuGraphicsMapResources(unsigned, CUgraphicsResource*, CUstream)
{
    ++fake.mapped;
    return CUDA_SUCCESS;
}

FAKE_EXPORT CUresult cuGraphicsUnmapResources(unsigned, CUgraphicsResource*, CUstream)
{
    --fake.mapped;
    return CUDA_SUCCESS;
}

FAKE_EXPORT CUresult cuGraphicsSubResourceGetMappedArray(CUarray* array, CUgraphicsResource, unsigned, unsigned)
{
    *array = reinterpret_cast<CUarray>(&own);
    return CUDA_SUCCESS;
}

FAKE_EXPORT CUresult cuMemcpy2DAsync_v2(const CUDA_MEMCPY2D* copy, CUstream)
{
    fake.copies.push_back({copy->srcDevice, copy->srcPitch, copy->WidthInBytes, copy->Height, copy->dstY,
                           fake.mapped == 1, fake.context});
    return static_cast<CUresult>(fake.failing);
}
