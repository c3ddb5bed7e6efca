#pragma once

#include "channels/ChannelSite.h"
#include "channels/ChannelSound.h"
#include "channels/LevelBars.h"
#include "frame/FrameStamps.h"

#include "scene/DrawNode.h"
#include "scene/Label.h"
#include "scene/Layer.h"
#include "scene/RenderTexture.h"

#include <QObject>
#include <QRectF>

/// One picture of the system: a render texture of the engine's frame size, and its view on the multi-view with a
/// label, level bars and a place in the grid. Frame thread, where nothing else is said.
class TavloPresentChannel : public QObject
{
    Q_OBJECT

public:
    explicit TavloPresentChannel(const tavlo::ChannelSite& site);
    ~TavloPresentChannel() override;

    /// Makes everything on the device. False, the reason in the log, at the first thing that fails; `destroyChannel`
    /// is then still to be called.
    /// \param size  of the frame, pixels
    virtual bool createChannel(const QSizeF& size);

    /// Takes apart what was made, in reverse. May be called twice, and on a channel that was never made.
    virtual void destroyChannel();

    /// Any thread.
    int channelId() const { return _site.channelId; }
    virtual tavlo::ChannelType channelType() const = 0;

    /// The channel's place on the canvas.
    /// \param frames     takes the frame around it; may be null
    /// \param lineWidth  of the frame, pixels
    /// \param rect       pixels of the canvas, y down
    /// \param area       the canvas
    virtual void setViewRect(tavlo::scene::DrawNode* frames, int lineWidth, const QRectF& rect, const QRectF& area);

    /// What the label reads.
    virtual QString channelLabel() const;

    /// Writes the label anew.
    void refreshLabel();

    /// The order in which channels step and stand on the canvas, a tavlo::CanvasOrder: who shows others comes later.
    virtual int renderOrder() const = 0;

    /// The channel's picture; null before createChannel.
    tavlo::scene::RenderTexture* renderTexture() const { return _target.get(); }
    tavlo::graphics::TexturePtr targetTexture() const;
    const tavlo::graphics::TextureDesc& targetDesc() const { return _targetDesc; }

    const QSizeF& channelSize() const { return _size; }

    /// With its border, and without; pixels of the canvas, y up.
    const tavlo::scene::Rect& viewRect() const { return _viewRect; }
    const tavlo::scene::Rect& innerRect() const { return _innerRect; }

    /// Counts from the next block of sound on.
    void setAudioEffect(const tagTavloAudioEffectParam& effect) { _sound.setEffect(effect); }
    tagTavloAudioEffectParam audioEffect() const { return _sound.effect(); }

    /// One frame.
    virtual void stepFrame(const tavlo::FrameStamps& stamps) = 0;

protected:
    bool hasFlag(tavlo::ChannelFlag flag) const { return (_site.flags & flag) != 0; }
    tavlo::scene::Director& director() const { return *_site.director; }

    /// A black rectangle that lies under the channel's view.
    void makeBackground();

    // fixed after construction
    const tavlo::ChannelSite _site;
    ITavloPresentEnginePrivate2* const _engine2;

    QSizeF _size{-1.0, -1.0}; ///< of the frame, pixels
    tavlo::scene::RefPtr<tavlo::scene::RenderTexture> _target;
    tavlo::graphics::TextureDesc _targetDesc;
    tavlo::scene::Rect _viewRect;
    tavlo::scene::Rect _innerRect;
    tavlo::scene::RefPtr<tavlo::scene::Label> _label;
    tavlo::LevelBars _levelBars;
    tavlo::scene::RefPtr<tavlo::scene::LayerColor> _background;
    tavlo::ChannelSound _sound; ///< has its own threads
};
