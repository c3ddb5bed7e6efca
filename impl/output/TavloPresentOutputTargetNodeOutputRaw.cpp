#include "output/TavloPresentOutputTargetNodeOutputRaw.h"

#include <atomic>
#include <utility>

using namespace tavlo::graphics;

namespace {

std::atomic<tavlo::HdmiOutputFactory> hdmiFactory{nullptr};

unsigned long count(qint64 number) { return static_cast<unsigned long>(number); }
int length(const block_t* block) { return static_cast<int>(block->i_buffer); }

} // namespace

void tavlo::setHdmiOutputFactory(HdmiOutputFactory factory) { hdmiFactory.store(factory); }

std::unique_ptr<ITavloHDMIOutputObject> tavlo::makeHdmiOutput()
{
    const HdmiOutputFactory factory = hdmiFactory.load();
    return factory ? factory() : nullptr;
}

// Any leaf

/// The figure in kilobits counts the bytes of one row, not of the picture.
void TavloPresentOutputTargetNodeOutputRaw::onVideo(const picture_t*, const quint8*, int stride, qint64)
{
    _videoRate.Deliver(count(stride));
}

void TavloPresentOutputTargetNodeOutputRaw::onAudio(const block_t* block) { _audioRate.Deliver(count(length(block))); }

void TavloPresentOutputTargetNodeOutputRaw::writeRates(float& videoFps, float& videoKbps, float& audioFps,
                                                       float& audioKbps)
{
    videoFps = static_cast<float>(_videoRate.samplerateCurrent(true) * 1000);
    videoKbps = static_cast<float>(_videoRate.kbpsCurrent(true));
    audioFps = static_cast<float>(_audioRate.samplerateCurrent(true) * 1000);
    audioKbps = static_cast<float>(_audioRate.kbpsCurrent(true));
}

// NDI

using NDI = TavloPresentOutputTargetNodeOutputRawNDI;

NDI::TavloPresentOutputTargetNodeOutputRawNDI(const tagTavloPresentOutputParam& param)
    : TavloPresentOutputTargetNodeOutputRaw(param), _helper("TavloCommonModule", "CreateTavloNDIOutput")
{}

bool NDI::create(int index, const QString& name, const tagTavloVideoInfo& videoInfo, const tagTavloAudioInfo& audioInfo,
                 DevicePtr device, ContextPtr context, TexturePtr texture, const TextureDesc& textureDesc)
{
    TavloPresentOutputTargetNodeBase::create(index, name, videoInfo, audioInfo, std::move(device), std::move(context),
                                             std::move(texture), textureDesc);
    if (_helper.create() && _helper.isReady())
        _helper->open(_param.ndiName, {_videoInfo, _audioInfo});
    return true;
}

void NDI::destroy()
{
    if (_helper.isReady())
        _helper->close();
    _helper.destroy();
    TavloPresentOutputTargetNodeBase::destroy();
}

void NDI::onVideo(const picture_t* picture, const quint8* data, int stride, qint64 date)
{
    if (_helper.isReady())
        _helper->writeVideo(data, stride, stride * _videoInfo.height, date, date);
    TavloPresentOutputTargetNodeOutputRaw::onVideo(picture, data, stride, date);
}

void NDI::onAudio(const block_t* block)
{
    if (_helper.isReady())
        _helper->writeAudio(block->p_buffer, length(block), block->i_pts, block->i_pts);
    TavloPresentOutputTargetNodeOutputRaw::onAudio(block);
}

void NDI::getStatistics(tagTavloOutputStatistics* statistics)
{
    writeRates(statistics->ndiVideoFps, statistics->ndiVideoKbps, statistics->ndiAudioFps, statistics->ndiAudioKbps);
}

// Decklink

using Decklink = TavloPresentOutputTargetNodeOutputRawDecklink;

Decklink::TavloPresentOutputTargetNodeOutputRawDecklink(const tagTavloPresentOutputParam& param)
    : TavloPresentOutputTargetNodeOutputRaw(param), _helper("TavloCommonModule", "CreateTavloDecklinkOutput")
{}

