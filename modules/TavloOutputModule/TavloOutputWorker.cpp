#include "TavloOutputModule/TavloOutputWorker.h"

#include "TavloCodecAggregationModule/EncoderLimits.h"
#include "TavloCodecAggregationModule/ITavloVideoEncoder.h"
#include "shared/ModuleFactory.h"

#include <tavlo/Export.h>
#include <tavlo/records/MediaFormat.h>

#include <QDebug>

#include <algorithm>
#include <utility>

namespace tavlo {

namespace {

StreamFormat formatOf(const tagTavloVideoInfo& videoInfo, const tagTavloAudioInfo& audioInfo,
                      const tagTavloPresentOutputParam& encodeParam)
{
    StreamFormat format;
    format.hevc = encodeParam.videoCodec == TavloVideoCodecHEVC;
    format.width = videoInfo.width;
    format.height = videoInfo.height;
    format.fpsNum = videoInfo.fpsNum;
    format.fpsDen = videoInfo.fpsDen;
    format.videoBitrate = qint64{encodeParam.videoBitrate} * 1000;
    const quint32 channels = encodeParam.audioSettings[1];
    format.channels = channels == 1 || channels == 2 ? static_cast<int>(channels) : audioInfo.channels;
    format.sampleRate = audioInfo.sampleRate;
    return format;
}

/// How long sound may wait for its picture: a second, and what the encoder holds. Microseconds.
qint64 longestWait(const StreamFormat& format, const tagTavloPresentOutputParam& encodeParam)
{
    return 1'000'000 + qint64{heldPictures(encodeParam)} * 1'000'000 * format.fpsDen / std::max(format.fpsNum, 1);
}

} // namespace

TavloOutputWorker::~TavloOutputWorker() { TavloOutputWorker::stop(); }

template <class Function>
void TavloOutputWorker::forEachTarget(Function function)
{
    if (_targets.record)
        function(*_targets.record);
    for (const auto& target : _targets.net)
        function(*target);
}

void TavloOutputWorker::init(quint32, void*, ITavloOutputWorkerSink*, quint32) {}

bool TavloOutputWorker::start(const tagTavloVideoInfo& videoInfo, const tagTavloAudioInfo& audioInfo,
                              const tagTavloPresentOutputParam& encodeParam,
                              const tagTavloPresentOutputParam& outputParam, const QByteArray& videoExtraData,
                              const QByteArray& audioExtraData)
{
    stop();
    _format = formatOf(videoInfo, audioInfo, encodeParam);
    _format.videoExtraData = videoExtraData;
    _format.audioExtraData = audioExtraData;
    if (!_format.hasVideo() && !_format.hasAudio()) {
        qDebug() << "TavloOutputWorker::start: neither pictures nor sound";
        return false;
    }
    _targets = makeTargets(outputParam, _format);
    if (_targets.isEmpty()) {
        qDebug() << "TavloOutputWorker::start: no target is enabled that could run";
        return false;
    }
    forEachTarget([](Target& target) { target.start(); });
    const std::lock_guard guard(_lock);
    _interleaver.emplace(_format.hasVideo(), _format.hasAudio(), longestWait(_format, encodeParam));
    return true;
}

void TavloOutputWorker::stop()
{
    {
        const std::lock_guard guard(_lock);
        if (!_interleaver)
            return;
        _interleaver->drain(_ready);
        distribute();
        _interleaver.reset();
    }
    forEachTarget([](Target& target) { target.end(); }); // all of them first: those that are stuck give up together
    forEachTarget([](Target& target) { target.join(); });
}

void TavloOutputWorker::writeVideo(block_t* block)
{
    _videoRate.add(block->i_buffer);
    take(BlockPtr(block), true);
}

void TavloOutputWorker::writeAudio(block_t* block)
{
    _audioRate.add(block->i_buffer);
    take(BlockPtr(block), false);
}

void TavloOutputWorker::writeData(block_t* block) { block_Release(block); }

void TavloOutputWorker::take(BlockPtr block, bool video)
{
    _total.fetch_add(block->i_buffer, std::memory_order_relaxed);
    auto packet = std::make_shared<const CodedPacket>(std::move(block), video);
    const std::lock_guard guard(_lock);
    if (!_interleaver)
        return;
    _interleaver->push(std::move(packet), _ready);
    distribute();
}

void TavloOutputWorker::distribute()
{
    for (const CodedPacketPtr& packet : _ready)
        forEachTarget([&](Target& target) { target.push(packet); });
    _ready.clear();
}

void TavloOutputWorker::getStatistics(tagTavloOutputStatistics* statistics, quint32 selector)
{
    statistics->workerRate1 = _videoRate.kilobits();
    statistics->workerRate2 = _audioRate.kilobits();
    statistics->workerTotal = _total.load(std::memory_order_relaxed);
    if (selector == recordSelector && _targets.record) {
        Target& record = *_targets.record;
        statistics->recordRatePair1 = record.videoRate.kilobits();
        statistics->recordRatePair2 = record.audioRate.kilobits();
        statistics->recordState = record.state();
        statistics->recordDropped += record.dropped();
        statistics->recordWritten += record.written();
        statistics->recordFiles += record.openings();
    }
    if (selector != netSelector) { // what a recording has besides its files are segments
        for (const auto& target : _targets.net)
            statistics->recordDropped += target->dropped();
        return;
    }
    for (const auto& target : _targets.net) {
        statistics->netRatePair1 += target->videoRate.kilobits();
        statistics->netRatePair2 += target->audioRate.kilobits();
        statistics->netState = std::max<quint32>(statistics->netState, target->state());
        statistics->netDropped += target->dropped();
        statistics->netWritten += target->written();
        statistics->netViewers += target->viewers();
        statistics->viewerDropped += target->viewerDropped();
        statistics->netReconnects += std::max<quint64>(target->openings(), 1) - 1;
    }
    statistics->transferRatePair1 = statistics->netRatePair1;
    statistics->transferRatePair2 = statistics->netRatePair2;
}

} // namespace tavlo

extern "C" TAVLO_EXPORT IUnknownEx* CreateTavloOutputWorker(const TavloInterfaceId& id, quint32 version)
{
    return tavlo::makeForModule<tavlo::TavloOutputWorker>(id, version);
}
