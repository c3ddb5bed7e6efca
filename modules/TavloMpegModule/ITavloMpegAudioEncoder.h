#pragma once

#include <tavlo/IUnknownEx.h>
#include <tavlo/records/OutputRecords.h>

struct block_t;
struct tagTavloAudioInfo;
struct tagTavloOutputStatistics;

/// Takes what a sound encoder gives out.
class ITavloMpegAudioEncoderSink : public IUnknownEx
{
public:
    static constexpr TavloInterfaceId interfaceId{0xd40e6b92, 0x27f5, 0x4c18, 0x83, 0xba, 0x51,
                                                  0xc9,       0x0d,   0x7e,   0x36, 0xf4};

    /// A coded block, the sink's from now on; pts and dts in microseconds. Thread of `encode` and `close`.
    /// \param context  the encoder
    virtual void onEncoded(IUnknownEx* context, block_t* block) = 0;

protected:
    ~ITavloMpegAudioEncoderSink() = default;
};

/// Codes sound as AAC. Made by `CreateTavloMpegAudioEncoderFDK`.
///
/// Times follow the count of samples and are led slowly after the clock of the blocks. A gap becomes silence, sound that
/// comes twice is left out; both are counted.
///
/// Owner's thread, one call at a time.
class ITavloMpegAudioEncoder : public IUnknownEx
{
public:
    static constexpr TavloInterfaceId interfaceId{0x38b1f0c7, 0x6d94, 0x4e02, 0xa5, 0x7d, 0xe0,
                                                  0x14,       0x8b,   0x62,   0xdf, 0x9a};

    /// Before `open`. \param sink  lent until the encoder's end
    virtual void init(quint32 reserved, ITavloMpegAudioEncoderSink* sink) = 0;

    /// False, with a log line, for a format that cannot be coded.
    virtual bool open(const tagTavloAudioInfo& audioInfo, const tagTavloPresentOutputParam& encodeParam) = 0;

    /// Codes what is left, hands it to the sink and ends.
    virtual void close() = 0;

    /// The codec's header. Lent until `close`.
    virtual void getExtraData(const quint8** data, int* size) = 0;

    /// Codes interleaved samples in the format of `open`.
    /// \param size      bytes
    /// \param pts, dts  of the first sample, microseconds
    virtual void encode(const void* data, int size, qint64 pts, qint64 dts) = 0;

    /// Adds the encoder's losses. Any thread.
    virtual void getStatistics(tagTavloOutputStatistics* statistics) = 0;

protected:
    ~ITavloMpegAudioEncoder() = default;
};
