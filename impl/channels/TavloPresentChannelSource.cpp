#include "channels/TavloPresentChannelSource.h"

#include "drawing/PictureChroma.h"

#include <tavlo/TavloEngineEvents.h>

#include <QDebug>

#include <algorithm>

using namespace tavlo;

namespace {

constexpr auto operation = "TavloPresentChannelSource::openSource";

tagTavloPresentPictureFilterParam defaultProcess()
{
    tagTavloPresentPictureFilterParam process;
    process.chromaKeyParam.color = 0xff00ff00;
    process.chromaKeyParam.similarity = 0.4F;
    process.chromaKeyParam.smoothness = 0.08F;
    process.chromaKeyParam.spill = 0.1F;
    process.rectCropParam.cropRect = {0.0F, 0.0F, 1.0F, 1.0F};
    return process;
}

/// U and V of a key colour, 0 to 1 (BT.709, limited range).
std::array<float, 2> keyChroma(quint32 color)
{
    const auto part = [color](int shift) { return static_cast<float>((color >> shift) & 0xff) * (1.0F / 255.0F); };
    const float r = part(16);
    const float g = part(8);
    const float b = part(0);
    return {-0.100644F * r - 0.338572F * g + 0.439216F * b + 0.501961F,
            0.439216F * r - 0.398942F * g - 0.040274F * b + 0.501961F};
}

graphics::Rgba toRgba(quint32 argb)
{
    const auto part = [argb](int shift) { return static_cast<float>((argb >> shift) & 0xff) / 255.0F; };
    return {part(16), part(8), part(0), part(24)};
}

} // namespace

TavloPresentChannelSource::TavloPresentChannelSource(const ChannelSite& site)
    : TavloPresentChannelRich(site), _process(defaultProcess())
{
    setChromaKey(_process.chromaKeyParam);
}

TavloPresentChannelSource::~TavloPresentChannelSource() = default;

bool TavloPresentChannelSource::createChannel(const QSizeF& size)
{
    if (!TavloPresentChannelRich::createChannel(size))
        return false;
    makeBackground();
    _target->setClearColor({0.0F, 0.0F, 0.0F, 0.0F});
    _target->setClearFlags(scene::RenderTexture::clearColorBit);
    _deferredContext = _site.device->createDeferredContext();
    publishKey();
    return _deferredContext != nullptr;
}

void TavloPresentChannelSource::destroyChannel()
{
    closeSource();
    _deferredContext.reset();
    TavloPresentChannelRich::destroyChannel();
}

int TavloPresentChannelSource::renderOrder() const
{
    const quint32 type = _source ? _source->getSourceInfo()->type : TavloPresentSourceTypeNone;
    const bool showsOthers = type == TavloPresentSourceTypeStage || type == TavloPresentSourceTypeLayout;
    return showsOthers ? CanvasOrderComposite : CanvasOrderSource;
}

IUnknownEx* TavloPresentChannelSource::queryInterface(const TavloInterfaceId& id, quint32 version)
{
    if (id == ITavloPresentChannelSource::interfaceId && acceptsInterfaceVersion(version))
        return static_cast<ITavloPresentChannelSource*>(this);
    return TavloPresentChannelRich::queryInterface(id, version);
}

QVariant TavloPresentChannelSource::openSource(const tagTavloPresentSourceInfo& info)
{
    if (_source)
        return QVariant(0);
    QVariant result(0);
    if (info.type != TavloPresentSourceTypeNone && makeSource(info))
        result = forHost(_site.engine, _source);
    _site.engine->notifySink(TavloEventSourceOpened, QVariant(0), QVariant(channelId()), result, {}, {});
    return result;
}

bool TavloPresentChannelSource::makeSource(const tagTavloPresentSourceInfo& info)
{
    SourceSite site;
    site.channel = this;
    site.engine = _site.engine;
    site.renderTexture = _target.get();
    site.draw = &_renderTargetPainter;
    site.device = _site.device;
    site.context = _site.context;
    site.deferredContext = _deferredContext;
    SourcePtr source = TavloPresentSourceUtil::createSource(info, site);
    if (!source) {
        qDebug() << "failed to TavloPresentSourceUtil::createSource " << operation;
        return false;
    }
    if (!source->openSource(info)) {
        qDebug() << "failed to openSource " << operation;
        source->closeSource();
        return false;
    }
    _sound.setRouting(static_cast<TavloPresentSourceAudioChannelProcessType>(info.audioChannelProcessType));
    _source = std::move(source);
    return true;
}

QVariant TavloPresentChannelSource::closeSource()
{
    if (!_source)
        return QVariant(0);
    const SourcePtr source = std::move(_source);
    source->stop();
    source->closeSource();
    _target->setAutoDraw(false);
    const QVariant result = forHost(_site.engine, source);
    _site.engine->notifySink(TavloEventSourceClosed, QVariant(0), QVariant(channelId()), result, {}, {});
    return result;
}

void TavloPresentChannelSource::stepFrame(const FrameStamps& stamps)
{
    if (_source)
        _source->drawFrame(_renderTargetPainter, stamps);
    _target->setOpaque(_renderTargetPainter.isOpaque());
    if (channelId() < TavloMixedChannelLimit) {
        const auto at = static_cast<std::size_t>(channelId());
        tagTavloPresentAudioLevel& levels = _site.engine->audioLevel();
        const bool heard = std::ranges::any_of(levels.pgmBusVolume, [at](auto& bus) {
            return std::atomic_ref(bus[at]).load(std::memory_order_relaxed) != 0.0F;
        });
        _levelBars.setColor(heard ? scene::Color3B{0, 240, 0} : scene::Color3B{20, 100, 20});
        _levelBars.show(_innerRect, _site.engine->gridLineWidth(), LevelBars::Side::Right, levels.sourceLevel[at],
                        levels.sourceTime[at]);
    }
    TavloPresentChannelRich::stepFrame(stamps);
}

