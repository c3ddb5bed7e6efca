#include "channels/TavloPresentChannelRich.h"

#include "base/Log.h"
#include "drawing/PictureChroma.h"
#include "drawing/SavedPicture.h"

#include <tavlo/records/EngineRecords.h>

#include "scene/Director.h"
#include "scene/EventDispatcher.h"

#include <QDebug>

#include <algorithm>

using namespace tavlo;

namespace {

constexpr auto sourceName = "impl\\TavloPresentChannel";

} // namespace

TavloPresentChannelRich::~TavloPresentChannelRich() = default;

bool TavloPresentChannelRich::createChannel(const QSizeF& size)
{
    if (!TavloPresentChannel::createChannel(size))
        return false;
    for (int i = LayerCount - 1; i >= 0; --i) {
        auto& layer = _layers[static_cast<std::size_t>(i)];
        layer = scene::Layer::create(director());
        layer->setContentSize({static_cast<float>(size.width()), static_cast<float>(size.height())});
        _target->addChild(layer);
    }
    listenToMouse();
    if (!_renderTargetPainter.create(_site.engine->graphicsRes(), targetTexture(), _site.device, _site.context,
                                     _targetDesc, size)) {
        qDebug() << "failed to create _renderTargetPainter";
        return false;
    }
    _renderTargetPainter.clear();
    if (!_cachePainter.create(_site.engine->graphicsRes(), nullptr, _site.device, _site.context, _targetDesc, size)) {
        qDebug() << "failed to create _cachePainter";
        return false;
    }
    _cachePainter.clear();
    return !hasFlag(ChannelMakesOutput) || createOutput();
}

bool TavloPresentChannelRich::createOutput()
{
    const tagTavloPresentEngineInfo& engine = _site.engine->engineInfo();
    _outputTarget = std::make_unique<TavloPresentOutputTarget>();
    const bool made = _outputTarget->create(
        0, _site.name, engine.videoInfo, engine.audioInfo, _site.device, _site.context,
        hasFlag(ChannelOutputsCopy) ? _cachePainter.targetResource() : targetTexture(), _targetDesc);
    if (!made)
        logFailure({sourceName, "TavloPresentChannelRich::createChannel"},
                   QStringLiteral("failed to create output target "));
    return made;
}

void TavloPresentChannelRich::destroyChannel()
{
    if (_outputTarget)
        _outputTarget->destroy();
    _outputTarget.reset();
    if (_mouseListener)
        director().eventDispatcher().removeEventListener(_mouseListener.get());
    _mouseListener.reset();
    _items.clear();
    for (auto& layer : _layers) {
        if (layer)
            layer->removeFromParent();
        layer.reset();
    }
    _cachePainter.destroy();
    _renderTargetPainter.destroy();
    TavloPresentChannel::destroyChannel();
}

void TavloPresentChannelRich::stepFrame(const FrameStamps& stamps) { _items.step(stamps.clockMilliseconds()); }

IUnknownEx* TavloPresentChannelRich::queryInterface(const TavloInterfaceId& id, quint32 version)
{
    const bool known = id == ITavloPresentChannelRich::interfaceId && acceptsInterfaceVersion(version);
    return known ? static_cast<ITavloPresentChannelRich*>(this) : nullptr;
}

namespace {

/// Makes an item where its kind has a maker and adds it.
template <class Info>
void addItem(ChannelItems& items, ChannelItems::Group group, const ItemSite& site,
             ItemPtr (*maker)(const ItemSite&, const Info&), const Info& info)
{
    ItemPtr item = maker ? maker(site, info) : ItemPtr{};
    if (!item)
        qDebug() << "failed to create item" << info.uuid;
    items.add(group, std::move(item));
}

/// Makes an item that is there anew.
template <class Info>
void updateItem(ChannelItems& items, ChannelItems::Group group, const ItemSite& site,
                ItemPtr (*maker)(const ItemSite&, const Info&), const Info& info)
{
    if (items.remove(group, info.uuid))
        addItem(items, group, site, maker, info);
}

} // namespace

void TavloPresentChannelRich::addLogo(const tagTavloShowLogoInfo& info, int layer)
{
    addItem(_items, ChannelItems::Logos, itemSite(layer), TavloShowItemUtil::itemMakers().logo, info);
}

void TavloPresentChannelRich::removeLogo(const QString& id) { _items.remove(ChannelItems::Logos, id); }

void TavloPresentChannelRich::updateLogo(const tagTavloShowLogoInfo& info)
{
    updateItem(_items, ChannelItems::Logos, itemSite(LayerLogos), TavloShowItemUtil::itemMakers().logo, info);
}

