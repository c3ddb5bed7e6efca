#pragma once

#include "channels/ProgramMix.h"
#include "channels/SoundClock.h"
#include "channels/TavloPresentChannelRich2.h"
#include "drawing/TransitionTable.h"

#include <tavlo/ITavloAudioPreviewObject.h>
#include <tavlo/records/PictureRecords.h>

#include <QPropertyAnimation>

/// The program: the channel that goes out, the takes between channels, and the mix of the sound.
///
/// One number says where a take stands, `switchProcessPos`: 0 while nothing happens, up to 1, at which the take is
/// done and it is 0 again. A cut, a running take and the operator's fader differ in who writes it. Frame thread, where
/// nothing else is said.
class TavloPresentChannelPGM final : public TavloPresentChannelRich2, private ITavloAudioPreviewObjectSink
{
    Q_OBJECT
    Q_PROPERTY(qreal switchProcessPos READ switchProcessPos WRITE setSwitchProcessPos)

public:
    /// The number that asks for a transition by chance.
    static constexpr qint32 randomEffect = 65535;

    explicit TavloPresentChannelPGM(const tavlo::ChannelSite& site);
    ~TavloPresentChannelPGM() override;

    bool createChannel(const QSizeF& size) override;
    void destroyChannel() override;
    tavlo::ChannelType channelType() const override { return tavlo::ChannelType::Pgm; }
    int renderOrder() const override { return tavlo::CanvasOrderPgm; }
    void stepFrame(const tavlo::FrameStamps& stamps) override;

    /// Takes a channel to the program. A take that runs goes on from where it stands with these settings. Effect 0 and
    /// a duration of 0 cut at once.
    void startTransition(const tagTavloPresentTransitionEffectParam& param, int channelId);

    qreal switchProcessPos() const { return _switchProcessPos; }

    /// The running take's own progress: the sink is told.
    void setSwitchProcessPos(qreal position) { setPosition(position, true); }

    /// The operator's fader, which takes the place of a running animation.
    void setFader(qreal position);

    int programChannel() const { return _programChannel; }
    int nextChannel() const { return _nextChannel; }
    void setProgramChannel(int channelId) { _programChannel = channelId; }
    void setNextChannel(int channelId) { _nextChannel = channelId; }

    void setAudioMixer(const tagTavloPresentAudioMixerParam& mixer);

    // Sound, on the source's audio thread
    void pushAudio(int channelId, int index, block_t* block, const tagTavloAudioInfo& format) override;
    void audioFlush(int channelId, bool now);
    int audioTime(int channelId, qint64& microseconds);
    void audioPause(int channelId, qint64 date);
    void audioResume(int channelId, qint64 date);

    /// Mixed sound, for the meter and the outputs. Mixing thread.
    void updateLevel(const void* samples, quint32 length, const tagTavloAudioInfo& format);

    /// The transition for a random number below 80, 0 for a cut.
    static quint32 effectForDraw(quint32 number);

protected:
    void onChannelMouseDown(const tavlo::scene::EventMouse& event, tavlo::scene::Vec2 point) override;

private Q_SLOTS:
    void onTranAnimation_finished();

private:
    // IUnknownEx and ITavloAudioPreviewObjectSink
    IUnknownEx* queryInterface(const TavloInterfaceId& id, quint32 version) override;
    bool isValid() override { return true; }
    void destroy() override {}
    void OnAudioPreviewSamples(ITavloAudioPreviewObject* object, const void* samples, int length,
                               const tagTavloAudioInfo& format) override;

    void openMix();
    void setPosition(qreal position, bool notify);
    void finish();
    void stopAnimation();
    tavlo::graphics::TexturePtr picture(int channelId) const;
    void publishPicture();

    const int _pgmIndex; ///< row of the level and volume tables
    int _nextChannel = 0;
    int _programChannel = 0;
    qreal _switchProcessPos = 0.0;
    QPropertyAnimation _animation;
    bool _animating = false; ///< a take runs by itself and is not done
    quint32 _effect = tavlo::transitionKind::fadeNormal;

    tavlo::ProgramMix _mix;                                      ///< any thread
    tavlo::InterfacePtr<ITavloAudioPreviewObject> _audioPreview; ///< fixed from createChannel to destroyChannel
    tavlo::SoundClock _soundClock;                               ///< mixing thread
};
