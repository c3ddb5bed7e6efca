#pragma once

#include "channels/TavloFaceLandmarkProcessor.h"
#include "channels/TavloPresentChannelRich.h"
#include "channels/TavloPresentVideoBlendLayer.h"

#include "scene/DrawNode.h"
#include "scene/Sprite.h"

/// What preview and program have in common: they show the pictures of other channels, with an effect over the whole, a
/// file blended over it, and items that follow a face in it. Frame thread, where nothing else is said.
class TavloPresentChannelRich2 : public TavloPresentChannelRich
{
    Q_OBJECT

public:
    using TavloPresentChannelRich::TavloPresentChannelRich;

    bool createChannel(const QSizeF& size) override;
    void destroyChannel() override;
    void setBlendLayer(const QString& path) override { _videoBlendLayer.setPath(path); }
    void setChannelFilter(int effect) override { _channelFilter = static_cast<quint32>(effect); }

    /// A block of a channel's sound. The source's audio thread.
    virtual void pushAudio(int channelId, int index, block_t* block, const tagTavloAudioInfo& format) = 0;

protected:
    /// Two targets that pictures pass through on their way to the sprite.
    static constexpr std::size_t painterCount = 2;

    /// Steps the blend layer and shows the level bars, then what every rich channel does.
    void stepCommon(const tavlo::FrameStamps& stamps, tavlo::LevelBars::Side side, tavlo::Meter& meter, quint32& time);

    /// Puts filter and blend layer over a picture and shows it; a null picture leaves what is shown.
    /// \param fit     the picture is fitted into the frame, its aspect kept
    /// \param alpha  the picture's; `Ignored` where what may be transparent in it shows black, which is a good deal
    ///               cheaper to draw
    void showPicture(tavlo::graphics::TexturePtr picture, bool fit, tavlo::scene::TextureAlpha alpha);

    /// Whether a filter or a file comes over the picture.
    bool drawsOver() const { return _channelFilter != 0 || _videoBlendLayer.picture(); }

    TavloDrawDX11& painter(std::size_t index) { return _workPainters[index]; }

private:
    void placeFollowers(const tavlo::graphics::TexturePtr& picture);

    std::array<TavloDrawDX11, painterCount> _workPainters;
    tavlo::scene::RefPtr<tavlo::scene::Sprite> _pictureSprite; ///< in the middle of the frame
    TavloPresentVideoBlendLayer _videoBlendLayer;
    TavloFaceLandmarkProcessor _faceLandmarkProcessor;
    quint32 _channelFilter = 0; ///< number of a filter, 0 for none
};
