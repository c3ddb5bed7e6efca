#pragma once

#include "TavloCUDAUtil/CudaDriver.h"
#include "TavloCUDAUtil/ITavloVideoCUDAResource.h"

#include <tavlo/InterfacePtr.h>

#include <mutex>

/// Copies pictures between CUDA's memory and a texture that CUDA knows, on the graphics processor.
class TavloVideoCUDAResource final : public tavlo::Implements<TavloVideoCUDAResource, ITavloVideoCUDAResource>
{
public:
    ~TavloVideoCUDAResource() { release(); }

    bool create(tavlo::graphics::Texture* target, int width, int height) override;
    void takePicture(picture_t* picture, qint64 reserved) override;
    bool copyTo(tavlo::graphics::Texture* target) override;
    void videoStarted() override {}
    void videoStopped() override;
    void release() override;

private:
    bool bind(tavlo::graphics::Texture& target, CUcontext context);
    void unbind();
    bool copyPlanes(const picture_t& picture);
    bool succeeds(CUresult result, const char* what);

    // frame thread
    const tavlo::CudaDriver* _driver = nullptr;
    CUgraphicsResource _bound = nullptr;
    CUcontext _boundContext = nullptr;
    unsigned _boundName = 0;     ///< GL's of the texture
    picture_t* _shown = nullptr; ///< held until the next is copied: the copy goes on behind the call
    bool _failureTold = false;

    std::mutex _lock;
    picture_t* _waiting = nullptr; ///< guarded by _lock; held
};
