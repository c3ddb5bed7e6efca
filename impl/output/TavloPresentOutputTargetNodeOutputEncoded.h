#pragma once

#include "TavloOutputModule/ITavloOutputWorker.h"
#include "base/CTempldateHelper.h"
#include "output/TavloPresentOutputTargetNodeBase.h"
#include "shared/VlcPointers.h"

#include <tavlo/InterfacePtr.h>
#include <tavlo/TavloOutputStatistics.h>

/// A leaf that takes coded blocks and hands them to a worker, which records or streams them.
///
/// `create` and `destroy`: the mid node's thread. Blocks: the encoders' threads. `getStatistics`: any thread. The mid
/// node's lock keeps these apart from `create` and `destroy`.
class TavloPresentOutputTargetNodeOutputEncoded : public TavloPresentOutputTargetNodeBase
{
public:
    /// \param param        where the blocks go
    /// \param encodeParam  how they are coded
    TavloPresentOutputTargetNodeOutputEncoded(const tagTavloPresentOutputParam& param,
                                              const tagTavloPresentOutputParam& encodeParam,
                                              const QByteArray& videoExtraData, const QByteArray& audioExtraData);
    ~TavloPresentOutputTargetNodeOutputEncoded() override;

    /// Starts the worker. True even when it refuses: the log tells, and the blocks are lost.
    bool create(int index, const QString& name, const tagTavloVideoInfo& videoInfo, const tagTavloAudioInfo& audioInfo,
                tavlo::graphics::DevicePtr device, tavlo::graphics::ContextPtr context,
                tavlo::graphics::TexturePtr texture, const tavlo::graphics::TextureDesc& textureDesc) override;
    void destroy() override;

    /// A coded block in order of its dts.
    void onVideo(tavlo::BlockPtr block);
    void onAudio(tavlo::BlockPtr block);

    virtual void getStatistics(tagTavloOutputStatistics* statistics) = 0;

protected:
    ITavloOutputWorker* worker() const { return _workerHelper.get(); }

private:
    /// Nothing that a worker tells is of use here: its state shows in the statistics.
    class WorkerSink final : public tavlo::Implements<WorkerSink, ITavloOutputWorkerSink>
    {
    public:
        void destroy() override {} // a part of the leaf
        void onWorkerEvent(quint32) override {}
        qint32 onWorkerRequest(quint32) override { return 0; }
        void onWorkerEnd() override {}
    };

    // fixed by construction, `recordName` by create
    tagTavloPresentOutputParam _param;
    const tagTavloPresentOutputParam _encodeParam;
    const QByteArray _videoExtraData;
    const QByteArray _audioExtraData;

    WorkerSink _workerSink;

    // fixed from create to destroy
    CTempldateHelper<ITavloOutputWorker> _workerHelper;
};

/// Records.
class TavloPresentOutputTargetNodeOutputRecord final : public TavloPresentOutputTargetNodeOutputEncoded
{
public:
    using TavloPresentOutputTargetNodeOutputEncoded::TavloPresentOutputTargetNodeOutputEncoded;
    void getStatistics(tagTavloOutputStatistics* statistics) override;
};

/// Streams.
class TavloPresentOutputTargetNodeOutputNet final : public TavloPresentOutputTargetNodeOutputEncoded
{
public:
    using TavloPresentOutputTargetNodeOutputEncoded::TavloPresentOutputTargetNodeOutputEncoded;
    void getStatistics(tagTavloOutputStatistics* statistics) override;
};
