#pragma once

#include "output/TavloPresentOutputTargetNodeOutputRaw.h"
#include "output/TavloPresentOutputTargetNodeProcessMemConvert.h"

#include <tavlo/TavloPresentOutputType.h>

#include <array>
#include <shared_mutex>

/// Hands an output's pictures and sound to displays as they are, and to NDI and a Decklink card as UYVY.
///
/// A start of a running output ends that one and begins anew.
class TavloPresentOutputTargetNodeTransformDispatch final : public TavloPresentOutputTargetNodeProcessMemConvert
{
public:
    explicit TavloPresentOutputTargetNodeTransformDispatch(tavlo::OutputConversion conversion);
    ~TavloPresentOutputTargetNodeTransformDispatch() override;

    void getStatistics(tagTavloOutputStatistics* statistics) override;

protected:
    void onThreadEvent(tavlo::OutputEvent& event) override;
    void onThreadEnd() override;
    void onHandle_video(picture_t* picture, bool flip) override;
    void onHandle_audio(block_t* block) override;
    bool needVideo() const override { return _leafCount.load(std::memory_order_relaxed) != 0; }
    bool needAudio() const override { return needVideo(); }

private:
    using Leaf = TavloPresentOutputTargetNodeOutputRaw;

    void onHandle_startOutput(int index, int type, const tagTavloPresentOutputParam& param);
    void removeLeaf(int type);

    /// The picture as rows of UYVY, top row first: its own memory where it can be, else one of the node's.
    const quint8* asUyvy(picture_t* picture, bool flip, int& stride);

    // any thread
    std::atomic<int> _leafCount{0};
    std::atomic<quint64> _handedOnPictures{0};

    // changed by the node's thread alone, under _nodesLock; others read under it
    std::shared_mutex _nodesLock;
    std::array<std::unique_ptr<Leaf>, TavloPresentOutputTypeCount> _outputNodes; ///< by type
    std::vector<Leaf*> _hdmiNodes; ///< those that take pictures as they are
    std::vector<Leaf*> _rawNodes;  ///< those that take UYVY
};
