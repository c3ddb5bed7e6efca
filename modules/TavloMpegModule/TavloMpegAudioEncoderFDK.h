#pragma once

#include "TavloMpegModule/ITavloMpegAudioEncoder.h"
#include "TavloMpegModule/SampleTimeline.h"
#include "shared/VlcPointers.h"

#include <tavlo/InterfacePtr.h>
#include <tavlo/records/MediaFormat.h>

#include <atomic>
#include <memory>
#include <vector>

struct AVCodecContext;
struct AVFrame;
struct AVPacket;
struct SwrContext;

/// AAC of libavcodec.
class TavloMpegAudioEncoderFDK final : public tavlo::Implements<TavloMpegAudioEncoderFDK, ITavloMpegAudioEncoder>
{
public:
    ~TavloMpegAudioEncoderFDK();

    void init(quint32 reserved, ITavloMpegAudioEncoderSink* sink) override;
    bool open(const tagTavloAudioInfo& audioInfo, const tagTavloPresentOutputParam& encodeParam) override;
    void close() override;
    void getExtraData(const quint8** data, int* size) override;
    void encode(const void* data, int size, qint64 pts, qint64 dts) override;
    void getStatistics(tagTavloOutputStatistics* statistics) override;

private:
    struct FreeFfmpeg
    {
        void operator()(AVCodecContext* context) const;
        void operator()(AVFrame* frame) const;
        void operator()(AVPacket* packet) const;
        void operator()(SwrContext* context) const;
    };
    template <class Object>
    using Owned = std::unique_ptr<Object, FreeFfmpeg>;

    bool openCodec(const tagTavloAudioInfo& audioInfo, const tagTavloPresentOutputParam& param);
    bool openConverter(const tagTavloAudioInfo& audioInfo);
    void takeSamples(const quint8* data, qint64 samples);
    void takeSilence(qint64 samples);
    void sendFrame(int samples);
    void receive();
    void deliver(tavlo::BlockPtr block);

    // fixed from open to close
    ITavloMpegAudioEncoderSink* _sink = nullptr;
    Owned<AVCodecContext> _codec;
    Owned<SwrContext> _converter; ///< to separate channels of floats
    int _sampleBytes = 4;         ///< of all channels

    // owner's thread
    tavlo::SampleTimeline _timeline;
    Owned<AVFrame> _frame; ///< filled up to `_filled` samples
    Owned<AVPacket> _packet;
    int _filled = 0;
    qint64 _sent = 0; ///< samples that went to the codec
    qint64 _lastPts = 0;
    tavlo::BlockPtr _coded; ///< waits for the one behind it
    std::vector<quint8> _silence;

    // any thread
    std::atomic<quint64> _silentSamples{0}, _skippedSamples{0};
};
