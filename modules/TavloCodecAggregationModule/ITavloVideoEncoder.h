#pragma once

#include <tavlo/IUnknownEx.h>
#include <tavlo/records/OutputRecords.h>

struct block_t;
struct picture_t;
struct tagTavloOutputStatistics;
struct tagTavloVideoInfo;

class ITavloGraphicsContext;

/// Takes what a video encoder gives out.
class ITavloVideoEncoderSink : public IUnknownEx
{
public:
    static constexpr TavloInterfaceId interfaceId{0x2d5a3f10, 0x8c1e, 0x4b67, 0xa9, 0x04, 0x77,
                                                  0x1b,       0xe2,   0x5d,   0x90, 0x3c};

    /// A coded picture, the sink's from now on; pts and dts in microseconds. `BLOCK_FLAG_TYPE_I` marks those that
    /// decoding can begin with. Encoder's thread. \param context  the encoder
    virtual void onEncoded(IUnknownEx* context, block_t* block) = 0;

protected:
    ~ITavloVideoEncoderSink() = default;
};

/// Codes pictures of one size and format at a constant rate: a step of the rate without a picture repeats the last one,
/// a picture beyond the rate is left out.
///
/// Owner's thread. What is submitted is coded on a thread of the encoder's.
class ITavloVideoEncoder : public IUnknownEx
{
public:
    static constexpr TavloInterfaceId interfaceId{0x6e0b9a54, 0x13d7, 0x4f2a, 0x8d, 0x61, 0xc8,
                                                  0x4e,       0x05,   0xb1,   0xf7, 0x29};

    /// Before `open`. \param sink, graphicsContext  lent until the encoder's end; the context may be null
    virtual void init(quint32 reserved, ITavloVideoEncoderSink* sink, ITavloGraphicsContext* graphicsContext) = 0;

    /// False, with a log line, for settings or a format that no encoder takes.
    /// \param videoInfo    chroma NV12
    /// \param encodeParam  its settings of the encoders
    virtual bool open(const tagTavloVideoInfo& videoInfo, const tagTavloPresentOutputParam& encodeParam,
                      quint32 reserved) = 0;

    /// Codes what was submitted, hands all of it to the sink and ends.
    virtual void close() = 0;

    /// The codec's header. Lent until `close`.
    virtual void getExtraData(const quint8** data, int* size) = 0;

    /// Copies the picture and codes it; drops it when there is no room. Never waits.
    /// \param flag      not read
    /// \param pts, dts  microseconds
    /// \return false when it was dropped
    virtual bool encode(const picture_t* picture, int flag, qint64 pts, qint64 dts) = 0;

    /// A picture of the encoder's own to be filled; null when none becomes free in time.
    virtual picture_t* acquirePicture(quint32 reserved, int timeoutMilliseconds) = 0;

    /// Codes a picture of `acquirePicture`; its date in microseconds.
    virtual void submitPicture(picture_t* picture) = 0;

    /// Adds the encoder's losses and its delay. Any thread.
    virtual void getStatistics(tagTavloOutputStatistics* statistics) = 0;

protected:
    ~ITavloVideoEncoder() = default;
};

/// What encoders on a graphics processor share with the composition. Owner's thread.
class ITavloGraphicsContext : public IUnknownEx
{
public:
    static constexpr TavloInterfaceId interfaceId{0x91c4d7e2, 0x5a08, 0x4d3b, 0xb6, 0x1f, 0x02,
                                                  0x9e,       0x73,   0xac,   0x48, 0x15};

    /// False when the processor of the encoders' kind is not there. The first three are reserved: 0, null, 0.
    virtual bool create(quint32 reserved, void* reserved2, quint32 reserved3, int flag) = 0;

    virtual void makeCurrent() = 0;

    /// FFmpeg's reference to the device (an `AVBufferRef*`), lent; null for encoders that need none.
    virtual void* device() = 0;

protected:
    ~ITavloGraphicsContext() = default;
};

/// How pictures are coded: the values of `encodeImpl`.
enum TavloVideoEncodeImpl : quint32
{
    TavloVideoEncodeImplAutomatic = 0, ///< the best that works on this machine: NVENC, VAAPI, then software
    TavloVideoEncodeImplNVENC = 1,
    TavloVideoEncodeImplSoftware = 2, ///< libx264, libx265
    TavloVideoEncodeImplVAAPI = 3,
};

/// The values of `videoCodec`.
enum TavloVideoCodec : quint32
{
    TavloVideoCodecH264 = 0,
    TavloVideoCodecHEVC = 1,
};

/// Makes encoders. Made by `CreateTavloCodecAggregation`. Any thread.
class ITavloCodecAggregation : public IUnknownEx
{
public:
    static constexpr TavloInterfaceId interfaceId{0x0fd83b6c, 0xe921, 0x47a5, 0x90, 0x5c, 0x3e,
                                                  0x68,       0xd1,   0x0a,   0x84, 0xb7};

    /// Null for a value that is none of the above. The caller's.
    virtual ITavloGraphicsContext* createGraphicsContext(TavloVideoEncodeImpl impl) = 0;
    virtual ITavloVideoEncoder* createEncoder(TavloVideoEncodeImpl impl) = 0;

protected:
    ~ITavloCodecAggregation() = default;
};
