#pragma once

#include <memory>
#include <string>

struct AVBufferRef;
struct AVCodecContext;
struct AVFrame;

// Encoders that take pictures from the memory of a graphics processor.

namespace tavlo {

struct FreeBufferRef
{
    void operator()(AVBufferRef* buffer) const;
};
using BufferRefPtr = std::unique_ptr<AVBufferRef, FreeBufferRef>;

/// The first of this machine's devices that answers to VAAPI. Null, the reason in `error`, when none does.
BufferRefPtr openVaapi(std::string& error);

/// Has an encoder, before it is opened, take pictures from the device's memory, which are NV12 there. False when the
/// device keeps none of that size.
bool takeFromDevice(AVCodecContext& codec, AVBufferRef* device);

/// Copies a picture to one on the encoder's device, which `surface` becomes. False when there is no room.
bool upload(const AVCodecContext& codec, const AVFrame& picture, AVFrame& surface);

} // namespace tavlo
