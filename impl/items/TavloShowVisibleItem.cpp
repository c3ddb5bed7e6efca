#include "items/TavloShowVisibleItem.h"

using namespace tavlo;

TavloShowVisibleItem::TavloShowVisibleItem(const ItemSite& site) : _site(site) {}

TavloShowVisibleItem::~TavloShowVisibleItem()
{
    if (_node)
        _node->removeFromParent();
}

void TavloShowVisibleItem::onFrame(quint64) {}

void TavloShowVisibleItem::updateCanvasPosition(scene::Vec2 position)
{
    if (_node)
        _node->setPosition(position);
}

void TavloShowVisibleItem::setNodeScale(float x, float y, float z)
{
    if (_node)
        _node->setScale3D({x, y, z});
}

void TavloShowVisibleItem::setShown(bool shown)
{
    if (!_node || _node->isVisible() == shown)
        return;
    _node->setVisible(shown);
    if (shown)
        onShown();
    else
        onHidden();
}

scene::Rect TavloShowVisibleItem::rect() const { return _node ? _node->boundingBox() : scene::Rect{}; }
