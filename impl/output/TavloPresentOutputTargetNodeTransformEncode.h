#pragma once

#include "TavloCodecAggregationModule/ITavloVideoEncoder.h"
#include "TavloMpegModule/ITavloMpegAudioEncoder.h"
#include "base/CTempldateHelper.h"
#include "output/TavloPresentOutputTargetNodeOutputEncoded.h"
#include "output/TavloPresentOutputTargetNodeProcessMemConvert.h"

#include <tavlo/TavloPresentOutputType.h>

#include <QByteArray>

#include <array>
#include <optional>
#include <shared_mutex>

/// Codes an output's pictures and sound once and hands the blocks to its recording and its stream.
///
/// The encoders run from the start of the first of the two to the end of the last. The first one to start says how they
/// code; a second start of a running one is ignored. What the encoders still hold when the last one ends is written. Each
/// ends on a thread of its own: it may take long, and the other goes on or begins.
class TavloPresentOutputTargetNodeTransformEncode final : public TavloPresentOutputTargetNodeProcessMemConvert
{
public:
    explicit TavloPresentOutputTargetNodeTransformEncode(tavlo::OutputConversion conversion);
    ~TavloPresentOutputTargetNodeTransformEncode() override;

    void destroy() override;
    void getStatistics(tagTavloOutputStatistics* statistics) override;

protected:
    void onThreadEvent(tavlo::OutputEvent& event) override;
    void onThreadEnd() override;
    void onHandle_video(picture_t* picture, bool flip) override;
    void onHandle_audio(block_t* block) override;
    bool needVideo() const override { return _wantsVideo.load(std::memory_order_relaxed); }
    bool needAudio() const override { return _wantsAudio.load(std::memory_order_relaxed); }

private:
    using Leaf = TavloPresentOutputTargetNodeOutputEncoded;

    /// Hands the blocks of one encoder to the leaves.
    template <class Interface, void (TavloPresentOutputTargetNodeTransformEncode::*take)(tavlo::BlockPtr)>
    class Sink final : public tavlo::Implements<Sink<Interface, take>, Interface>
    {
    public:
        explicit Sink(TavloPresentOutputTargetNodeTransformEncode& node) : _node(node) {}
        void destroy() override {} // a part of the node
        void onEncoded(IUnknownEx*, block_t* block) override { (_node.*take)(tavlo::BlockPtr(block)); }

    private:
        TavloPresentOutputTargetNodeTransformEncode& _node;
    };

    /// A leaf on the way to its end.
    struct Ending
    {
        std::unique_ptr<Leaf> leaf;                           ///< null: there is none; guarded by _nodesLock
        std::thread thread;                                   ///< does nothing but end it
        std::vector<std::binary_semaphore*> waiting;          ///< of those who wait for the end
        std::optional<tagTavloPresentOutputParam> startAgain; ///< of a start that came meanwhile
    };

    void onHandle_startOutput(int index, int type, const tagTavloPresentOutputParam& param);
    void onHandle_stopOutput(int index, int type, std::binary_semaphore*& done);
    void onHandle_leafEnded(int type);
    std::unique_ptr<Leaf> makeLeaf(int type, tagTavloPresentOutputParam param) const;
    void endAside(int type);
    void finishEnd(int type);
    template <class Part>
    void keepCounts(Part& part);
    void startEncode();
    void startVideo();
    void startAudio();
    void stopEncode();
    void takeVideo(tavlo::BlockPtr block);
    void takeAudio(tavlo::BlockPtr block);
    void noteFrameType(const block_t& block);
    void handOn(tavlo::BlockPtr block, void (Leaf::*take)(tavlo::BlockPtr));

    // node's thread
    std::array<Ending, TavloPresentOutputTypeCount> _endings; ///< by type
    bool _encoding = false;
    tavlo::LossRow _lostByEncoder;
    tagTavloPresentOutputParam _encodeParam; ///< of the start that opened the encoders
    tavlo::InterfacePtr<ITavloGraphicsContext> _graphicsContext;
    CTempldateHelper<ITavloMpegAudioEncoder> _audioHelper;
    QByteArray _videoExtraData;
    QByteArray _audioExtraData;
    Sink<ITavloVideoEncoderSink, &TavloPresentOutputTargetNodeTransformEncode::takeVideo> _videoSink{*this};
    Sink<ITavloMpegAudioEncoderSink, &TavloPresentOutputTargetNodeTransformEncode::takeAudio> _audioSink{*this};

    // any thread
    std::atomic<bool> _wantsVideo{false};
    std::atomic<bool> _wantsAudio{false};
    std::atomic<quint64> _codedPictures{0};

    // changed by the node's thread alone, under _nodesLock; others read under it
    std::shared_mutex _nodesLock;
    tavlo::InterfacePtr<ITavloVideoEncoder> _videoEncoder;
    ITavloMpegAudioEncoder* _audioEncoder = nullptr;                             ///< the helper's, while it codes
    std::array<std::unique_ptr<Leaf>, TavloPresentOutputTypeCount> _outputNodes; ///< by type; two of them are used
    std::vector<Leaf*> _nodes;                                                   ///< those of them that take blocks

    tagTavloOutputStatistics _ended; ///< counts of the encoders and leaves that are gone

    // guarded by _frameTypesLock
    std::mutex _frameTypesLock;
    std::array<char, 128> _frameTypes{};
    size_t _frameTypeCount = 0;
};
