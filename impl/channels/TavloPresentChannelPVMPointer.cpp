// Mouse and fingers on the preview: dragging and scaling of items, and what goes on to the shown channel's source.

#include "channels/TavloPresentChannelPVM.h"

#include "sources/ITavloPresentChannelSource.h"

#include <tavlo/TavloEngineEvents.h>

#include "scene/Director.h"
#include "scene/EventDispatcher.h"

using namespace tavlo;

namespace {

// The numbers of a window's mouse messages.
constexpr quint32 mouseMove = 512;
constexpr quint32 leftDown = 513;
constexpr quint32 leftUp = 514;
constexpr quint32 rightUp = 517;

constexpr scene::Color4F markColor{0.0F, 1.0F, 0.0F, 0.4F};

bool countsFromTop(ItemKind kind)
{
    return kind == ItemKind::Logo || kind == ItemKind::Overlay || kind == ItemKind::Present;
}

} // namespace

void TavloPresentChannelPVM::listenToTouch()
{
    _touchListener = scene::EventListenerTouch::create();
    _touchListener->onTouchesBegan = [this](scene::EventTouch& event) { onTouchesBegan(event); };
    _touchListener->onTouchesMoved = [this](scene::EventTouch& event) { onTouchesMoved(event); };
    _touchListener->onTouchesEnded = [this](scene::EventTouch& event) { onTouchesEnded(event); };
    _touchListener->onTouchesCancelled = _touchListener->onTouchesEnded;
    director().eventDispatcher().addEventListenerWithSceneGraphPriority(_touchListener, _target.get());
}

void TavloPresentChannelPVM::onTouchesBegan(const scene::EventTouch& event)
{
    const auto point = toFrame(event.changed.location);
    if (!point)
        return;
    if (event.touches.size() == 1)
        beginDrag(*point);
    else if (event.touches.size() == 2)
        _pinchDistance = scene::length(event.touches[0].location - event.touches[1].location);
    if (!_dragItem)
        forward(leftDown, 0, *point);
}

void TavloPresentChannelPVM::onTouchesMoved(const scene::EventTouch& event)
{
    const auto point = toFrame(event.changed.location);
    if (!point)
        return;
    if (!_dragItem)
        forward(mouseMove, 0, *point);
    else if (event.touches.size() == 1)
        dragTo(*point);
    else if (event.touches.size() == 2)
        pinch(event);
}

void TavloPresentChannelPVM::onTouchesEnded(const scene::EventTouch& event)
{
    const auto point = toFrame(event.changed.location);
    if (event.touches.size() > 1) {
        _pinchDistance = 1.0F; // the finger that stays has to take hold anew, or the item would jump to it
        if (_dragItem)
            endDrag();
        return;
    }
    if (!_dragItem && point)
        forward(leftUp, 0, *point);
    if (_dragItem && point)
        dragTo(*point);
    endDrag();
}

void TavloPresentChannelPVM::pinch(const scene::EventTouch& event)
{
    const float distance = scene::length(event.touches[0].location - event.touches[1].location);
    if (_pinchDistance != 0.0F && _dragItem->node()) {
        const scene::Vec3 scale = _dragItem->node()->scale3D();
        const float by = distance / _pinchDistance;
        _dragItem->setNodeScale(scale.x * by, scale.y * by, scale.z);
    }
    _pinchDistance = distance;
    markItem(_dragItem);
}

void TavloPresentChannelPVM::onChannelMouseDown(const scene::EventMouse& event, scene::Vec2 point)
{
    if (event.button == scene::MouseButton::Left)
        beginDrag(point);
    if (!_dragItem)
        forward(leftDown, event.heldButtons, point);
}

void TavloPresentChannelPVM::onChannelMouseMove(const scene::EventMouse& event, scene::Vec2 point)
{
    if (_dragItem) {
        dragTo(point);
        return;
    }
    markItem(_items.itemAt(point));
    forward(mouseMove, event.heldButtons, point);
}

void TavloPresentChannelPVM::onChannelMouseUp(const scene::EventMouse& event, scene::Vec2 point)
{
    if (event.button == scene::MouseButton::Right)
        _engine2->channelContextMenu(_shownChannel, rightUp, packed(point));
    if (_dragItem && event.button == scene::MouseButton::Left) {
        dragTo(point);
        endDrag();
    } else if (!_dragItem) {
        forward(leftUp, event.heldButtons, point);
    }
}

void TavloPresentChannelPVM::beginDrag(scene::Vec2 point)
{
    _dragItem = _items.itemAt(point);
    _pinchDistance = 1.0F;
    if (!_dragItem)
        return;
    _dragOffset = _dragItem->node()->position() - point;
    _dragItem->setPicked(true);
}

// The item stays where it is: the host is told where the operator wants it, and answers with its placement.
void TavloPresentChannelPVM::dragTo(scene::Vec2 point)
{
    const scene::Vec2 position = point + _dragOffset;
    const scene::Rect rect = _dragItem->rect();
    const double relativeY = position.y / _size.height();
    tagTavloShowPresentPlacement placement;
    placement.type = static_cast<qint32>(_dragItem->itemKind());
    placement.name = _dragItem->itemUuid();
    placement.rect = QRectF(position.x, position.y, rect.width, rect.height);
    placement.relativeRect =
        QRectF(position.x / _size.width(), countsFromTop(_dragItem->itemKind()) ? 1.0 - relativeY : relativeY,
               rect.width / _size.width(), rect.height / _size.height());
    _site.engine->postEvent(TavloEventPlacementChanged, QVariant(static_cast<int>(TavloPresentChannelIDAll)),
                            QVariant::fromValue(placement), {}, {});
    markItem(_dragItem);
}

void TavloPresentChannelPVM::endDrag()
{
    if (_dragItem)
        _dragItem->setPicked(false);
    _dragItem.clear();
    _dragMark->clear();
}

void TavloPresentChannelPVM::markItem(const TavloShowVisibleItem* item)
{
    _dragMark->clear();
    if (!item)
        return;
    const scene::Rect rect = item->rect();
    _dragMark->drawSolidRect({rect.minX(), rect.minY()}, {rect.maxX(), rect.maxY()}, markColor);
}

void TavloPresentChannelPVM::forward(quint32 message, quint64 flags, scene::Vec2 point)
{
    if (ITavloPresentChannelSource* const shown = _site.engine->sourceChannel(_shownChannel))
        shown->channelMouseEvent(message, flags, packed(point));
}

qint64 TavloPresentChannelPVM::packed(scene::Vec2 point) const
{
    const auto x = static_cast<qint64>(point.x);
    const auto y = static_cast<qint64>(static_cast<float>(_size.height()) - point.y);
    return (y & 0xffff) << 16 | (x & 0xffff);
}
