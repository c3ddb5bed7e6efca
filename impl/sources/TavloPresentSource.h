#pragma once

#include "audio/TavloAudioResample.h"
#include "frame/FrameStamps.h"
#include "frame/ITavloPresentEnginePrivate.h"
#include "sources/ITavloPresentChannelSource.h"

#include <tavlo/CBitrateCalculater.h>
#include <tavlo/ITavloPresentSource.h>
#include <tavlo/records/SourceRecords.h>

#include <QObject>

#include <atomic>

class ITavloPresentChannelRich;

namespace tavlo {

/// Where a source plays. All lent, and there until the source's `closeSource`.
struct SourceSite
{
    ITavloPresentChannelSource* channel = nullptr;
    ITavloPresentEnginePrivate* engine = nullptr;
    scene::RenderTexture* renderTexture = nullptr; ///< null on a blend layer
    TavloDrawDX11* draw = nullptr;                 ///< draws onto the channel's target
    graphics::DevicePtr device;
    graphics::ContextPtr context;         ///< the immediate one
    graphics::ContextPtr deferredContext; ///< for the source's own thread
};

} // namespace tavlo

/// Base of all sources: makes pictures and sound for one channel.
///
/// The channel makes it, opens it, has it draw once a frame and closes it; a closed source is never opened again, and
/// lives until the host has released it. Sound takes its own way, from the source's threads straight to the engine.
/// Frame thread, but for the operations of ITavloPresentSource.
class TavloPresentSource : public QObject, public ITavloPresentSource
{
    Q_OBJECT

public:
    explicit TavloPresentSource(const tavlo::SourceSite& site);

    // IUnknownEx and ITavloPresentSource. Any thread.
    bool isValid() override { return true; }
    void destroy() override;
    IUnknownEx* queryInterface(const TavloInterfaceId& id, quint32 version) override;
    quint32 addRef() override;
    quint32 release() override;
    tagTavloPresentSourceInfo* getSourceInfo() override { return &_info; }
    void play() override {}
    void stop() override {}
    void pause() override {}
    void transportA(qint64) override {}
    void transportB(qint64) override {}
    float getRate() override { return 1.0F; }
    void setRate(float) override {}
    void transportC(qint64) override {}
    void getLength(qint64& milliseconds) override { milliseconds = 1; }
    void getTime(qint64& milliseconds) override { milliseconds = 0; }
    void setTime(qint64) override {}
    void getPosition(qint64& position) override { position = 0; }
    void setPosition(qint64) override {}
    quint32 getState() override { return TavloPresentSourceStateNone; }
    tagTavloPresentSourceStatisticsItem* getStatistics() override;
    quint32 getItemCount() override { return 1; }
    quint32 getItemIndex() override { return 0; }
    QImage& getPreviewImage() override;
    void reservedSlot() override {}
    ICloudTourControl* getCloudTourControl() override { return nullptr; }
    void setProperty(quint32, QVariant&) override {}

    /// New settings while the source is open. \return 0 when it took them
    virtual qint32 updateSource(const tagTavloPresentSourceInfo& info);

    virtual void setLayoutElement(quint32 index, const tagTavloShowLayoutElement& element);

    /// Takes the record. False: the source cannot go on and is to be closed.
    virtual bool openSource(const tagTavloPresentSourceInfo& info);

    /// Cuts the source off from channel and engine: what its threads still report does nothing.
    virtual void closeSource();

    /// Draws the newest picture, if there is a new one.
    virtual void drawFrame(TavloDrawDX11& draw, const tavlo::FrameStamps& stamps);

    /// Whether the source shows that channel. Any thread.
    virtual bool usesChannel(int channelId);

    /// A mouse message, as ITavloPresentChannelSource::channelMouseEvent tells it.
    virtual void onWindowMessage(quint32 message, quint64 flags, qint64 position);

protected:
    ~TavloPresentSource() override = default;

    /// Hands a picture to the channel; nothing after `closeSource` and for a null picture.
    void drawPicture(quint32 chroma, QSizeF size, tavlo::PlaneOffsets planeOffsets,
                     const tavlo::graphics::TexturePtr& picture, bool flip);

    /// Hands a transition to the channel; nothing after `closeSource` and without both pictures.
    void drawTransition(const tavlo::TransitionPicture& outgoing, const tavlo::TransitionPicture& incoming,
                        float position, quint32 effect);

    /// A block of sound in that format, converted to the engine's and handed to it. The source's audio thread.
    /// \param index  the source's own number of the stream
    /// \return what was handed on, lent until the next call; null when there was nothing to hand on
    block_t* deliverAudio(int index, block_t* block, const tagTavloAudioInfo& format);

    void clearTarget();

    // fixed after construction, but for `channel` and `engine`
    tavlo::SourceSite _site;
    ITavloPresentChannelRich* const _channelRich; ///< where overlays and texts are shown; null on a blend layer
    ITavloPresentEnginePrivate2* const _engine2;

    // read by any thread, cleared by closeSource
    std::atomic<ITavloPresentChannelSource*> _channel;
    std::atomic<ITavloPresentEnginePrivate*> _engine;

    tagTavloPresentSourceInfo _info;

    tagTavloMediaFormatInfo _outputFormat; ///< asked of the source; fixed from openSource on

    // any thread, locked inside
    CBitrateCalculater _drawRate;   ///< pictures drawn to the channel
    CBitrateCalculater _decodeRate; ///< pictures that arrive from the decoder
    CBitrateCalculater _audioRate;  ///< bytes of converted sound

    // any thread
    std::atomic<qint64> _videoClock = 0; ///< of the last picture handed to the channel, microseconds
    std::atomic<qint64> _audioClock = 0; ///< of the last block handed to the engine, microseconds

    tagTavloPresentSourceStatisticsItem _statistics;

    TavloAudioResample _audioResample; ///< audio thread

private:
    std::atomic<quint32> _refCount = 1;
};
