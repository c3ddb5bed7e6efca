#pragma once

#include <tavlo/IUnknownEx.h>
#include <tavlo/records/MediaFormat.h>

#include <QString>
#include <QStringList>

#include <condition_variable>
#include <mutex>

class ICloudTourControl;
struct block_t;
struct picture_pool_t;
struct picture_t;

/// What a player opens. The numbers are fixed.
enum TavloSourcePlayerKind : qint32
{
    TavloSourcePlayerKindDecklink = 0,
    TavloSourcePlayerKindMedia = 1,   ///< a list of files, or one location
    TavloSourcePlayerKindCapture = 4, ///< a capture device, a sound device, or a region of the desktop
    TavloSourcePlayerKindHikvision = 5,
    TavloSourcePlayerKindMW = 6,
    TavloSourcePlayerKindNDI = 7,
    TavloSourcePlayerKindFastRtmp = 8,  ///< "irtmp:", RTMP with the smallest buffer
    TavloSourcePlayerKindTvmp = 9,      ///< "tvmp:", MPEG-TS over SRT
    TavloSourcePlayerKindTvmpCuda = 10, ///< the same where pictures stay in graphics memory
    TavloSourcePlayerKindTvtp = 13,     ///< "tvtp:", MPEG-TS over TCP
};

/// The numbers are fixed; what is below 5 is a player at work.
enum TavloSourcePlayerState : qint32
{
    TavloSourcePlayerStateIdle = 0,    ///< nothing was ever played
    TavloSourcePlayerStateOpening = 1, ///< looking for the input, the first time or again
    TavloSourcePlayerStatePlaying = 3,
    TavloSourcePlayerStatePaused = 4,
    TavloSourcePlayerStateStopped = 5,
    TavloSourcePlayerStateEnded = 6, ///< an entry came to its end; the last entry's end stays until something is done
};

/// What to open, and how. Each kind reads its own fields.
struct tagTavloSourcePlayerInfo
{
    qint32 playerVersion = 1;
    qint32 kind = TavloSourcePlayerKindMedia;
    qint32 enabled = 0;
    QString deviceName;        ///< capture: a device file, a device's name, "desktop", "None"; camera: its address
    QString deviceDisplayName; ///< camera: its port
    QString inputNode = QStringLiteral("auto");
    quint8 progressive = 0;
    QString standard;               ///< capture: "PAL", "NTSC", "SECAM"
    QString audioDeviceName;        ///< capture: a sound device, "None"; camera: user
    QString audioDeviceDisplayName; ///< camera: password
    QString audioInputSignal;
    qint32 channelNumber = 0;
    QString url = QStringLiteral("http://"); ///< read where `pathList` is empty
    QStringList pathList;
    qint32 caching = 1000;   ///< milliseconds of network buffer
    qint32 playbackLoop = 1; ///< 1 plays the list again and again
    quint8 hwDecode = 0;     ///< 1 decodes on the graphics processor where there is one that can
    QStringList extraList;
    qint32 deinterlaceMode = 0; ///< 0 off, 1 pictures that are flagged, 2 all
};

/// Takes what a player makes. Called on the player's threads, one call at a time for pictures and one at a time for
/// sound; state reports come from any of them, one at a time. None of these may call `play`, `stop` or `destroy` of the
/// player; its getters may be called.
class ITavloSourcePlayerSink : public IUnknownEx
{
public:
    static constexpr TavloInterfaceId interfaceId{0x91b04f6a, 0x3d5e, 0x4b1c, 0xa7, 0x08, 0x5e,
                                                  0xc2,       0x17,   0x9f,   0x64, 0x02};

    /// Pictures of a format begin. \param videoInfo  the format; the sink may ask for another layout by writing "NV12"
    /// or another layout of eight-bit YUV or RGBA into its `chroma`
    virtual void OnMediaSourcePlayerDoVideoStart(quint32 chroma, tagTavloVideoInfo& videoInfo) = 0;
    virtual void OnMediaSourcePlayerDoVideoStop() = 0;

    /// Sound begins: interleaved signed 16 bit samples, of the channels and the rate that were wanted.
    virtual void OnMediaSourcePlayerDoAudioStart(tagTavloAudioInfo& audioInfo) = 0;
    virtual void OnMediaSourcePlayerDoAudioStop() = 0;

    /// Pictures to write into, of the format that began. The player releases the pool before the format ends. Null has
    /// the player make plain pictures. \param count  how many there are
    virtual picture_pool_t* OnMediaSourcePlayerDoVideoSamplePool(quint32* count) = 0;

    /// A picture to be shown now. Lent: hold it to keep it. Its `date` says when it was due, on the monotonic clock.
    /// \param tag  of no meaning here, 0
    virtual void OnMediaSourcePlayerDoVideoSample(quint32 tag, picture_t* picture) = 0;

    /// A block of sound, some time before it is due: its `i_pts` says when it has to be heard, on the same clock as the
    /// dates of pictures. The block stays the player's, as does what comes back stay the sink's.
    virtual block_t* OnMediaSourcePlayerDoAudioSample(quint32 tag, block_t* block, tagTavloAudioInfo& audioInfo) = 0;

