#pragma once

#include <tavlo/IUnknownEx.h>

#include <QImage>
#include <QString>
#include <QVariant>

class ICloudTourControl;
struct tagTavloPresentSourceInfo;

/// What a running source did in its last second.
struct tagTavloPresentSourceStatisticsItem
{
    quint32 type = 0;       ///< a TavloPresentSourceType
    QString name;           ///< for people
    float decodeFps = 0.0F; ///< pictures a second that arrive; 0.4 while none does, so that a cast to int rounds
    float drawFps = 0.0F;   ///< pictures a second that are drawn; the same
    float audioRate = 0.0F; ///< bytes of converted sound a second
    qint64 avDelay = 0;     ///< by how much the picture is ahead of the sound, milliseconds
    quint32 width = 0;      ///< of the picture in hand, pixels; 0 while there is none
    quint32 height = 0;
    quint32 audioSampleRate = 0; ///< Hz, as the source delivers it
    quint64 latePictures = 0;    ///< left out since it plays: their time had passed, decoding is too slow
    quint64 droppedPictures = 0; ///< left out since it plays: no frame took those before them in time
    float frameRate = 0.0F; ///< of the picture in hand, pictures a second, as the source tells; 0 while there is none
};

/// What a source's player is doing.
enum TavloPresentSourceState : quint32
{
    TavloPresentSourceStateNone = 0,
    TavloPresentSourceStatePlaying = 3,
    TavloPresentSourceStatePaused = 4,
    TavloPresentSourceStateStopped = 5,
    TavloPresentSourceStateEnded = 6,
};

/// A running source, as the host holds it: counted, and alive until the host has released what it got with
/// TavloEventSourceOpened and TavloEventSourceClosed.
///
/// Any thread, where nothing else is said. Sources that play nothing answer as a single still picture would.
class ITavloPresentSource : public IUnknownEx
{
public:
    static constexpr TavloInterfaceId interfaceId{0x7c31d0a8, 0x5e0f, 0x4b0c, 0xa4, 0x1d, 0x3e,
                                                  0x92,       0x6b,   0x08,   0xf3, 0x01};

    /// \return the new count
    virtual quint32 addRef() = 0;

    /// Deletes the source with the last reference. \return the new count
    virtual quint32 release() = 0;

    /// What the source was opened with. Lent; fixed while it is open.
    virtual tagTavloPresentSourceInfo* getSourceInfo() = 0;

    virtual void play() = 0;
    virtual void stop() = 0;
    virtual void pause() = 0;

    /// Given to the player as they are: its own commands.
    virtual void transportA(qint64 value) = 0;
    virtual void transportB(qint64 value) = 0;

    /// Speed, 1 is normal.
    virtual float getRate() = 0;
    virtual void setRate(float rate) = 0;

    virtual void transportC(qint64 value) = 0;

    /// Milliseconds, never 0.
    virtual void getLength(qint64& milliseconds) = 0;
    virtual void getTime(qint64& milliseconds) = 0;
    virtual void setTime(qint64 milliseconds) = 0;

    /// Place in the item, in the player's units.
    virtual void getPosition(qint64& position) = 0;
    virtual void setPosition(qint64 position) = 0;

    /// A TavloPresentSourceState.
    virtual quint32 getState() = 0;

    /// Measured now. Lent; the next call writes it anew.
    virtual tagTavloPresentSourceStatisticsItem* getStatistics() = 0;

    virtual quint32 getItemCount() = 0;
    virtual quint32 getItemIndex() = 0;

    /// A null image: no source makes one.
    virtual QImage& getPreviewImage() = 0;

    virtual void reservedSlot() = 0;

    /// Lent; null for what is no camera.
    virtual ICloudTourControl* getCloudTourControl() = 0;

    /// A setting of the source's kind while it runs.
    virtual void setProperty(quint32 key, QVariant& value) = 0;

protected:
    ~ITavloPresentSource() = default;
};
