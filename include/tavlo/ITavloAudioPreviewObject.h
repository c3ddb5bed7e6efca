#pragma once

#include <tavlo/IUnknownEx.h>

#include <QString>

class ITavloAudioPreviewObject;
struct block_t;
struct tagTavloAudioInfo;

/// Takes what a preview object has mixed.
class ITavloAudioPreviewObjectSink : public IUnknownEx
{
public:
    static constexpr TavloInterfaceId interfaceId{0x1d93b5e4, 0x08fa, 0x4c71, 0xb2, 0x5f, 0xc6,
                                                  0x70,       0x3e,   0x94,   0xad, 0x18};

    /// 10 milliseconds of the mix. Mixing thread of the object: it waits for this call, which must not block.
    /// \param samples  interleaved, in `format`, lent
    /// \param length   bytes
    virtual void OnAudioPreviewSamples(ITavloAudioPreviewObject* object, const void* samples, int length,
                                       const tagTavloAudioInfo& format) = 0;

protected:
    ~ITavloAudioPreviewObjectSink() = default;
};

/// Mixes the sound of up to 38 channels, gives the mix to a sink and plays it on one device.
///
/// The mix runs from `open` to `close` at the pace of the system's clock, with a device or without: a device that is
/// missing, opens late or goes away leaves it as it is, and is tried again every two seconds. `destroy` closes.
class ITavloAudioPreviewObject : public IUnknownEx
{
public:
    static constexpr TavloInterfaceId interfaceId{0xa2c8f06b, 0x57d1, 0x4e3c, 0x90, 0xe4, 0x2b,
                                                  0x8d,       0x61,   0xf3,   0x75, 0x0a};

    /// Channel number that stands for no channel: only the device's volume is taken.
    static constexpr quint32 allChannels = 65535;

    /// Lent until another one is set; null for none. Before `open`.
    virtual void setSink(ITavloAudioPreviewObjectSink* sink) = 0;

    /// Starts, an earlier mix closed first. Returns at once; what fails is logged. Owner's thread.
    /// \param deviceName     as the system lists it; empty or "Auto" is the default device, "None" and "Disable" are none
    /// \param sampleRate     Hz, 8000 to 192000
    /// \param channels       1, 2, 4, 6, 7 or 8
    /// \param bits           8 (unsigned) or 16 (signed) a sample
    /// \param rendererCount  channels that can be heard, at most 38
    virtual void open(const QString& deviceName, int sampleRate, int channels, int bits, int rendererCount) = 0;

    /// Ends mix and device. Waits until a device that is being opened has opened. Owner's thread.
    virtual void close() = 0;

    /// Takes a block of a channel into the mix; the first 240 milliseconds after `open` are not heard, while all starts.
    /// Any thread. Nothing is allocated as long as format and length stay.
    /// \param index         of the program bus, passed on with its volume
    /// \param deviceVolume  of the whole mix, a factor
    /// \param block         lent; of a channel that is not there it is ignored
    /// \param volume        of the channel, a factor
    virtual void writeAudio(quint32 channel, quint32 index, double deviceVolume, const block_t* block,
                            const tagTavloAudioInfo& format, double volume) = 0;

    /// Any thread. \param now true: what waits is dropped; false: it is played to its end
    virtual void flush(quint32 channel, bool now) = 0;

    /// Microseconds of the channel's sound that have gone into the mix since `open`. Any thread.
    /// \return 0; -1 and a time of 0 for a channel that is not there
    virtual int getTime(quint32 channel, qint64* time) = 0;

    /// Any thread. \param date not read
    virtual void pause(quint32 channel, qint64 date) = 0;

    /// Any thread. \param date not read
    virtual void resume(quint32 channel, qint64 date) = 0;

    /// How loud the device plays the mix, a factor; the sink's samples are not changed by it. Any thread.
    virtual void setVolume(float volume) = 0;

protected:
    ~ITavloAudioPreviewObject() = default;
};