bool Decklink::create(int index, const QString& name, const tagTavloVideoInfo& videoInfo,
                      const tagTavloAudioInfo& audioInfo, DevicePtr device, ContextPtr context, TexturePtr texture,
                      const TextureDesc& textureDesc)
{
    TavloPresentOutputTargetNodeBase::create(index, name, videoInfo, audioInfo, std::move(device), std::move(context),
                                             std::move(texture), textureDesc);
    if (_helper.create() && _helper.isReady())
        _helper->open(_param.decklinkDevice, _param.decklinkMode, _param.decklinkConnection, 0);
    return true;
}

void Decklink::destroy()
{
    if (_helper.isReady())
        _helper->close();
    _helper.destroy();
    TavloPresentOutputTargetNodeBase::destroy();
}

void Decklink::onVideo(const picture_t* picture, const quint8* data, int stride, qint64 date)
{
    if (_helper.isReady()) {
        if (_helper->getWidth() != _videoInfo.width || _helper->getHeight() != _videoInfo.height)
            return;
        _helper->writeVideo(data, stride, stride * _videoInfo.height, date, date);
    }
    TavloPresentOutputTargetNodeOutputRaw::onVideo(picture, data, stride, date);
}

void Decklink::onAudio(const block_t* block)
{
    if (_helper.isReady())
        _helper->writeAudio(block->p_buffer, length(block), block->i_pts, block->i_pts, 1);
    TavloPresentOutputTargetNodeOutputRaw::onAudio(block);
}

void Decklink::getStatistics(tagTavloOutputStatistics* statistics)
{
    writeRates(statistics->decklinkVideoFps, statistics->decklinkVideoKbps, statistics->decklinkAudioFps,
               statistics->decklinkAudioKbps);
}

// Projection

using HDMI = TavloPresentOutputTargetNodeOutputRawHDMI;

HDMI::TavloPresentOutputTargetNodeOutputRawHDMI(const tagTavloPresentOutputParam& param, int number)
    : TavloPresentOutputTargetNodeOutputRaw(param), _hdmiInfo(param.hdmi[static_cast<size_t>(number)])
{}

bool HDMI::create(int index, const QString& name, const tagTavloVideoInfo& videoInfo,
                  const tagTavloAudioInfo& audioInfo, DevicePtr device, ContextPtr context, TexturePtr texture,
                  const TextureDesc& textureDesc)
{
    TavloPresentOutputTargetNodeBase::create(index, name, videoInfo, audioInfo, std::move(device), std::move(context),
                                             std::move(texture), textureDesc);
    if (!_hdmiInfo.enable)
        return true;
    _object = tavlo::makeHdmiOutput();
    if (!_object || _object->create(index, name, _hdmiInfo, _videoInfo, _audioInfo, _param.videoSettings[0]))
        return true;
    _object->stop();
    _object.reset();
    return false;
}

void HDMI::destroy()
{
    if (_object)
        _object->stop();
    _object.reset();
    TavloPresentOutputTargetNodeBase::destroy();
}

void HDMI::onVideo(const picture_t* picture, const quint8* data, int stride, qint64 date)
{
    if (_object)
        _object->writeVideo(picture, data, stride, stride * _videoInfo.height, date, date, _param.videoSettings[1] != 0,
                            picture->format.i_chroma);
    TavloPresentOutputTargetNodeOutputRaw::onVideo(picture, data, stride, date);
}

void HDMI::onAudio(const block_t* block)
{
    if (_object)
        _object->writeAudio(block->p_buffer, length(block), block->i_pts, block->i_pts);
    TavloPresentOutputTargetNodeOutputRaw::onAudio(block);
}

void HDMI::getStatistics(tagTavloOutputStatistics* statistics)
{
    writeRates(statistics->hdmiVideoFps, statistics->hdmiVideoKbps, statistics->hdmiAudioFps,
               statistics->hdmiAudioKbps);
}
