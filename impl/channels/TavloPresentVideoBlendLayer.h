#pragma once

#include "frame/FrameStamps.h"
#include "sources/TavloPresentSourceUtil.h"

#include <tavlo/InterfacePtr.h>

/// Plays one file, whose picture its channel blends over its own. Frame thread.
class TavloPresentVideoBlendLayer final
    : public tavlo::Implements<TavloPresentVideoBlendLayer, ITavloPresentChannelSource>
{
public:
    ~TavloPresentVideoBlendLayer();

    /// \param desc    of the channel's picture
    /// \param engine  lent until destroyLayer
    bool createLayer(ITavloPresentEnginePrivate* engine, tavlo::graphics::DevicePtr device,
                     tavlo::graphics::ContextPtr context, const tavlo::graphics::TextureDesc& desc);
    void destroyLayer();

    /// Plays that file from its beginning; an empty path ends the layer. The path that plays already goes on.
    void setPath(const QString& path);

    void stepFrame(const tavlo::FrameStamps& stamps);

    /// The layer's picture, or null while it plays nothing.
    tavlo::graphics::TexturePtr picture() const;

    // ITavloPresentChannelSource
    int channelIndex() override;
    bool containsChannel(int) override { return false; }
    const tavlo::graphics::TextureDesc& targetDesc() override { return _desc; }
    void renderPicture(quint32 chroma, const tavlo::graphics::TexturePtr& picture, QSizeF size,
                       tavlo::PlaneOffsets planeOffsets, bool clearFirst, bool flip) override;
    void renderBlendPicture(const tavlo::TransitionPicture& outgoing, const tavlo::TransitionPicture& incoming,
                            float position, quint32 effect) override;
    block_t* processAudio(block_t* block, const tagTavloAudioInfo&) override { return block; }
    void channelMouseEvent(quint32, quint64, qint64) override {}
    void enterComponent(const tagTavloShowComponentInfo&, IUnknownEx*) override {}
    void exitComponent(const QString&) override {}
    void updateComponent(const tagTavloShowComponentInfo&) override {}

private:
    QVariant openSource();
    void closeSource();

    ITavloPresentEnginePrivate* _engine = nullptr;
    tavlo::graphics::DevicePtr _device;
    tavlo::graphics::ContextPtr _context;
    tavlo::graphics::ContextPtr _deferredContext; ///< null unless made
    tavlo::graphics::TextureDesc _desc;
    TavloDrawDX11 _painter;
    tavlo::SourcePtr _source;
    QString _path;
};
