#include "TavloCUDAUtil/CudaDriver.h"

#include <QDebug>

#include <dlfcn.h>

namespace tavlo {
namespace {

template <class Function>
bool resolve(void* library, const char* name, Function*& function)
{
    function = reinterpret_cast<Function*>(dlsym(library, name));
    if (!function)
        qDebug() << "CUDA: the driver has no" << name;
    return function != nullptr;
}

} // namespace

bool CudaDriver::open()
{
    void* const library = dlopen("libcuda.so.1", RTLD_NOW | RTLD_LOCAL);
    if (!library) {
        qDebug() << "CUDA: no driver is installed:" << dlerror();
        return false;
    }
    const bool complete =
        resolve(library, "cuInit", init) && resolve(library, "cuGetErrorName", errorName) &&
        resolve(library, "cuGLGetDevices_v2", glDevices) &&
        resolve(library, "cuDevicePrimaryCtxRetain", retainContext) &&
        resolve(library, "cuDevicePrimaryCtxRelease", releaseContext) &&
        resolve(library, "cuCtxPushCurrent_v2", pushContext) && resolve(library, "cuCtxPopCurrent_v2", popContext) &&
        resolve(library, "cuGraphicsGLRegisterImage", registerImage) &&
        resolve(library, "cuGraphicsUnregisterResource", unregister) &&
        resolve(library, "cuGraphicsMapResources", map) && resolve(library, "cuGraphicsUnmapResources", unmap) &&
        resolve(library, "cuGraphicsSubResourceGetMappedArray", mappedArray) &&
        resolve(library, "cuMemcpy2DAsync_v2", copy);
    if (!complete)
        return false;
    if (const CUresult result = init(0); result != CUDA_SUCCESS) {
        qDebug() << "CUDA: the driver does not start:" << result;
        return false;
    }
    return true;
}

const CudaDriver* CudaDriver::get()
{
    static CudaDriver driver;
    static const bool opened = driver.open();
    return opened ? &driver : nullptr;
}

} // namespace tavlo
