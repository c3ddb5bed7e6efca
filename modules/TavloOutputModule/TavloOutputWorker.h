#pragma once

#include "TavloOutputModule/ITavloOutputWorker.h"
#include "TavloOutputModule/Interleaver.h"
#include "TavloOutputModule/TargetList.h"

#include <tavlo/InterfacePtr.h>

#include <mutex>
#include <optional>

namespace tavlo {

class TavloOutputWorker final : public Implements<TavloOutputWorker, ITavloOutputWorker>
{
public:
    ~TavloOutputWorker();

    void init(quint32 reserved, void* reserved2, ITavloOutputWorkerSink* sink, quint32 mode) override;
    bool start(const tagTavloVideoInfo& videoInfo, const tagTavloAudioInfo& audioInfo,
               const tagTavloPresentOutputParam& encodeParam, const tagTavloPresentOutputParam& outputParam,
               const QByteArray& videoExtraData, const QByteArray& audioExtraData) override;
    void stop() override;
    void writeVideo(block_t* block) override;
    void writeAudio(block_t* block) override;
    void writeData(block_t* block) override;
    void getStatistics(tagTavloOutputStatistics* statistics, quint32 selector) override;

private:
    void take(BlockPtr block, bool video);
    void distribute();

    template <class Function>
    void forEachTarget(Function function);

    // fixed from start to the next start
    StreamFormat _format;
    TargetList _targets;

    // guarded by _lock
    std::mutex _lock;
    std::optional<Interleaver> _interleaver; ///< from start to stop
    std::vector<CodedPacketPtr> _ready;      ///< scratch

    // any thread
    ByteMeter _videoRate, _audioRate;
    std::atomic<quint64> _total{0}; ///< bytes
};

} // namespace tavlo
