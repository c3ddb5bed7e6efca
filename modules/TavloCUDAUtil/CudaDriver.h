#pragma once

#include <ffnvcodec/dynlink_cuda.h>

namespace tavlo {

/// The part of CUDA's driver that goes between it and textures of GL, opened at run time.
struct CudaDriver
{
    tcuInit* init = nullptr;
    tcuGetErrorName* errorName = nullptr;
    tcuGLGetDevices_v2* glDevices = nullptr;
    tcuDevicePrimaryCtxRetain* retainContext = nullptr;
    tcuDevicePrimaryCtxRelease* releaseContext = nullptr;
    tcuCtxPushCurrent_v2* pushContext = nullptr;
    tcuCtxPopCurrent_v2* popContext = nullptr;
    tcuGraphicsGLRegisterImage* registerImage = nullptr;
    tcuGraphicsUnregisterResource* unregister = nullptr;
    tcuGraphicsMapResources* map = nullptr;
    tcuGraphicsUnmapResources* unmap = nullptr;
    tcuGraphicsSubResourceGetMappedArray* mappedArray = nullptr;
    tcuMemcpy2DAsync_v2* copy = nullptr;

    /// Of this process, opened by the first call and kept to the end. Null, the reason in the log at the first call, when
    /// there is none. Any thread.
    static const CudaDriver* get();

private:
    bool open();
};

} // namespace tavlo