QString TavloPresentChannelSource::channelLabel() const
{
    QString label = TavloPresentChannelRich::channelLabel();
    if (!pictureMisc().name.isEmpty())
        label += QLatin1Char(' ') + pictureMisc().name;
    quint8 usage = 0;
    _site.engine->channelUsage(channelId(), usage);
    if (usage != 0)
        label += QLatin1Char('\n');
    if ((usage & 1) != 0)
        label += QLatin1Char('V');
    if ((usage & 2) != 0)
        label += QLatin1Char('G');
    return label;
}

void TavloPresentChannelSource::setLayoutElement(int index, const tagTavloShowLayoutElement& element)
{
    if (_source && _source->getSourceInfo()->type == TavloPresentSourceTypeLayout)
        _source->setLayoutElement(static_cast<quint32>(index), element);
}

bool TavloPresentChannelSource::containsChannel(int wanted)
{
    return wanted == channelId() || (_source && _source->usesChannel(wanted));
}

void TavloPresentChannelSource::renderPicture(quint32 chroma, const graphics::TexturePtr& picture, QSizeF size,
                                              PlaneOffsets planeOffsets, bool clearFirst, bool flip)
{
    if (chroma == chromaProcessed)
        return _renderTargetPainter.takePicture(picture);
    drawKeyedSource(_renderTargetPainter, _cachePainter, chroma, picture, size, planeOffsets, _process, clearFirst,
                    flip);
}

void TavloPresentChannelSource::renderBlendPicture(const TransitionPicture& outgoing, const TransitionPicture& incoming,
                                                   float position, quint32 effect)
{
    _renderTargetPainter.drawTransition(outgoing.texture, outgoing.size, outgoing.flip, incoming.texture, incoming.size,
                                        incoming.flip, position, effect);
}

block_t* TavloPresentChannelSource::processAudio(block_t* block, const tagTavloAudioInfo& format)
{
    return _sound.process(block, format);
}

void TavloPresentChannelSource::channelMouseEvent(quint32 message, quint64 flags, qint64 position)
{
    if (_source)
        _source->onWindowMessage(message, flags, position);
}

void TavloPresentChannelSource::enterComponent(const tagTavloShowComponentInfo&, IUnknownEx*) {}

void TavloPresentChannelSource::exitComponent(const QString&) {}

void TavloPresentChannelSource::updateComponent(const tagTavloShowComponentInfo&) {}

void TavloPresentChannelSource::setPictureProcess(const tagTavloPresentPictureProcess& process)
{
    _process.processParam = process;
    publishKey();
}

void TavloPresentChannelSource::setChromaKey(const tagTavloPresentPictureChromaKey& key)
{
    _process.chromaKeyParam = key;
    _process.chromaKeyParam.chroma_key = keyChroma(key.color);
    publishKey();
}

void TavloPresentChannelSource::setLumaKey(const tagTavloPresentPictureLumaKey& key)
{
    _process.lumaKeyParam = key;
    publishKey();
}

void TavloPresentChannelSource::setCrop(const tagTavloPresentPictureCrop& crop)
{
    _process.rectCropParam = crop;
    publishKey();
}

void TavloPresentChannelSource::setColorAdjust(const tagTavloPresentPictureColorAdjust& adjust)
{
    _process.colorAdjustParam = adjust;
    publishKey();
}

/// Tells the source's threads what they may do in the draw's place.
void TavloPresentChannelSource::publishKey()
{
    const tagTavloPresentPictureFilterParam& p = _process;
    const bool alone = p.chromaKeyParam.enable != 0 && p.lumaKeyParam.enable == 0 && p.rectCropParam.enable == 0 &&
                       p.colorAdjustParam.enable == 0 && p.processParam.vFlip == 0 && p.processParam.hMirror == 0;
    const LoneKey key{_renderTargetPainter.size().toSize(), p.chromaKeyParam, _renderTargetPainter.clearColor};
    const std::lock_guard guard(_keyLock);
    _loneKey = alone ? std::optional(key) : std::nullopt;
}

bool TavloPresentChannelSource::loneKey(LoneKey& key)
{
    const std::lock_guard guard(_keyLock);
    if (_loneKey)
        key = *_loneKey;
    return _loneKey.has_value();
}

void TavloPresentChannelSource::setPictureMisc(const tagTavloPresentPictureMisc& misc)
{
    _process.miscParam = misc;
    refreshLabel();
    _renderTargetPainter.clearColor = toRgba(misc.backgroundColor);
    publishKey();
    _renderTargetPainter.clear();
}

void TavloPresentChannelSource::onChannelMouseDown(const scene::EventMouse& event, scene::Vec2)
{
    if (event.isHeld(scene::MouseButton::Right) && event.isControlDown())
        select(_site.engine->programChannelId());
}

void TavloPresentChannelSource::onChannelMouseUp(const scene::EventMouse& event, scene::Vec2)
{
    if (event.button != scene::MouseButton::Right)
        select(TavloPresentChannelIDPVM);
}

void TavloPresentChannelSource::select(int pane)
{
    _site.engine->postEvent(TavloEventSelectChannel, QVariant(pane), QVariant(channelId()), {}, {});
}
