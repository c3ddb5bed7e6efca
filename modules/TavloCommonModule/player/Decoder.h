#pragma once

#include "TavloCommonModule/player/Segment.h"

#include <functional>

namespace tavlo {

/// Packets in, frames out. A stream's thread.
class Decoder
{
public:
    /// Takes a frame, which is the decoder's again afterwards. False ends the decoding of the packet.
    using TakeFrame = std::function<bool(AVFrame&)>;

    /// Which graphics processor is to decode, where there is one.
    enum class Hardware
    {
        None,
        Any,
        Cuda, ///< rather than another one: pictures can stay in its memory
    };

    /// Whether a frame that lies in graphics memory may stay there.
    using MayStay = std::function<bool(const AVFrame&)>;

    /// Begins with a stream; the same one as before goes on with the decoder that there is. False, with a log line,
    /// when no decoder can take it.
    /// \param hardware  on the graphics processor where there is one that can; the log says what came of it
    /// \param live      as soon as possible rather than on as many processors as possible
    bool open(std::shared_ptr<const StreamInfo> stream, Hardware hardware, bool live);

    void close();

    /// Forgets what was put in.
    void flush();

    /// \param packet  null at the end of a stream: what is held back comes out, and the decoder can begin anew
    void decode(const AVPacket* packet, const TakeFrame& take, const MayStay& mayStay);

private:
    bool carriesFrames() const;
    void unpack(const AVPacket& packet, const TakeFrame& take);
    void chooseHardware(const AVCodec& codec, bool preferCuda);
    bool openDevice(const AVCodec& codec, AVHWDeviceType type);
    void tellHardware(const AVFrame& first);
    AVFrame* inReach(const MayStay& mayStay);

    std::shared_ptr<const StreamInfo> _stream;
    CodecPtr _context;
    BufferRefPtr _device;
    AVPixelFormat _deviceFormat = AV_PIX_FMT_NONE;
    FramePtr _frame;
    FramePtr _fetched; ///< from the graphics processor
    bool _hardwareAsked = false;
    bool _hardwareTold = false;
};

} // namespace tavlo