    /// \param discard  what has not been heard yet is void (a seek, the end of playing); else it is played out
    virtual void OnMediaSourcePlayerDoAudioFlush(bool discard) = 0;

    /// How much of the handed over sound has been heard or dropped: microseconds since some beginning of the sink's own,
    /// which may begin anew. The player's master clock. 0, or -1 when it is not known.
    virtual qint32 OnMediaSourcePlayerDoAudioTime(qint64* time) = 0;

    /// \param time  of the event, monotonic microseconds
    virtual void OnMediaSourcePlayerDoAudioPause(qint64 time) = 0;
    virtual void OnMediaSourcePlayerDoAudioResume(qint64 time) = 0;

    /// \param state  a TavloSourcePlayerState; \param index  the entry that it is about; \param count  entries in all
    virtual void OnMediaSourcePlayerState(qint32 state, qint32 index, qint32 count) = 0;

protected:
    ~ITavloSourcePlayerSink() = default;
};

/// The time that a player runs on, where it is not the system's: whoever composes pictures faster or slower than they are
/// seen answers for this interface in its sink's `queryInterface`, and has nothing left out however long it takes.
///
/// Any thread. It is not called after `stop`.
class ITavloSourcePlayerTime : public IUnknownEx
{
public:
    static constexpr TavloInterfaceId interfaceId{0x91b04f6a, 0x3d5e, 0x4b1c, 0xa7, 0x08, 0x5e,
                                                  0xc2,       0x17,   0x9f,   0x64, 0x03};

    /// Microseconds, never less than before. Dates of pictures and blocks are told in it.
    virtual qint64 now() = 0;

    /// Waits on the condition until it is notified or that time has come; may return early.
    /// \param lock  of the condition, held
    virtual void wait(std::condition_variable& changed, std::unique_lock<std::mutex>& lock, qint64 until) = 0;

protected:
    ~ITavloSourcePlayerTime() = default;
};

/// Plays files, streams and devices into a sink. Made by `CreateTavloSourcePlayer` of `TavloCommonModule`.
///
/// Any thread, but none of the sink's calls. `stop` and `destroy` wait for the threads that call the sink, which none does
/// afterwards, but never for the input: a device may be let go a moment later, and the next play of it waits for that.
class ITavloSourcePlayer : public IUnknownEx
{
public:
    static constexpr TavloInterfaceId interfaceId{0x91b04f6a, 0x3d5e, 0x4b1c, 0xa7, 0x08, 0x5e,
                                                  0xc2,       0x17,   0x9f,   0x64, 0x01};

    /// Called once, before anything is played. Lent; it has to outlive the player.
    virtual void setSink(ITavloSourcePlayerSink* sink) = 0;

    /// Opens and plays. The same record again goes on after a pause and does nothing to a player at work; any other one
    /// replaces what plays. Nothing fails here: what cannot be opened is told in the log and by the state.
    /// \param wanted  `sourceWidth` 0 and `chroma` 0xFFFFFFFF leave picture size and layout to the input, `enable` 0
    ///                leaves pictures or sound out
    virtual void play(tagTavloSourcePlayerInfo* info, tagTavloMediaFormatInfo* wanted, qint64 reserved) = 0;

    virtual void stop() = 0;

    /// Pauses; a second call goes on.
    virtual void pause() = 0;

    /// For a video tape's transport; this player has none and ignores them.
    virtual void transportA(qint64 a, qint64 b) = 0;
    virtual void transportB(qint64 a, qint64 b) = 0;

    /// 1 is the input's own speed.
    virtual float rate() = 0;

    /// 0.25 to 4, what is beyond is brought to the nearest; the pitch of sound stays. Live inputs keep 1.
    virtual void setRate(float rate) = 0;

    virtual void transportC(qint64 a, qint64 b) = 0;

    /// Milliseconds of the current entry; 0 when unknown or live.
    virtual void length(qint64* milliseconds) = 0;

    /// Milliseconds since the beginning of the current entry, or of a live input.
    virtual void time(qint64* milliseconds) = 0;

    /// Goes to a place in the current entry: the picture that stands there is the next one shown, in a pause as well.
    virtual void setTime(qint64 milliseconds) = 0;

    /// As `time`, but never beyond the length, and 0 for a live input.
    virtual void position(qint64* milliseconds) = 0;

    /// As `setTime`.
    virtual void setPosition(qint64 milliseconds) = 0;

    /// A TavloSourcePlayerState.
    virtual qint32 state() = 0;

    virtual qint32 itemCount() = 0;
    virtual qint32 itemIndex() = 0;

    /// For the modules' own use.
    virtual void reservedA() = 0;
    virtual void reservedB() = 0;

    /// Null unless what plays is a camera that can be moved. Lent until the next `play` or `stop`.
    virtual ICloudTourControl* cloudTourControl() = 0;

    /// Pictures that were left out since `play`: because their time had passed, and because the pool had none free or
    /// none could be made of them.
    virtual void losses(quint64* late, quint64* dropped) = 0;

protected:
    ~ITavloSourcePlayer() = default;
};
