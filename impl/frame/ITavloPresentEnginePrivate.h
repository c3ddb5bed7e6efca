#pragma once

#include <tavlo/IUnknownEx.h>
#include <tavlo/TavloPresentChannelID.h>

#include <QColor>
#include <QImage>
#include <QSizeF>
#include <QString>
#include <QVariant>

class ITavloGraphicsRes;
class ITavloPresentChannelSource;
struct block_t;
struct tagTavloAudioInfo;
struct tagTavloPresentAudioLevel;
struct tagTavloPresentAudioMixerParam;
struct tagTavloPresentEngineInfo;

namespace tavlo::scene {
class RenderTexture;
}

/// What a channel, a source or an item holds of its engine. Frame thread, where nothing else is said; everything that
/// is returned is lent.
class ITavloPresentEnginePrivate : public IUnknownEx
{
public:
    static constexpr TavloInterfaceId interfaceId{0x2b7a4c10, 0x8a3e, 0x4f57, 0xb1, 0x60, 0x0c,
                                                  0x9d,       0x44,   0xe2,   0x5a, 0x01};

    virtual tagTavloPresentEngineInfo& engineInfo() = 0;

    /// The frame size in pixels, as the engine was created with.
    virtual QSizeF& renderSize() = 0;

    /// An image of the frame size, all zero.
    virtual QImage& blankImage() = 0;

    /// The file of a font by its name, never failing while the system has a font at all.
    virtual QString findFont(QString name) = 0;

    virtual tagTavloPresentAudioLevel& audioLevel() = 0;
    virtual tagTavloPresentAudioMixerParam& audioMixerParam() = 0;

    /// Null when the index is at or beyond the end of the list.
    virtual ITavloPresentChannelSource* sourceChannel(int index) = 0;

    /// Width of the grid lines on the multi-view, in pixels.
    virtual float gridLineWidth() = 0;

    virtual QString& shaderCachePath() = 0;
    virtual ITavloGraphicsRes* graphicsRes() = 0;
    virtual void* reserved() = 0;
    virtual int labelFontSize() = 0;

    /// The colour in which a channel is marked: green for PVM, red for PGM, white for the others.
    virtual void channelColor(QColor& color, int channelId) = 0;

    virtual int programChannelId() = 0;

    /// Sets bit 0 when an active overlay of PVM shows that channel, bit 1 when one of PGM does.
    virtual void channelUsage(int channelId, quint8& flags) = 0;

    /// The texture of a channel's result; 8192 names the canvas. An unknown id gives 0.
    /// \param flippedY    whether the picture's first row is its bottom one
    /// \param size        in pixels
    /// \param shaderView  the view through which a draw reads the texture
    virtual quint64 channelPicture(int channelId, bool& flippedY, QSizeF& size, quint64& shaderView) = 0;

    /// The counterpart, for engines whose pictures are held.
    virtual void releaseChannelPicture(int channelId, quint64 handle) = 0;

    /// Calls the host's sink here and now, on whatever thread that is.
    virtual void notifySink(qulonglong event, QVariant a0, QVariant a1, QVariant a2, QVariant a3, QVariant a4) = 0;

    /// Queues an event for the frame thread. Any thread.
    virtual void postEvent(qulonglong event, QVariant a1, QVariant a2, QVariant a3, QVariant a4) = 0;

    /// The marks around program and preview on the multi-view are drawn anew.
    virtual void markHighlightDirty() = 0;

    /// Whether the channel is the program, or is shown inside it.
    virtual bool isOnProgram(int channelId) = 0;

    /// The same for the channel that the running transition brings.
    virtual bool isOnNext(int channelId) = 0;

    /// A block of a source's sound, on its way to PGM and PVM. The source's audio thread; the block stays the caller's.
    /// \param source  the channel that the source plays on: it filters the block first
    /// \param index   the source's own number of the stream
    virtual void pushAudio(ITavloPresentChannelSource* source, int channelId, int index, block_t* block,
                           const tagTavloAudioInfo& format) = 0;

    /// Forgets what of the channel waits to be mixed. The source's audio thread, as the three that follow.
    virtual void audioFlush(int channelId, bool wait) = 0;

    /// How much of the channel's sound has gone into the mix. \return -1, and 0, for a channel that is not mixed
    virtual int audioTime(int channelId, qint64& microseconds) = 0;

    /// Stops and goes on where it stopped. \param date  of the player's clock, microseconds
    virtual void audioPause(int channelId, qint64 date) = 0;
    virtual void audioResume(int channelId, qint64 date) = 0;

    /// A source's player changed its state. State 6 at the last entry of the list posts TavloEventSourcePlaylistEnd.
    /// Any thread.
    virtual void sourceStateChanged(int channelId, int state, int index, int count) = 0;

    /// Mixed sound of a program bus. The mixing thread.
    /// \param samples  interleaved, in the given format; \param length in bytes
    virtual void updatePGMLevel(int channelId, const void* samples, quint32 length,
                                const tagTavloAudioInfo& format) = 0;

    /// Whether anybody hears what `notifySink` tells.
    virtual bool hasSink() = 0;

protected:
    ~ITavloPresentEnginePrivate() = default;
};

/// The scene's side of the engine.
class ITavloPresentEnginePrivate2 : public IUnknownEx
{
public:
    static constexpr TavloInterfaceId interfaceId{0x2b7a4c10, 0x8a3e, 0x4f57, 0xb1, 0x60, 0x0c,
                                                  0x9d,       0x44,   0xe2,   0x5a, 0x02};

    /// The render texture of a channel; fills those out arguments that are not null. Null for an unknown id.
    virtual tavlo::scene::RenderTexture* channelTarget(int channelId, quint64* shaderView, QSizeF* size) = 0;

    /// A right click on the preview, for engines that offer a menu there. \param position  y << 16 | x, pixels
    virtual void channelContextMenu(int channelId, quint32 message, qint64 position) = 0;

protected:
    ~ITavloPresentEnginePrivate2() = default;
};
