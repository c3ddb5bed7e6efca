#pragma once

#include "TavloCommonModule/player/FfmpegTypes.h"

// How an input that has frames hands them on: a packet whose bytes are the frame's own, and which carries its description.

namespace tavlo {

/// The frame that a packet carries; lent.
inline const AVFrame* frameOf(const AVPacket& packet)
{
    return reinterpret_cast<const AVFrame*>(packet.opaque_ref->data);
}

/// Makes an empty packet carry a frame of one buffer. False without memory.
inline bool packFrame(FramePtr frame, AVPacket& packet)
{
    const auto release = [](void*, uint8_t* data) { FramePtr(reinterpret_cast<AVFrame*>(data)); };
    packet.buf = av_buffer_ref(frame->buf[0]);
    packet.opaque_ref = av_buffer_create(reinterpret_cast<uint8_t*>(frame.get()), sizeof(AVFrame), release, nullptr, 0);
    if (!packet.opaque_ref)
        return false;
    packet.data = frame->buf[0]->data;
    packet.size = static_cast<int>(frame->buf[0]->size);
    packet.pts = packet.dts = frame->pts;
    packet.duration = frame->pkt_duration;
    (void)frame.release(); // the packet's
    return packet.buf != nullptr;
}

} // namespace tavlo
