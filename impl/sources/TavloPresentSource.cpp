#include "sources/TavloPresentSource.h"

#include "sources/ITavloPresentChannelRich.h"

#include <tavlo/InterfacePtr.h>
#include <tavlo/records/EngineRecords.h>

using namespace tavlo;

TavloPresentSource::TavloPresentSource(const SourceSite& site)
    : _site(site), _channelRich(query<ITavloPresentChannelRich>(site.channel)),
      _engine2(query<ITavloPresentEnginePrivate2>(site.engine)), _channel(site.channel), _engine(site.engine)
{}

void TavloPresentSource::destroy()
{
    if (isValid())
        delete this;
}

IUnknownEx* TavloPresentSource::queryInterface(const TavloInterfaceId& id, quint32 version)
{
    const bool known = id == ITavloPresentSource::interfaceId && acceptsInterfaceVersion(version);
    return known ? static_cast<ITavloPresentSource*>(this) : nullptr;
}

quint32 TavloPresentSource::addRef() { return ++_refCount; }

quint32 TavloPresentSource::release()
{
    const quint32 left = --_refCount;
    if (left == 0)
        delete this;
    return left;
}

tagTavloPresentSourceStatisticsItem* TavloPresentSource::getStatistics()
{
    constexpr double millisecondsInSecond = 1000.0;
    constexpr double roundsUp = 0.4; // people read these as whole numbers
    _statistics.decodeFps = static_cast<float>(_decodeRate.samplerateCurrent(true) * millisecondsInSecond + roundsUp);
    _statistics.drawFps = static_cast<float>(_drawRate.samplerateCurrent(true) * millisecondsInSecond + roundsUp);
    _statistics.audioRate = static_cast<float>(_audioRate.samplerateCurrent(true) * millisecondsInSecond);
    _statistics.avDelay = (_videoClock - _audioClock) / 1000;
    return &_statistics;
}

QImage& TavloPresentSource::getPreviewImage()
{
    static QImage none;
    return none;
}

qint32 TavloPresentSource::updateSource(const tagTavloPresentSourceInfo&) { return -1; }

void TavloPresentSource::setLayoutElement(quint32, const tagTavloShowLayoutElement&) {}

bool TavloPresentSource::openSource(const tagTavloPresentSourceInfo& info)
{
    _statistics.type = info.type;
    _info = info;
    _outputFormat = _info.formatInfo;
    if (ITavloPresentEnginePrivate* const engine = _engine)
        _audioResample.setOutput(engine->engineInfo().audioInfo);
    return true;
}

void TavloPresentSource::closeSource()
{
    _channel = nullptr;
    _engine = nullptr;
    clearTarget();
}

void TavloPresentSource::drawFrame(TavloDrawDX11&, const FrameStamps&) {}

bool TavloPresentSource::usesChannel(int) { return false; }

void TavloPresentSource::onWindowMessage(quint32, quint64, qint64) {}

void TavloPresentSource::drawPicture(quint32 chroma, QSizeF size, PlaneOffsets planeOffsets,
                                     const graphics::TexturePtr& picture, bool flip)
{
    ITavloPresentChannelSource* const channel = _channel;
    if (channel && _engine.load() && picture)
        channel->renderPicture(chroma, picture, size, planeOffsets, true, flip);
}

void TavloPresentSource::drawTransition(const TransitionPicture& outgoing, const TransitionPicture& incoming,
                                        float position, quint32 effect)
{
    ITavloPresentChannelSource* const channel = _channel;
    if (channel && _engine.load() && outgoing.texture && incoming.texture)
        channel->renderBlendPicture(outgoing, incoming, position, effect);
}

block_t* TavloPresentSource::deliverAudio(int index, block_t* block, const tagTavloAudioInfo& format)
{
    block_t* const converted = _audioResample.process(block, format);
    ITavloPresentChannelSource* const channel = _channel;
    ITavloPresentEnginePrivate* const engine = _engine;
    if (!converted || !channel || !engine)
        return converted;
    _audioRate.Deliver(converted->i_buffer);
    engine->pushAudio(channel, channel->channelIndex(), index, converted, _audioResample.output());
    _audioClock = converted->i_pts;
    return converted;
}

void TavloPresentSource::clearTarget()
{
    if (_site.draw)
        _site.draw->clear();
}
