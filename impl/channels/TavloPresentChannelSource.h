#pragma once

#include "channels/TavloPresentChannelRich.h"
#include "sources/TavloPresentSourceUtil.h"

#include <tavlo/records/PictureRecords.h>

#include <mutex>
#include <optional>

/// A channel that plays one source, through flip, crop, colour adjustment and keys. Frame thread, where nothing else is
/// said.
class TavloPresentChannelSource final : public TavloPresentChannelRich, public ITavloPresentChannelSource
{
    Q_OBJECT

public:
    explicit TavloPresentChannelSource(const tavlo::ChannelSite& site);
    ~TavloPresentChannelSource() override;

    bool createChannel(const QSizeF& size) override;
    void destroyChannel() override;
    tavlo::ChannelType channelType() const override { return tavlo::ChannelType::Source; }
    int renderOrder() const override;
    void stepFrame(const tavlo::FrameStamps& stamps) override;
    QString channelLabel() const override;
    void setLayoutElement(int index, const tagTavloShowLayoutElement& element) override;

    // IUnknownEx, of either side
    bool isValid() override { return true; }
    void destroy() override {}
    IUnknownEx* queryInterface(const TavloInterfaceId& id, quint32 version) override;

    // ITavloPresentChannelSource
    int channelIndex() override { return channelId(); }
    bool containsChannel(int channelId) override;
    const tavlo::graphics::TextureDesc& targetDesc() override { return _targetDesc; }
    bool loneKey(tavlo::LoneKey& key) override;
    void renderPicture(quint32 chroma, const tavlo::graphics::TexturePtr& picture, QSizeF size,
                       tavlo::PlaneOffsets planeOffsets, bool clearFirst, bool flip) override;
    void renderBlendPicture(const tavlo::TransitionPicture& outgoing, const tavlo::TransitionPicture& incoming,
                            float position, quint32 effect) override;
    block_t* processAudio(block_t* block, const tagTavloAudioInfo& format) override;
    void channelMouseEvent(quint32 message, quint64 flags, qint64 position) override;
    void enterComponent(const tagTavloShowComponentInfo& info, IUnknownEx* serialize) override;
    void exitComponent(const QString& id) override;
    void updateComponent(const tagTavloShowComponentInfo& info) override;

    /// Opens a source, unless one is open; it plays when the host says so. The sink is told of it with TavloEventSourceOpened, also of a failure.
    /// \return the source's ITavloPresentSource as a number, with a reference for the host; 0 for none
    QVariant openSource(const tagTavloPresentSourceInfo& info);

    /// Closes it. The sink is told with TavloEventSourceClosed, with another reference for the host.
    /// \return as `openSource`
    QVariant closeSource();

    // Each counts from the next picture on.
    void setPictureProcess(const tagTavloPresentPictureProcess& process);
    void setChromaKey(const tagTavloPresentPictureChromaKey& key);
    void setLumaKey(const tagTavloPresentPictureLumaKey& key);
    void setCrop(const tagTavloPresentPictureCrop& crop);
    void setColorAdjust(const tagTavloPresentPictureColorAdjust& adjust);

    /// Name and background, which are shown at once.
    void setPictureMisc(const tagTavloPresentPictureMisc& misc);
    const tagTavloPresentPictureMisc& pictureMisc() const { return _process.miscParam; }

protected:
    void onChannelMouseDown(const tavlo::scene::EventMouse& event, tavlo::scene::Vec2 point) override;
    void onChannelMouseUp(const tavlo::scene::EventMouse& event, tavlo::scene::Vec2 point) override;

private:
    bool makeSource(const tagTavloPresentSourceInfo& info);
    void select(int pane);
    void publishKey();

    tavlo::SourcePtr _source; ///< null while the channel plays nothing
    tavlo::graphics::ContextPtr _deferredContext;
    tagTavloPresentPictureFilterParam _process;

    // guarded by _keyLock; the source's threads read it
    std::mutex _keyLock;
    std::optional<tavlo::LoneKey> _loneKey;
};
