#pragma once

#include <QString>

#include <tavlo/IUnknownEx.h>

/// Plays one stream of sound on a device. Made by `CreateTavloAudioPortRenderOutput`.
///
/// Owner's thread, one call at a time. Sound is late by at most 250 milliseconds: of what waits beyond, the oldest is
/// dropped.
class ITavloAudioPortRender : public IUnknownEx
{
public:
    static constexpr TavloInterfaceId interfaceId{0xb7d2440c, 0x1f6b, 0x4e83, 0x8e, 0x0a, 0x64,
                                                  0x93,       0xc5,   0x2b,   0x70, 0xd1};

    /// Opens a device, an earlier one closed first. False, with a log line that names the device, when there is none
    /// of that name or it cannot play the format.
    /// \param deviceName  as the system lists it; empty or "Auto" is the default device
    /// \param channels    1, 2, 4, 6, 7 or 8
    /// \param rate        Hz
    /// \param bits        8 (unsigned) or 16 (signed) a sample
    virtual bool open(const QString& deviceName, int channels, int rate, int bits) = 0;

    /// Hands interleaved samples on to the device and returns at once.
    /// \param length    bytes; what is not a whole frame at the end is left out
    /// \param pts, dts  not read
    /// \return false when no device is open or it has gone
    virtual bool write(const void* data, int length, qint64 pts, qint64 dts) = 0;

    /// Ends playing; what still waits is dropped.
    virtual void close() = 0;

protected:
    ~ITavloAudioPortRender() = default;
};
