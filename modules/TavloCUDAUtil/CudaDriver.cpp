#include "TavloCUDAUtil/CudaDriver.h"

#include "shared/RuntimeLibrary.h"

namespace tavlo {

bool CudaDriver::open()
{
    void* const library = dlopen("libcuda.so.1", RTLD_NOW | RTLD_LOCAL);
    if (!library) {
        qDebug() << "CUDA: no driver is installed:" << dlerror();
        return false;
    }
    const auto resolve = [library](const char* name, auto*& function) {
        return resolveFunction("CUDA", library, name, function);
    };
    const bool complete =
        resolve("cuInit", init) && resolve("cuGetErrorName", errorName) && resolve("cuGLGetDevices_v2", glDevices) &&
        resolve("cuDevicePrimaryCtxRetain", retainContext) && resolve("cuDevicePrimaryCtxRelease", releaseContext) &&
        resolve("cuCtxPushCurrent_v2", pushContext) && resolve("cuCtxPopCurrent_v2", popContext) &&
        resolve("cuGraphicsGLRegisterImage", registerImage) && resolve("cuGraphicsUnregisterResource", unregister) &&
        resolve("cuGraphicsMapResources", map) && resolve("cuGraphicsUnmapResources", unmap) &&
        resolve("cuGraphicsSubResourceGetMappedArray", mappedArray) && resolve("cuMemcpy2DAsync_v2", copy);
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
