#pragma once

#include <QString>
#include <QStringList>

#include <tavlo/IUnknownEx.h>

struct tagTavloAudioInfo;

/// What a mix tells and asks its owner. Mixing thread.
class IGLAudioDeviceContextSink : public IUnknownEx
{
public:
    static constexpr TavloInterfaceId interfaceId{0x3b6e1f52, 0x90c7, 0x4d2a, 0xa4, 0x18, 0x7e,
                                                  0x05,       0xbd,   0x61,   0x2f, 0x93};

    /// How loud the device plays the mix, a factor. What goes to the sink is not changed by it.
    virtual float OnGLAudioDeviceVolume() = 0;

    /// 10 milliseconds of the mix, interleaved samples in the format of `initGLAudioDevice`, lent.
    /// \param length  bytes
    virtual void OnGLAudioDeviceSamples(const void* samples, int length, const tagTavloAudioInfo& format) = 0;

protected:
    ~IGLAudioDeviceContextSink() = default;
};

/// Mixes renderers (`IGLAudioRenderer`) into one stream, hands it to a sink and plays it on a device. Made by
/// `CreateTavloGLAudioDeviceContext`.
///
/// The mix runs at the pace of the system's clock and never waits: neither for a renderer nor for the device, whose own
/// clock is followed. Owner's thread, where nothing else is said; the context outlives its renderers.
class IGLAudioDeviceContext : public IUnknownEx
{
public:
    static constexpr TavloInterfaceId interfaceId{0xd05c47b9, 0x6e12, 0x4a8f, 0xb3, 0x6d, 0x42,
                                                  0xf9,       0x8a,   0x17,   0xc0, 0x5e};

    /// Prepares the mix, and opens the device that plays it, which takes as long as the device takes. Called again in
    /// the same format it exchanges the device alone: the mix goes on meanwhile, renderers stay.
    ///
    /// False, with a log line, when there is no such device (a prepared or running mix stays, without one), or when
    /// nothing can be mixed in that format.
    /// \param deviceName  as the system lists it; empty or "Auto" is the default device, "None" and "Disable" are none
    /// \param backend     not read: the library chooses
    /// \param sampleRate  Hz, 8000 to 192000
    /// \param channels    1, 2, 4, 6, 7 or 8
    /// \param bits        8 (unsigned) or 16 (signed) a sample
    /// \param sink        lent until `closeGLAudioDevice`; null for none
    virtual bool initGLAudioDevice(const QString& deviceName, const QString& backend, int sampleRate, int channels,
                                   int bits, IGLAudioDeviceContextSink* sink) = 0;

    /// Starts the mix. False, with a log line, when it is not prepared. \param mixes 1
    virtual bool createGLAudioDevice(int mixes) = 0;

    /// Ends the mix and closes the device. Waits for the sink to return. Renderers fall silent.
    virtual void closeGLAudioDevice() = 0;

    /// Volume of the whole mix, a factor, for sink and device. It outlives closing. Any thread.
    /// \param index  of the caller's bus, not read
    virtual void setGLAudioDeviceVolume(quint32 index, double volume) = 0;

    /// When the chosen device last played on, or the mix went on without one chosen: milliseconds of the monotonic
    /// clock, wrapping; 0 before. Any thread.
    virtual quint32 lastActivity() = 0;

    /// The devices that can play, as `initGLAudioDevice` takes them, the default one first. Asks the system, which takes
    /// as long as it takes.
    virtual QStringList deviceNames() = 0;

protected:
    ~IGLAudioDeviceContext() = default;
};
