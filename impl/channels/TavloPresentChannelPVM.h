#pragma once

#include "audio/AudioMonitor.h"
#include "channels/TavloPresentChannelRich2.h"

#include <QPointer>

#include <atomic>

/// The preview: the channel that is prepared, on which the operator drags items about, and hears it on a device of
/// his own. Frame thread, where nothing else is said.
class TavloPresentChannelPVM final : public TavloPresentChannelRich2
{
    Q_OBJECT

public:
    explicit TavloPresentChannelPVM(const tavlo::ChannelSite& site);
    ~TavloPresentChannelPVM() override;

    bool createChannel(const QSizeF& size) override;
    void destroyChannel() override;
    tavlo::ChannelType channelType() const override { return tavlo::ChannelType::Pvm; }
    int renderOrder() const override { return tavlo::CanvasOrderPvm; }
    void stepFrame(const tavlo::FrameStamps& stamps) override;

    void setShownChannel(int channelId) { _shownChannel = channelId; }
    int shownChannel() const { return _shownChannel; }

    void setAudioMixer(const tagTavloPresentAudioMixerParam& mixer) { _monitorVolume = mixer.audioVolumePVM; }
    void pushAudio(int channelId, int index, block_t* block, const tagTavloAudioInfo& format) override;

protected:
    void onChannelMouseDown(const tavlo::scene::EventMouse& event, tavlo::scene::Vec2 point) override;
    void onChannelMouseUp(const tavlo::scene::EventMouse& event, tavlo::scene::Vec2 point) override;
    void onChannelMouseMove(const tavlo::scene::EventMouse& event, tavlo::scene::Vec2 point) override;

private:
    void makeChequer();
    void listenToTouch();

    void onTouchesBegan(const tavlo::scene::EventTouch& event);
    void onTouchesMoved(const tavlo::scene::EventTouch& event);
    void onTouchesEnded(const tavlo::scene::EventTouch& event);
    void pinch(const tavlo::scene::EventTouch& event);
    void beginDrag(tavlo::scene::Vec2 point);
    void dragTo(tavlo::scene::Vec2 point);
    void endDrag();
    void markItem(const TavloShowVisibleItem* item);
    void forward(quint32 message, quint64 flags, tavlo::scene::Vec2 point);
    qint64 packed(tavlo::scene::Vec2 point) const;

    std::atomic<int> _shownChannel = 0;

    // pointer
    tavlo::scene::RefPtr<tavlo::scene::Sprite> _chequer;
    tavlo::scene::RefPtr<tavlo::scene::EventListenerTouch> _touchListener;
    tavlo::scene::RefPtr<tavlo::scene::DrawNode> _dragMark;
    QPointer<TavloShowVisibleItem> _dragItem; ///< an item may leave while it is held
    tavlo::scene::Vec2 _dragOffset;           ///< from the finger to the item's position
    float _pinchDistance = 1.0F;              ///< of two fingers, pixels of the frame

    // any thread
    std::atomic<double> _monitorVolume = 0.0;
    tavlo::AudioMonitor _monitor;
};
