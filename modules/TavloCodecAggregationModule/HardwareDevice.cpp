#include "TavloCodecAggregationModule/HardwareDevice.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/hwcontext.h>
}

#include <unistd.h>

namespace tavlo {

namespace {

constexpr int firstNode = 128, nodeCount = 16; // of the kernel's devices that draw

} // namespace

void FreeBufferRef::operator()(AVBufferRef* buffer) const { av_buffer_unref(&buffer); }

BufferRefPtr openVaapi(std::string& error)
{
    error = "no device in /dev/dri may be opened";
    for (int node = firstNode; node < firstNode + nodeCount; ++node) {
        const std::string path = "/dev/dri/renderD" + std::to_string(node);
        if (access(path.c_str(), R_OK | W_OK) != 0)
            continue;
        AVBufferRef* device = nullptr;
        if (av_hwdevice_ctx_create(&device, AV_HWDEVICE_TYPE_VAAPI, path.c_str(), nullptr, 0) == 0)
            return BufferRefPtr(device);
        error = path + " does not answer to VAAPI";
    }
    return nullptr;
}

bool takeFromDevice(AVCodecContext& codec, AVBufferRef* device)
{
    BufferRefPtr pictures(av_hwframe_ctx_alloc(device));
    if (!pictures)
        return false;
    auto& format = *reinterpret_cast<AVHWFramesContext*>(pictures->data);
    format.format = AV_PIX_FMT_VAAPI;
    format.sw_format = AV_PIX_FMT_NV12;
    format.width = codec.width;
    format.height = codec.height;
    if (av_hwframe_ctx_init(pictures.get()) < 0)
        return false;
    codec.pix_fmt = AV_PIX_FMT_VAAPI;
    codec.hw_frames_ctx = pictures.release(); // the encoder's
    return true;
}

bool upload(const AVCodecContext& codec, const AVFrame& picture, AVFrame& surface)
{
    return av_hwframe_get_buffer(codec.hw_frames_ctx, &surface, 0) == 0 &&
           av_hwframe_transfer_data(&surface, &picture, 0) == 0;
}

} // namespace tavlo
