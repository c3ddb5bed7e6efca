#pragma once

#include <tavlo/IUnknownEx.h>

#include <QString>

/// Plays pictures and sound on a Decklink card. Made by `CreateTavloDecklinkOutput`. Owner's thread; nothing waits for the
/// card.
class ITavloDecklinkOutput : public IUnknownEx
{
public:
    static constexpr TavloInterfaceId interfaceId{0x7ba95f06, 0x3ec2, 0x4814, 0x95, 0xd8, 0xe6,
                                                  0x27,       0x4c,   0xb0,   0x13, 0x8f};

    /// False for a mode that no card has. A card that is missing, busy or fails is told in the log and tried again.
    /// \param device  number of the card, from 0  \param mode  such as "1080p25"
    /// \param connection  "SDI"; a card plays on all of its connectors
    virtual bool open(quint32 device, const QString& mode, const QString& connection, quint32 reserved) = 0;

    /// A picture in UYVY of the mode's size. \param stride, size  bytes \param pts, dts  microseconds
    virtual void writeVideo(const quint8* data, int stride, int size, qint64 pts, qint64 dts) = 0;

    /// Interleaved samples of 16 bits, two channels, 48 kHz. \param size  bytes \param pts, dts  microseconds \param flag  1
    virtual void writeAudio(const quint8* data, int size, qint64 pts, qint64 dts, int flag) = 0;

    /// Of the mode, pixels; 0 without one.
    virtual int getWidth() = 0;
    virtual int getHeight() = 0;

    virtual void close() = 0;

protected:
    ~ITavloDecklinkOutput() = default;
};
