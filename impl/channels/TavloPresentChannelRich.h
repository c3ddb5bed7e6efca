#pragma once

#include "channels/ChannelItems.h"
#include "channels/TavloPresentChannel.h"
#include "drawing/TavloDrawDX11.h"
#include "output/TavloPresentOutputTarget.h"
#include "sources/ITavloPresentChannelRich.h"

#include <tavlo/InterfacePtr.h>

#include "scene/EventListener.h"

#include <QSize>

#include <array>
#include <memory>
#include <optional>

namespace tavlo {

/// The layers of a channel, the topmost first.
enum ChannelLayer : int
{
    LayerMarks = 0,
    LayerOverlays = 1,
    LayerPresents = 2,
    LayerTexts = 3,
    LayerFree = 4,
    LayerLogos = 5,
    LayerPicture = 6,
    LayerChequer = 7,
    LayerCount = 8,
};

} // namespace tavlo

/// A channel that shows items over its picture, hears mouse and fingers on its view, and may send its frames out.
/// Frame thread.
class TavloPresentChannelRich : public TavloPresentChannel, public ITavloPresentChannelRich
{
    Q_OBJECT

public:
    using TavloPresentChannel::TavloPresentChannel;
    ~TavloPresentChannelRich() override;

    bool createChannel(const QSizeF& size) override;
    void destroyChannel() override;
    void stepFrame(const tavlo::FrameStamps& stamps) override;

    // IUnknownEx: the channel is its engine's, who asks for nothing but its interfaces.
    bool isValid() override { return true; }
    void destroy() override {}
    IUnknownEx* queryInterface(const TavloInterfaceId& id, quint32 version) override;

    // ITavloPresentChannelRich
    void addLogo(const tagTavloShowLogoInfo& info, int layer) override;
    void removeLogo(const QString& id) override;
    void updateLogo(const tagTavloShowLogoInfo& info) override;
    void addOverlay(const tagTavloShowLogoInfo& info, int layer) override;
    void removeOverlay(const QString& id) override;
    void updateOverlay(const tagTavloShowLogoInfo& info) override;
    void addText(const tagTavloShowTextInfo& info, int layer) override;
    void removeText(const QString& id) override;
    void updateText(const tagTavloShowTextInfo& info) override;

    /// Moves the items of that name and kind to where the record says.
    void setPresentPlacement(const tagTavloShowPresentPlacement& placement);

    /// A file that is blended over the whole picture; empty ends it. For channels that have such a layer.
    virtual void setBlendLayer(const QString&) {}

    /// An effect over the whole picture, 0 for none. For channels that have one.
    virtual void setChannelFilter(int) {}

    /// An element of a layout source. For channels that play one.
    virtual void setLayoutElement(int, const tagTavloShowLayoutElement&) {}

    /// Whether an overlay of this channel shows that one.
    bool overlayShows(int channelId) const;

    /// Hands the frame that the scene has drawn to the outputs.
    void commitFrame(quint64 clockMicroseconds);

    /// Null for channels without outputs.
    TavloPresentOutputTarget* outputTarget() const { return _outputTarget.get(); }

    /// Saves the picture to a file, scaled to that size; an empty size keeps its own. The file is written on a thread
    /// of the pool and is there whole or not at all; the log tells of a failure.
    void savePicture(const QString& path, QSize size);

protected:
    // Mouse and fingers on the view. \param point  pixels of the frame, y up
    virtual void onChannelMouseDown(const tavlo::scene::EventMouse&, tavlo::scene::Vec2) {}
    virtual void onChannelMouseUp(const tavlo::scene::EventMouse&, tavlo::scene::Vec2) {}
    virtual void onChannelMouseMove(const tavlo::scene::EventMouse&, tavlo::scene::Vec2) {}
    virtual void onChannelMouseScroll(const tavlo::scene::EventMouse&, tavlo::scene::Vec2) {}

    /// A place in the view as one in the frame; nothing outside the view.
    std::optional<tavlo::scene::Vec2> toFrame(tavlo::scene::Vec2 inView) const;

    tavlo::scene::Layer& layer(int index) const { return *_layers[static_cast<std::size_t>(index)]; }
    tavlo::ItemSite itemSite(int layer) const;

    tavlo::ChannelItems _items;
    TavloDrawDX11 _renderTargetPainter; ///< draws onto the channel's picture
    TavloDrawDX11 _cachePainter;        ///< has a target of its own, of the same size

private:
    using MouseHandler = void (TavloPresentChannelRich::*)(const tavlo::scene::EventMouse&, tavlo::scene::Vec2);

    void listenToMouse();
    bool createOutput();

    std::array<tavlo::scene::RefPtr<tavlo::scene::Layer>, tavlo::LayerCount> _layers;
    tavlo::scene::RefPtr<tavlo::scene::EventListenerMouse> _mouseListener;
    std::unique_ptr<TavloPresentOutputTarget> _outputTarget;
};
