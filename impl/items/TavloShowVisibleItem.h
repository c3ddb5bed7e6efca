#pragma once

#include "frame/ITavloPresentEnginePrivate.h"

#include "scene/Node.h"

#include <QObject>
#include <QRectF>

namespace tavlo {

/// What an item shows, as placement records tell it.
enum class ItemKind : qint32
{
    Other = 0,
    Text = 1,
    Logo = 2,
    Overlay = 3,
    Present = 4,
};

/// Landmarks of a face that an item follows.
struct FaceAnchor
{
    int positionIndex = 0; ///< where it stands
    int scaleIndex0 = 0;   ///< its width is the distance of these two
    int scaleIndex1 = 0;
};

/// Where an item hangs. All lent, and there as long as the item.
struct ItemSite
{
    ITavloPresentEnginePrivate* engine = nullptr;
    scene::Director* director = nullptr;
    scene::Node* parent = nullptr; ///< the channel's layer
};

} // namespace tavlo

/// Something shown on a channel beside its picture: one node on one of the channel's layers. Frame thread.
class TavloShowVisibleItem : public QObject
{
    Q_OBJECT

public:
    explicit TavloShowVisibleItem(const tavlo::ItemSite& site);
    ~TavloShowVisibleItem() override;

    /// Once a frame. \param clockMilliseconds  of the step
    virtual void onFrame(quint64 clockMilliseconds);

    virtual tavlo::ItemKind itemKind() const { return tavlo::ItemKind::Other; }

    /// The `uuid` of the item's record.
    virtual QString itemUuid() const { return {}; }

    virtual void onHidden() {}
    virtual void onShown() {}

    /// Moves the item. \param position  pixels of the frame, y up
    virtual void updateCanvasPosition(tavlo::scene::Vec2 position);

    virtual void setNodeScale(float x, float y, float z);

    /// False once the item has left: its channel forgets it at the end of the step.
    bool isActive() const { return _visible; }

    /// Whether the item shows that channel and is seen.
    virtual bool showsChannel(int) const { return false; }

    /// What of a face the item follows; null for most.
    virtual const tavlo::FaceAnchor* faceAnchor() const { return nullptr; }

    /// Shows or hides the item where it stands; it stays active.
    void setShown(bool shown);

    /// In the frame, y up. Empty without a node.
    tavlo::scene::Rect rect() const;

    tavlo::scene::Node* node() const { return _node.get(); }

    /// The operator's pointer took hold of the item, or let it go.
    void setPicked(bool picked) { _picked = picked; }
    bool isPicked() const { return _picked; }

protected:
    tavlo::ItemSite _site;
    tavlo::scene::RefPtr<tavlo::scene::Node> _node; ///< made by the subclass, a child of the site's parent
    bool _visible = true;                           ///< cleared when the item has ended

private:
    bool _picked = false;
};
