#include "output/TavloPresentOutputTargetNodeOutputRaw.h"

#include <atomic>
#include <utility>

using namespace tavlo::graphics;

namespace {

std::atomic<tavlo::HdmiOutputFactory> hdmiFactory{nullptr};

} // namespace

void tavlo::setHdmiOutputFactory(HdmiOutputFactory factory) { hdmiFactory.store(factory); }

std::unique_ptr<ITavloHDMIOutputObject> tavlo::makeHdmiOutput()
{
    const HdmiOutputFactory factory = hdmiFactory.load();
    return factory ? factory() : nullptr;
}

// Any leaf

using Raw = TavloPresentOutputTargetNodeOutputRaw;

bool Raw::create(int index, const QString& name, const tagTavloVideoInfo& videoInfo, const tagTavloAudioInfo& audioInfo,
                 DevicePtr device, ContextPtr context, TexturePtr texture, const TextureDesc& textureDesc)
{
    return TavloPresentOutputTargetNodeBase::create(index, name, videoInfo, audioInfo, std::move(device),
                                                    std::move(context), std::move(texture), textureDesc) &&
           open();
}

void Raw::destroy()
{
    close();
    TavloPresentOutputTargetNodeBase::destroy();
}

/// The figure in kilobits counts the bytes of one row, not of the picture.
void Raw::onVideo(const picture_t* picture, const quint8* data, int stride, qint64 date)
{
    if (writeVideo({picture, data, stride, stride * _videoInfo.height, date}))
        _videoRate.Deliver(static_cast<unsigned long>(stride));
}

void Raw::onAudio(const block_t* block)
{
    writeAudio(block->p_buffer, static_cast<int>(block->i_buffer), block->i_pts);
    _audioRate.Deliver(static_cast<unsigned long>(block->i_buffer));
}

void Raw::writeRates(float& videoFps, float& videoKbps, float& audioFps, float& audioKbps)
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

bool NDI::open()
{
    if (_helper.create() && _helper.isReady())
        _helper->open(_param.ndiName, {_videoInfo, _audioInfo});
    return true;
}

void NDI::close()
{
    if (_helper.isReady())
        _helper->close();
    _helper.destroy();
}

bool NDI::writeVideo(const Picture& picture)
{
    if (_helper.isReady())
        _helper->writeVideo(picture.data, picture.stride, picture.size, picture.date, picture.date);
    return true;
}

void NDI::writeAudio(const quint8* data, int size, qint64 date)
{
    if (_helper.isReady())
        _helper->writeAudio(data, size, date, date);
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

bool Decklink::open()
{
    if (_helper.create() && _helper.isReady())
        _helper->open(_param.decklinkDevice, _param.decklinkMode, _param.decklinkConnection, 0);
    return true;
}

void Decklink::close()
{
    if (_helper.isReady())
        _helper->close();
    _helper.destroy();
}

bool Decklink::writeVideo(const Picture& picture)
{
    if (!_helper.isReady())
        return true;
    if (_helper->getWidth() != _videoInfo.width || _helper->getHeight() != _videoInfo.height)
        return false;
    _helper->writeVideo(picture.data, picture.stride, picture.size, picture.date, picture.date);
    return true;
}

void Decklink::writeAudio(const quint8* data, int size, qint64 date)
{
    if (_helper.isReady())
        _helper->writeAudio(data, size, date, date, 1);
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

bool HDMI::open()
{
    if (!_hdmiInfo.enable)
        return true;
    _object = tavlo::makeHdmiOutput();
    if (!_object || _object->create(_index, _name, _hdmiInfo, _videoInfo, _audioInfo, _param.videoSettings[0]))
        return true;
    close();
    return false;
}

void HDMI::close()
{
    if (_object)
        _object->stop();
    _object.reset();
}

bool HDMI::writeVideo(const Picture& picture)
{
    if (_object)
        _object->writeVideo(picture.picture, picture.data, picture.stride, picture.size, picture.date, picture.date,
                            _param.videoSettings[1] != 0, picture.picture->format.i_chroma);
    return true;
}

void HDMI::writeAudio(const quint8* data, int size, qint64 date)
{
    if (_object)
        _object->writeAudio(data, size, date, date);
}

void HDMI::getStatistics(tagTavloOutputStatistics* statistics)
{
    writeRates(statistics->hdmiVideoFps, statistics->hdmiVideoKbps, statistics->hdmiAudioFps,
               statistics->hdmiAudioKbps);
}
