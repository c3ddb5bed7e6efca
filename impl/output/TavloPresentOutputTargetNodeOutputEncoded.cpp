#include "output/TavloPresentOutputTargetNodeOutputEncoded.h"

#include "base/Log.h"

#include <utility>

using namespace tavlo;
using namespace tavlo::graphics;

namespace {

constexpr quint32 workerMode = 3;

} // namespace

TavloPresentOutputTargetNodeOutputEncoded::TavloPresentOutputTargetNodeOutputEncoded(
    const tagTavloPresentOutputParam& param, const tagTavloPresentOutputParam& encodeParam,
    const QByteArray& videoExtraData, const QByteArray& audioExtraData)
    : _param(param), _encodeParam(encodeParam), _videoExtraData(videoExtraData), _audioExtraData(audioExtraData),
      _workerHelper("TavloOutputModule", "CreateTavloOutputWorker")
{}

TavloPresentOutputTargetNodeOutputEncoded::~TavloPresentOutputTargetNodeOutputEncoded() = default;

bool TavloPresentOutputTargetNodeOutputEncoded::create(int index, const QString& name,
                                                       const tagTavloVideoInfo& videoInfo,
                                                       const tagTavloAudioInfo& audioInfo, DevicePtr device,
                                                       ContextPtr context, TexturePtr texture,
                                                       const TextureDesc& textureDesc)
{
    if (!TavloPresentOutputTargetNodeBase::create(index, name, videoInfo, audioInfo, std::move(device),
                                                  std::move(context), std::move(texture), textureDesc))
        return false;
    _param.recordName.replace(QStringLiteral("${PROGRAMNAME}"), _param.programName);
    bool started = _workerHelper.create();
    if (started) {
        worker()->init(0, nullptr, &_workerSink, workerMode);
        started = worker()->start(_videoInfo, _audioInfo, _encodeParam, _param, _videoExtraData, _audioExtraData);
    }
    if (!started)
        logFailure({"impl\\TavloPresentOutputTarget", "TavloPresentOutputTargetNodeOutputEncoded::create"},
                   QStringLiteral("failed to output worker !!!"));
    return true;
}

void TavloPresentOutputTargetNodeOutputEncoded::destroy()
{
    if (worker())
        worker()->stop(); // its figures can be asked for as long as the leaf lives
    TavloPresentOutputTargetNodeBase::destroy();
}

void TavloPresentOutputTargetNodeOutputEncoded::onVideo(BlockPtr block)
{
    if (worker() && block)
        worker()->writeVideo(block.release());
}

void TavloPresentOutputTargetNodeOutputEncoded::onAudio(BlockPtr block)
{
    if (worker() && block)
        worker()->writeAudio(block.release());
}

void TavloPresentOutputTargetNodeOutputRecord::getStatistics(tagTavloOutputStatistics* statistics)
{
    if (worker())
        worker()->getStatistics(statistics, ITavloOutputWorker::recordSelector);
}

void TavloPresentOutputTargetNodeOutputNet::getStatistics(tagTavloOutputStatistics* statistics)
{
    if (worker())
        worker()->getStatistics(statistics, ITavloOutputWorker::netSelector);
}
