#include "TavloCommonModule/player/GraphicsMemory.h"

#include <ffnvcodec/dynlink_cuda.h>

extern "C" {
#include <libavutil/hwcontext.h>
#include <libavutil/hwcontext_cuda.h>
}

#include <cstdlib>

namespace tavlo {
namespace {

const AVHWFramesContext& framesOf(const AVFrame& frame)
{
    return *reinterpret_cast<const AVHWFramesContext*>(frame.hw_frames_ctx->data);
}

/// Keeps the frame, and with it the device that it lies on.
struct HeldFrame : CudaPicture
{
    FramePtr frame;
};

} // namespace

bool isInGraphicsMemory(const AVFrame& frame)
{
    return frame.format == AV_PIX_FMT_CUDA && frame.hw_frames_ctx && framesOf(frame).sw_format == AV_PIX_FMT_NV12 &&
           frame.width % 2 == 0 && frame.height % 2 == 0;
}

picture_t* pictureInGraphicsMemory(const AVFrame& frame)
{
    auto held = std::make_unique<HeldFrame>();
    held->frame.reset(av_frame_clone(&frame));
    if (!held->frame)
        return nullptr;
    const auto& device = *static_cast<const AVCUDADeviceContext*>(framesOf(frame).device_ctx->hwctx);
    held->context = device.cuda_ctx;
    held->stream = device.stream;
    held->luma = reinterpret_cast<quint64>(frame.data[0]);
    held->chroma = reinterpret_cast<quint64>(frame.data[1]);
    held->lumaPitch = static_cast<quint64>(frame.linesize[0]);
    held->chromaPitch = static_cast<quint64>(frame.linesize[1]);
    video_format_t format;
    video_format_Setup(&format, chromaInGraphicsMemory, frame.width, frame.height, frame.width, frame.height, 1, 1);
    picture_resource_t resource{};
    resource.p_sys = reinterpret_cast<picture_sys_t*>(static_cast<CudaPicture*>(held.get()));
    resource.pf_destroy = [](picture_t* picture) {
        delete static_cast<HeldFrame*>(reinterpret_cast<CudaPicture*>(picture->p_sys));
        std::free(picture);
    };
    picture_t* const picture = picture_NewFromResource(&format, &resource);
    if (picture)
        (void)held.release(); // the picture's
    return picture;
}

} // namespace tavlo
