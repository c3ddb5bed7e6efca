#pragma once

#include "TavloCodecAggregationModule/FrameGrid.h"
#include "TavloCodecAggregationModule/ITavloVideoEncoder.h"
#include "shared/VlcPointers.h"

#include <tavlo/InterfacePtr.h>
#include <tavlo/records/MediaFormat.h>

#include <array>
#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

struct AVCodecContext;
struct AVFrame;
struct AVPacket;

namespace tavlo {

struct EncoderChoice;

/// Codes with an encoder of libavcodec, on a thread of its own.
class FfmpegVideoEncoder final : public Implements<FfmpegVideoEncoder, ITavloVideoEncoder>
{
public:
    static constexpr int pictureCount = 8; ///< that wait or are filled

    explicit FfmpegVideoEncoder(TavloVideoEncodeImpl impl) : _impl(impl) {}
    ~FfmpegVideoEncoder();

    void init(quint32 reserved, ITavloVideoEncoderSink* sink, ITavloGraphicsContext* graphicsContext) override;
    bool open(const tagTavloVideoInfo& videoInfo, const tagTavloPresentOutputParam& encodeParam,
              quint32 reserved) override;
    void close() override;
    void getExtraData(const quint8** data, int* size) override;
    bool encode(const picture_t* picture, int flag, qint64 pts, qint64 dts) override;
    picture_t* acquirePicture(quint32 reserved, int timeoutMilliseconds) override;
    void submitPicture(picture_t* picture) override;
    void getStatistics(tagTavloOutputStatistics* statistics) override;

private:
    struct FreeFfmpeg
    {
        void operator()(AVCodecContext* context) const;
        void operator()(AVFrame* frame) const;
        void operator()(AVPacket* packet) const;
    };
    using CodecPtr = std::unique_ptr<AVCodecContext, FreeFfmpeg>;
    using FramePtr = std::unique_ptr<AVFrame, FreeFfmpeg>;
    using PacketPtr = std::unique_ptr<AVPacket, FreeFfmpeg>;

    /// A picture's memory, as the caller sees it and as the codec does. Used by the owner's thread from its acquisition to
    /// its submission, then by the encoder's until it is free again.
    struct Slot
    {
        FramePtr frame;
        PicturePtr picture;
    };

    CodecPtr openCodec(const EncoderChoice& choice, const tagTavloVideoInfo& videoInfo,
                       const tagTavloPresentOutputParam& param);
    bool makeSlots(const tagTavloVideoInfo& videoInfo);
    static bool makeWritable(Slot& slot);
    void run();
    Slot* nextSlot();
    void giveBack(Slot* slot);
    void codeSlot(Slot* slot);
    void send(const AVFrame& picture, qint64 index);
    const AVFrame* planar(const AVFrame& picture);
    void receive();
    void deliver(const AVPacket& packet);

    const TavloVideoEncodeImpl _impl;

    // fixed from open to close
    ITavloVideoEncoderSink* _sink = nullptr;
    ITavloGraphicsContext* _graphicsContext = nullptr; ///< null: no encoder on a device
    CodecPtr _codec;                                   ///< used by the encoder's thread alone
    std::array<Slot, pictureCount> _slots;
    std::thread _thread;

    // encoder's thread
    FrameGrid _grid;
    Slot* _last = nullptr; ///< what a lost step repeats
    FramePtr _sent;        ///< refers to what is sent
    FramePtr _planar;      ///< for encoders that take no interleaved chroma
    PacketPtr _packet;
    std::array<qint64, 256> _sentAt{}; ///< by step, of more than it can hold; microseconds

    // guarded by _lock
    std::mutex _lock;
    std::condition_variable _changed;
    std::vector<Slot*> _free;
    std::vector<Slot*> _queued; ///< in order
    bool _ending = false;

    // any thread
    std::atomic<quint64> _dropped{0}, _repeated{0}, _skipped{0};
    std::atomic<float> _delay{0}; ///< milliseconds
};

} // namespace tavlo