void TavloPresentChannelRich::addOverlay(const tagTavloShowLogoInfo& info, int layer)
{
    addItem(_items, ChannelItems::Overlays, itemSite(layer), TavloShowItemUtil::itemMakers().overlay, info);
}

void TavloPresentChannelRich::removeOverlay(const QString& id) { _items.remove(ChannelItems::Overlays, id); }

void TavloPresentChannelRich::updateOverlay(const tagTavloShowLogoInfo& info)
{
    updateItem(_items, ChannelItems::Overlays, itemSite(LayerOverlays), TavloShowItemUtil::itemMakers().overlay, info);
}

void TavloPresentChannelRich::addText(const tagTavloShowTextInfo& info, int layer)
{
    addItem(_items, ChannelItems::Texts, itemSite(layer), TavloShowItemUtil::itemMakers().text, info);
}

void TavloPresentChannelRich::removeText(const QString& id) { _items.remove(ChannelItems::Texts, id); }

void TavloPresentChannelRich::updateText(const tagTavloShowTextInfo& info)
{
    updateItem(_items, ChannelItems::Texts, itemSite(LayerTexts), TavloShowItemUtil::itemMakers().text, info);
}

// A placement names pixels from the bottom for presents of no kind, from the top for the others: the relative
// rectangle of an operator's drag is the host's to keep, the item follows the one in pixels.
void TavloPresentChannelRich::setPresentPlacement(const tagTavloShowPresentPlacement& placement)
{
    for (int i = 0; i < ChannelItems::GroupCount; ++i) {
        for (const ItemPtr& item : _items.group(static_cast<ChannelItems::Group>(i))) {
            if (item->itemUuid() != placement.name || static_cast<qint32>(item->itemKind()) != placement.type)
                continue;
            item->updateCanvasPosition(
                {static_cast<float>(placement.rect.x()), static_cast<float>(placement.rect.y())});
        }
    }
}

bool TavloPresentChannelRich::overlayShows(int channelId) const
{
    return std::ranges::any_of(_items.group(ChannelItems::Overlays), [channelId](const ItemPtr& item) {
        return item->isActive() && item->showsChannel(channelId);
    });
}

void TavloPresentChannelRich::commitFrame(quint64 clockMicroseconds)
{
    if (!_outputTarget)
        return;
    if (!hasFlag(ChannelOutputsCopy)) {
        _outputTarget->commitVideoData(targetTexture(), clockMicroseconds);
        return;
    }
    _cachePainter.drawPicture(chromaRgba, targetTexture(), _size, {}, nullptr, true, false, false);
    _outputTarget->commitVideoData(_cachePainter.targetResource(), clockMicroseconds);
}

void TavloPresentChannelRich::savePicture(const QString& path, QSize size)
{
    if (!_target || path.isEmpty())
        return;
    tavlo::savePicture(*_site.device, *_site.context, targetTexture(), path, size);
}

std::optional<scene::Vec2> TavloPresentChannelRich::toFrame(scene::Vec2 inView) const
{
    if (!_innerRect.contains(inView))
        return std::nullopt;
    return scene::Vec2{(inView.x - _innerRect.minX()) * static_cast<float>(_size.width()) / _innerRect.width,
                       (inView.y - _innerRect.minY()) * static_cast<float>(_size.height()) / _innerRect.height};
}

ItemSite TavloPresentChannelRich::itemSite(int layer) const
{
    const bool there = layer >= 0 && layer < LayerCount;
    return {_site.engine, _site.director, there ? _layers[static_cast<std::size_t>(layer)].get() : nullptr};
}

void TavloPresentChannelRich::listenToMouse()
{
    _mouseListener = scene::EventListenerMouse::create();
    const auto forward = [this](MouseHandler handler) {
        return [this, handler](scene::EventMouse& event) {
            if (const auto point = toFrame(event.location))
                (this->*handler)(event, *point);
        };
    };
    _mouseListener->onMouseDown = forward(&TavloPresentChannelRich::onChannelMouseDown);
    _mouseListener->onMouseUp = forward(&TavloPresentChannelRich::onChannelMouseUp);
    _mouseListener->onMouseMove = forward(&TavloPresentChannelRich::onChannelMouseMove);
    _mouseListener->onMouseScroll = forward(&TavloPresentChannelRich::onChannelMouseScroll);
    director().eventDispatcher().addEventListenerWithSceneGraphPriority(_mouseListener, _target.get());
}
