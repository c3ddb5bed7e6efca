#pragma once

// The one door to FFmpeg's headers, and owners for its objects.

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavfilter/avfilter.h>
#include <libavformat/avformat.h>
#include <libavutil/frame.h>
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>
}

#include <QString>

#include <memory>

namespace tavlo {

template <auto Free>
struct FreeByPointer
{
    template <class Object>
    void operator()(Object* object) const
    {
        Free(&object);
    }
};

using FramePtr = std::unique_ptr<AVFrame, FreeByPointer<av_frame_free>>;
using PacketPtr = std::unique_ptr<AVPacket, FreeByPointer<av_packet_free>>;
using CodecPtr = std::unique_ptr<AVCodecContext, FreeByPointer<avcodec_free_context>>;
using GraphPtr = std::unique_ptr<AVFilterGraph, FreeByPointer<avfilter_graph_free>>;
using ResamplerPtr = std::unique_ptr<SwrContext, FreeByPointer<swr_free>>;
using BufferRefPtr = std::unique_ptr<AVBufferRef, FreeByPointer<av_buffer_unref>>;

struct FreeScaler
{
    void operator()(SwsContext* context) const { sws_freeContext(context); }
};
using ScalerPtr = std::unique_ptr<SwsContext, FreeScaler>;

inline constexpr AVRational microsecondBase{1, 1'000'000};

/// FFmpeg's words for one of its error codes.
QString ffmpegError(int code);

/// Before anything is opened. Any thread.
void prepareFfmpeg();

} // namespace tavlo
